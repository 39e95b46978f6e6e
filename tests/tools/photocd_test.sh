#!/usr/bin/env bash
# rltool photocd on a volume written by pcdsample: the listing, exports in each
# format with their sizes, and the failures a user can make.
set -uo pipefail
export LC_ALL=C
RUN="$1"; TOOL="$2"; SAMPLE="$3"
fail=0
DIR=$(mktemp -d); trap 'rm -rf "$DIR"' EXIT
"$RUN" "$SAMPLE" "Z:$DIR/vol" > /dev/null || { echo "FAIL: pcdsample"; exit 1; }
expect() { # expect CODE PATTERN ARGS...
  local code="$1" pattern="$2"; shift 2
  local out rc
  out=$("$RUN" "$TOOL" "$@" 2>&1); rc=$?
  if [ "$rc" != "$code" ] || ! grep -aEq -- "$pattern" <<< "$out"; then
    echo "FAIL: rltool $*: exit $rc (want $code), /$pattern/"; echo "$out"; fail=1; return
  fi
  echo "ok: rltool $*"
}
V="Z:$DIR/vol"
expect 0 'pictures   3' photocd "$V" --list
expect 0 '2  IMG0002.PCD   overview 192x128  image 768x512' photocd "$V"
expect 0 'picture 1, 768x512' photocd "$V" --export 1 "Z:$DIR/a.bmp"
expect 0 'picture 2, 256x384' photocd "$V" --export 2 "Z:$DIR/b.pcx" --resolution base4 --rotate 90 --mirror
# What the files begin with, and a 24-bit BMP's exact size.
[ "$(head -c 2 "$DIR/a.bmp")" = BM ] && [ "$(stat -c %s "$DIR/a.bmp")" = $((54 + 768 * 3 * 512)) ] \
  && [ "$(head -c 1 "$DIR/b.pcx" | od -An -tx1 | tr -d ' ')" = 0a ] || { echo "FAIL: a.bmp or b.pcx"; fail=1; }
expect 1 'no picture 4' photocd "$V" --export 4 "Z:$DIR/d.bmp"
expect 1 'status 3001' photocd "$V" --export 1 "Z:$DIR/d.jpg"
expect 1 'not found' photocd "Z:$DIR/nothing"
expect 2 'usage: rltool photocd' photocd "$V" --rotate 45
[ ! -e "$DIR/d.bmp" ] && [ ! -e "$DIR/d.jpg" ] && [ -z "$(ls "$DIR" | grep part)" ] \
  || { echo "FAIL: a failed export left a file"; fail=1; }
exit $fail
