#!/usr/bin/env bash
# The main job: rltool, the library's host program, run under Wine on a tour of
# what the library does.
set -euo pipefail
BUILD="$(cd "${1:-build}" && pwd)"
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
. "$(dirname "$0")/wine-env.sh"
wine_prefix_ready
wine_server_up
trap wine_server_down EXIT

DEMO="$BUILD/demo"
rm -rf "$DEMO"; mkdir -p "$DEMO"
# Windows paths for the files rltool reads and writes.
win() { echo "Z:$1"; }

# rltool writes the Windows ANSI code page, as a Windows program does; the
# terminal here expects UTF-8.
run() {
  echo "\$ rltool $*" | sed "s#Z:$DEMO/##g; s#Z:$ROOT/##g"
  set +e
  wine "$BUILD/bin/rltool.exe" "$@" 2>&1 | iconv -f CP1252 -t UTF-8 | tr -d '\r'
  local rc=${PIPESTATUS[0]}
  set -e
  [ "$rc" = 0 ] || echo "(exit code $rc)"
  echo
}

run version
run strings --language 1036
run colour --cmyk 100,0,0,0 --tint 50
run colour --rgb 255,0,255
run text "RL132 draws text" "$(win "$DEMO/text.bmp")" --size 20 --angle 15 --colour 30,60,160
run showcase "$(win "$DEMO/showcase.bmp")" && echo "(the drawing showcase is in $DEMO/showcase.bmp)" && echo

# Metafiles: the same sheet recorded into a metafile, played back at two sizes
# and converted to a Windows metafile.
run showcase "$(win "$DEMO/showcase.rlm")"
run render "$(win "$DEMO/showcase.rlm")" "$(win "$DEMO/showcase-800.bmp")" --width 800 --height 600
run render "$(win "$DEMO/showcase.rlm")" "$(win "$DEMO/showcase-300.bmp")" --width 300 --height 225
run wmf "$(win "$DEMO/showcase.rlm")" "$(win "$DEMO/showcase.wmf")"
echo "(the recorded sheet is in $DEMO/showcase.rlm; played back at 800 and 300 pixels wide"
echo " in $DEMO/showcase-800.bmp and $DEMO/showcase-300.bmp; as a Windows metafile in $DEMO/showcase.wmf)"
echo

# Compression: a file through implode and back.
cat "$ROOT"/README.md "$ROOT"/src/*/*.cpp > "$DEMO/sample.txt"
run implode "$(win "$DEMO/sample.txt")" "$(win "$DEMO/sample.imp")"
run explode "$(win "$DEMO/sample.imp")" "$(win "$DEMO/sample.out")"
cmp -s "$DEMO/sample.txt" "$DEMO/sample.out" && echo "(expanded file is identical to the original)" && echo

# Images: a bitmap from the public BMP suite kept with the tests.
BMP="$ROOT/tests/data/corpus/bmp/good/rgb24.bmp"
run info "$(win "$BMP")"
run resize "$(win "$BMP")" "$(win "$DEMO/small8.bmp")" --width 64 --keep-aspect --bits 8
run info "$(win "$DEMO/small8.bmp")"
# Damaged or foreign input is refused with a message and exit code 1.
run explode "$(win "$DEMO/sample.txt")" "$(win "$DEMO/never.out")"

# Photo CD: a small volume of three generated pictures, listed, and one picture
# exported turned and at a quarter of Base.
wine "$BUILD/bin/pcdsample.exe" "$(win "$DEMO/photocd")" > /dev/null
run photocd "$(win "$DEMO/photocd")" --list
run photocd "$(win "$DEMO/photocd")" --export 2 "$(win "$DEMO/photo2.bmp")" --resolution base4 --rotate 90
echo "(the exported photo is in $DEMO/photo2.bmp)"
