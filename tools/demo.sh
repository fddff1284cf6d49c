#!/usr/bin/env bash
# Installs what is missing, builds, and runs the demo session; its files go to out/.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
tools/setup.sh
tools/build.sh build
build/Quillmark.app/Contents/bin/quillmark-host demo --out "$root/out"
