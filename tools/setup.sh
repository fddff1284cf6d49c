#!/usr/bin/env bash
# Installs the Debian packages of tools/debian-packages.txt that are missing.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
missing=()
while read -r package; do
  [[ -z "$package" || "$package" == \#* ]] && continue
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$package")
done < "$here/debian-packages.txt"
if ((${#missing[@]})); then
  if [[ $(id -u) -ne 0 ]]; then
    echo "setup: missing Debian packages: ${missing[*]} (run as root, or install them)" >&2
    exit 1
  fi
  echo "setup: installing ${missing[*]}"
  apt-get update -qq
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
