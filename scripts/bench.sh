#!/usr/bin/env bash
# Runs every benchmark program of the build under Wine, one after the other.
# Extra arguments go to each program (e.g. input files for the compression bench).
set -euo pipefail
BUILD="$(cd "${1:-build}" && pwd)"; shift || true
. "$(dirname "$0")/wine-env.sh"
wine_prefix_ready
wine_server_up
for exe in "$BUILD"/bin/bench_*.exe; do
  [ -e "$exe" ] || continue
  echo "== $(basename "$exe" .exe)"
  wine "$exe" "$@"
  echo
done
# Photo CD: PCDLIB32.DLL against ImageMagick decoding the same Base pack.
bash "$(dirname "$0")/../bench/pcd_vs_imagemagick.sh" "$BUILD" || true
wine_server_down
