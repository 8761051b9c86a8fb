#!/usr/bin/env bash
# Runs the crash test with many kills: a writer process is killed at random moments and every
# reopened table is checked against the writer's log. Stops at the first failure, which prints
# the TAVRIN_CRASH_SEED that replays it.
#   tools/crash-soak.sh [kills] [build directory]
# kills defaults to 5000; the build directory to build/check (as tools/test.sh makes it).
set -euo pipefail
cd "$(dirname "$0")/.."
kills=${1:-5000}
build=${2:-build/check}
if [[ ! -d "$build" ]]; then
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTAVRIN_WERROR=ON > /dev/null
fi
cmake --build "$build" -j"$(nproc)" --target tavrin_tables_tests
TAVRIN_CRASH_KILLS="$kills" "$build"/tests/tavrin_tables_tests --gtest_filter='Crash.*'
