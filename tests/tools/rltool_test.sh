#!/usr/bin/env bash
# rltool as a user meets it: help, the subcommands of the frame, exit codes.
set -uo pipefail
export LC_ALL=C
RUN="$1"; TOOL="$2"
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
expect 2 "unknown command 'frobnicate'" frobnicate
expect 0 'RL132 library [0-9]+\.[0-9]+\.[0-9]+' version
expect 2 'usage: rltool version' version extra
expect 0 'Swedish block, \+600' strings
expect 0 '33013 +PNG Bitmap' strings
# United States English and unknown languages get the French block.
expect 0 'language 1033 uses the French block' strings --language 1033
expect 0 '31013 +Fatal Error' strings --language 2057
expect 0 '31425 +Neues Ansicht' strings --language 0x407
expect 2 'language identifier' strings --language sv
exit $fail
