#!/usr/bin/env bash
# The main job: runs rltool, the library's host program, under Wine.
set -euo pipefail
BUILD="$(cd "${1:-build}" && pwd)"
. "$(dirname "$0")/wine-env.sh"
wine_prefix_ready
# rltool writes the Windows ANSI code page, as a Windows program does; the
# terminal here expects UTF-8.
run() { echo "\$ rltool $*"; wine "$BUILD/bin/rltool.exe" "$@" | iconv -f CP1252 -t UTF-8 | tr -d '\r'; echo; }
run version
run strings
run strings --language 1036
