#!/usr/bin/env bash
# Installs what is missing, then builds with warnings as errors and runs every test; then builds
# and runs them all again under AddressSanitizer + UndefinedBehaviorSanitizer. Fails if anything fails.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
jobs=$(nproc)

echo "== build and test (-Wall -Wextra -Werror)"
cmake -S . -B build/check -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAVRIN_WERROR=ON > /dev/null
cmake --build build/check -j"$jobs"
ctest --test-dir build/check -j"$jobs" --output-on-failure

echo "== build and test under AddressSanitizer + UndefinedBehaviorSanitizer"
cmake -S . -B build/sanitize -DCMAKE_BUILD_TYPE=Debug -DTAVRIN_WERROR=ON -DTAVRIN_SANITIZE=ON \
      -DTAVRIN_BUILD_BENCHMARKS=OFF > /dev/null
cmake --build build/sanitize -j"$jobs"
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build/sanitize -j"$jobs" --output-on-failure
