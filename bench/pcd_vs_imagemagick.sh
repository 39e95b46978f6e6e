#!/usr/bin/env bash
# Decoding one Base image pack: PCDLIB32.DLL under Wine (bench_pcd.exe, its
# decode timed inside the process) against ImageMagick natively with one
# thread (`convert -limit thread 1 PACK null:`, the whole process timed; its
# start-up alone, reading a 1 x 1 picture, is timed too and taken off). The
# two run alternately ROUNDS times; the verdict compares the medians.
# Goal: ours at least 2x as fast. Usage: pcd_vs_imagemagick.sh BUILD [ROUNDS]
set -euo pipefail
BUILD="$(cd "${1:-build}" && pwd)"
ROUNDS="${2:-9}"
. "$(dirname "$0")/../scripts/wine-env.sh"
if ! /usr/bin/convert -version 2>/dev/null | grep -q ImageMagick; then
  echo "pcd bench: no ImageMagick (/usr/bin/convert); comparison skipped"
  exit 0
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
pack="$work/bench.pcd"
wine "$BUILD/bin/bench_pcd.exe" --write "Z:$pack"
/usr/bin/convert -size 1x1 xc:black "$work/one.ppm"
ns() { date +%s%N; }
ours=() theirs=() startup=()
for ((i = 0; i < ROUNDS; i++)); do
  t=$(wine "$BUILD/bin/bench_pcd.exe" --time "Z:$pack" 5 | tr -d '\r' | awk '/^PCDTIME/ {print $2}')
  ours+=("$t")
  t0=$(ns); /usr/bin/convert -limit thread 1 "$pack" null:; t1=$(ns)
  /usr/bin/convert -limit thread 1 "$work/one.ppm" null:; t2=$(ns)
  theirs+=("$(awk -v a="$t0" -v b="$t1" 'BEGIN {printf "%.6f", (b - a) / 1e9}')")
  startup+=("$(awk -v a="$t1" -v b="$t2" 'BEGIN {printf "%.6f", (b - a) / 1e9}')")
done
stats() { printf '%s\n' "$@" | sort -g | awk '{v[NR] = $1} END {printf "%.6f %.6f %.6f", v[int((NR + 1) / 2)], v[1], v[NR]}'; }
read -r om olo ohi <<<"$(stats "${ours[@]}")"
read -r tm tlo thi <<<"$(stats "${theirs[@]}")"
read -r sm slo shi <<<"$(stats "${startup[@]}")"
awk -v om="$om" -v olo="$olo" -v ohi="$ohi" -v tm="$tm" -v tlo="$tlo" -v thi="$thi" -v sm="$sm" -v n="$ROUNDS" 'BEGIN {
  decode = tm - sm; if (decode < 0) decode = 0
  printf "PCDLIB32.DLL (Wine):        median %6.2f ms (%.2f to %.2f), %d rounds\n", om * 1e3, olo * 1e3, ohi * 1e3, n
  printf "ImageMagick, 1 thread:      median %6.2f ms (%.2f to %.2f) whole process\n", tm * 1e3, tlo * 1e3, thi * 1e3
  printf "ImageMagick start-up alone: median %6.2f ms; decoding %.2f ms\n", sm * 1e3, decode * 1e3
  ratio = decode / om
  printf "verdict: %s (ImageMagick decoding / ours = %.1fx, goal 2x)\n", (ratio >= 2 ? "PASS" : "FAIL"), ratio
}'
