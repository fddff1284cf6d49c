#!/usr/bin/env bash
# Builds the fuzz targets with clang (libFuzzer, AddressSanitizer, UndefinedBehaviorSanitizer)
# and runs each from its seed corpus in fuzz/corpus/ for FUZZ_SECONDS (default 30) seconds.
# Any crash, sanitizer report, leak or timeout fails the run; what the fuzzer finds new stays in
# a scratch folder, so the checked-in corpora change only by hand.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
seconds=${FUZZ_SECONDS:-30}
build=${FUZZ_BUILD:-build-fuzz}

CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DQUILLMARK_FUZZ=ON -DQUILLMARK_SANITIZE=ON \
  -DQUILLMARK_TESTS=OFF -DQUILLMARK_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
targets=(action_log session_script polygon_text rasterizer png_reader)
cmake --build "$build" --target "${targets[@]/%/_fuzzer}"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export ASAN_OPTIONS=abort_on_error=1:detect_leaks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS=suppressions=$root/tests/lsan-suppressions.txt
for target in "${targets[@]}"; do
  echo "== fuzz $target for ${seconds} s"
  mkdir -p "$scratch/$target"
  if ! "$build/fuzz/${target}_fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2560 \
      -artifact_prefix="$scratch/" -print_final_stats=0 "$scratch/$target" "fuzz/corpus/$target" \
      >"$scratch/$target.log" 2>&1; then
    tail -n 60 "$scratch/$target.log" >&2
    for artifact in "$scratch"/crash-* "$scratch"/leak-* "$scratch"/timeout-* "$scratch"/oom-*; do
      [[ -e "$artifact" ]] && echo "fuzz: $target found $(basename "$artifact"): $(od -An -c -N 200 "$artifact" | tr -s ' ' | head -c 400)" >&2
    done
    exit 1
  fi
  grep -E '^Done [0-9]+ runs' "$scratch/$target.log" || true
done
