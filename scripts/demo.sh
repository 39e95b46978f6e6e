#!/usr/bin/env bash
# The main job: runs rltool, the library's host program, under Wine.
set -euo pipefail
BUILD="$(cd "${1:-build}" && pwd)"
. "$(dirname "$0")/wine-env.sh"
wine_prefix_ready
run() { echo "\$ rltool $*"; wine "$BUILD/bin/rltool.exe" "$@"; echo; }
run version
run strings
run strings --language 1036
