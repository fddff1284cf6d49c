#!/usr/bin/env bash
# Fails, naming the first places, when a C++ file of the tree is not as .clang-format lays it
# out; tools/check-format.sh --fix rewrites them instead.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
mapfile -t files < <(git ls-files '*.cpp' '*.h')
if [[ "${1:-}" == "--fix" ]]; then
  clang-format -i "${files[@]}"
  exit 0
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! clang-format --dry-run --Werror "${files[@]}" 2> "$log"; then
  grep -m 20 'error:' "$log" >&2 || true
  places=$(grep -c 'error:' "$log")
  count=$(grep 'error:' "$log" | cut -d: -f1 | sort -u | wc -l)
  echo "check-format: $places places in $count files are not formatted; tools/check-format.sh --fix formats them" >&2
  exit 1
fi
echo "check-format: ${#files[@]} files formatted"
