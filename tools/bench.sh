#!/usr/bin/env bash
# Builds the benchmarks in a Release folder and runs them: tools/bench.sh [build-release]. As
# root it first installs what is missing, OpenCV included (tools/bench-packages.txt); without
# OpenCV the benchmarks still run, without the comparison.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dir=${1:-$root/build-release}
if [[ $(id -u) -eq 0 ]]; then
  "$root/tools/setup.sh"
  "$root/tools/setup.sh" "$root/tools/bench-packages.txt"
fi
cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQUILLMARK_TESTS=OFF >/dev/null
cmake --build "$dir" --target mask_benchmark filter_benchmark commit_benchmark stroke_benchmark
"$dir/bench/mask_benchmark"
"$dir/bench/filter_benchmark"
"$dir/bench/commit_benchmark"
"$dir/bench/stroke_benchmark" "$dir/Quillmark.app/Contents/Resources/Brushes"
