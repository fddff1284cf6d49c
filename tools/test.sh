#!/usr/bin/env bash
# Installs what is missing and checks that every C++ file is laid out as .clang-format says;
# then builds and runs every test twice: a normal build, and one with AddressSanitizer and
# UndefinedBehaviorSanitizer that stops at the first report; then fuzzes every fuzz target from
# its seed corpus for half a minute.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
tools/setup.sh

echo "== layout (.clang-format)"
tools/check-format.sh

echo "== normal build"
tools/build.sh build
(cd build && ctest --output-on-failure)

echo "== the window on a virtual screen"
timeout 300 tools/window-test.sh build

echo "== sanitizer build (address, undefined)"
tools/build.sh build-asan -DQUILLMARK_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug
export ASAN_OPTIONS=abort_on_error=1:detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
(cd build-asan && ctest --output-on-failure)

echo "== fuzzing (clang, from fuzz/corpus/)"
tools/fuzz.sh
