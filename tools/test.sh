#!/usr/bin/env bash
# Installs what is missing, then builds with warnings as errors and runs every test; then builds
# and runs them all again under AddressSanitizer + UndefinedBehaviorSanitizer; then runs the
# concurrency tests of tables and the database under ThreadSanitizer; then builds shared
# libraries and runs the examples and the install check against them; then makes the API reference
# (undocumented public operations are errors). Fails if anything fails.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
jobs=$(nproc)

echo "== build and test (-Wall -Wextra -Werror, static libraries)"
cmake -S . -B build/check -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAVRIN_WERROR=ON > /dev/null
cmake --build build/check -j"$jobs"
ctest --test-dir build/check -j"$jobs" --output-on-failure

echo "== build and test under AddressSanitizer + UndefinedBehaviorSanitizer"
cmake -S . -B build/sanitize -DCMAKE_BUILD_TYPE=Debug -DTAVRIN_WERROR=ON -DTAVRIN_SANITIZE=ON \
      -DTAVRIN_BUILD_BENCHMARKS=OFF > /dev/null
cmake --build build/sanitize -j"$jobs"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build/sanitize -j"$jobs" --output-on-failure

echo "== concurrency tests under ThreadSanitizer"
cmake -S . -B build/tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAVRIN_WERROR=ON -DTAVRIN_TSAN=ON \
      -DTAVRIN_BUILD_BENCHMARKS=OFF -DTAVRIN_BUILD_EXAMPLES=OFF > /dev/null
cmake --build build/tsan -j"$jobs" --target tavrin_tables_tests tavrin_database_tests
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
build/tsan/tests/tavrin_tables_tests --gtest_filter='TableConcurrency.*'
build/tsan/tests/tavrin_database_tests --gtest_filter='DatabaseThreads.*'
unset TSAN_OPTIONS

echo "== shared libraries: the examples and the installed package"
cmake -S . -B build/shared -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAVRIN_WERROR=ON -DBUILD_SHARED_LIBS=ON \
      -DBUILD_TESTING=OFF > /dev/null
cmake --build build/shared -j"$jobs"
for example in build/shared/examples/*; do
  if [ -f "$example" ] && [ -x "$example" ]; then "$example" > /dev/null; echo "   $(basename "$example") ok"; fi
done
cmake -DBUILD_DIR="$PWD/build/shared" -DCONSUMER_DIR="$PWD/tests/install/consumer" \
      -DWORK_DIR="$PWD/build/shared/install-check" -DCXX_COMPILER="$(command -v c++)" \
      -DQUICKSTART="$PWD/examples/quickstart.cpp" -P tests/install/CheckInstall.cmake

echo "== API reference"
cmake --build build/check --target docs
echo "   build/check/docs/html/index.html"
