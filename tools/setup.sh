#!/usr/bin/env bash
# Installs the Debian packages of a list that are missing: tools/setup.sh [LIST], by default
# tools/debian-packages.txt.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
list=${1:-$here/debian-packages.txt}
missing=()
while read -r package; do
  [[ -z "$package" || "$package" == \#* ]] && continue
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$package")
done < "$list"
if ((${#missing[@]})); then
  if [[ $(id -u) -ne 0 ]]; then
    echo "setup: missing Debian packages: ${missing[*]} (run as root, or install them)" >&2
    exit 1
  fi
  echo "setup: installing ${missing[*]}"
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
