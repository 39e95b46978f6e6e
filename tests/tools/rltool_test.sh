#!/usr/bin/env bash
# rltool as a user meets it: help, the subcommands of the frame, exit codes.
set -uo pipefail
export LC_ALL=C
RUN="$1"; TOOL="$2"
ROOT_BMP="$(cd "$(dirname "$0")/../data/corpus/bmp/good" && pwd)/rgb24.bmp"
fail=0
expect() { # expect CODE PATTERN ARGS...
  local code="$1" pattern="$2"; shift 2
  local out rc
  out=$("$RUN" "$TOOL" "$@" 2>&1); rc=$?
  if [ "$rc" != "$code" ] || ! grep -aEq -- "$pattern" <<< "$out"; then
    echo "FAIL: rltool $*: exit $rc (want $code), /$pattern/"; echo "$out"; fail=1; return
  fi
  echo "ok: rltool $*"
}
expect 0 'usage: rltool COMMAND' --help
expect 2 'usage: rltool COMMAND'
expect 0 'RL132 library [0-9]+\.[0-9]+\.[0-9]+' version
expect 0 '33013 +PNG Bitmap' strings
expect 0 '31425 +Neues Ansicht' strings --language 0x407
expect 2 'language identifier' strings --language sv

# A full disk (a file-size limit) part-way through: the command fails, an
# earlier result stays and no temporary file is left beside it.
DIR=$(mktemp -d); trap 'rm -rf "$DIR"' EXIT
head -c 3000000 /dev/zero > "$DIR/zeros"
cp "$ROOT_BMP" "$DIR/picture.bmp"
expect 0 'zeros.imp: 3000000 bytes' implode "Z:$DIR/zeros" "Z:$DIR/zeros.imp"
full() { # full LIMIT-KB NAME ARGS...: the command must fail and leave NAME as it was
  local limit="$1" name="$2"; shift 2
  echo "earlier result" > "$DIR/$name"
  local out rc
  out=$( (trap '' XFSZ; ulimit -f "$limit"; "$RUN" "$TOOL" "$@") 2>&1); rc=$?
  local left want
  left=$(cd "$DIR" && ls | tr '\n' ' ')
  want=$(printf '%s\n' "$name" picture.bmp zeros zeros.imp | sort | tr '\n' ' ')
  if [ "$rc" != 1 ] || ! grep -Eq "error writing|could not write" <<< "$out" \
     || [ "$(cat "$DIR/$name")" != "earlier result" ] || [ "$left" != "$want" ]; then
    echo "FAIL: with a full disk, rltool $*: exit $rc, left: $left"; echo "$out"; fail=1
  else
    echo "ok: with a full disk, rltool $*"
  fi
  rm -f "$DIR/$name"
}
full 1024 out.bin explode "Z:$DIR/zeros.imp" "Z:$DIR/out.bin"
full 8 out.bmp resize "Z:$DIR/picture.bmp" "Z:$DIR/out.bmp" --width 300
exit $fail
