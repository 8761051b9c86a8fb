#!/usr/bin/env bash
# Installs what is missing, builds the library and runs the main example.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/install-deps.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF > /dev/null
cmake --build build/release -j"$(nproc)" --target quickstart
build/release/examples/quickstart
