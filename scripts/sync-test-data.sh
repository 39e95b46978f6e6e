#!/usr/bin/env bash
# Refreshes the test data under tests/data/ from the project's shared folder
# (../shared beside the checkout), the only place this repository's copy comes
# from. Tests and the demo read tests/data/ alone.
#
#   scripts/sync-test-data.sh          copy ../shared over tests/data (folders below)
#   scripts/sync-test-data.sh --check  list what differs; exit 1 when out of step
#
# Without ../shared both modes say so and leave tests/data as it is (exit 0).
# RL132_SHARED overrides where the shared folder is.
set -euo pipefail
export LC_ALL=C
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
SHARED="${RL132_SHARED:-$ROOT/../shared}"
DATA="$ROOT/tests/data"
# The folders copied, relative to both sides.
FOLDERS=(corpus vectors/dcl)

check=0
case "${1:-}" in
  "") ;;
  --check) check=1 ;;
  *) echo "usage: $0 [--check]" >&2; exit 2 ;;
esac

if [ ! -d "$SHARED" ]; then
  echo "sync-test-data: no shared folder at $SHARED; tests/data left as it is"
  exit 0
fi
SHARED="$(cd "$SHARED" && pwd)"

differs=0
for f in "${FOLDERS[@]}"; do
  if [ ! -d "$SHARED/$f" ]; then
    echo "sync-test-data: $SHARED/$f is missing; tests/data/$f left as it is" >&2
    continue
  fi
  if [ "$check" = 1 ]; then
    if [ ! -d "$DATA/$f" ]; then
      echo "missing: tests/data/$f"
      differs=1
    elif ! out=$(diff -rq "$SHARED/$f" "$DATA/$f" 2>&1); then
      sed "s#$SHARED/#shared/#g; s#$DATA/#tests/data/#g" <<< "$out"
      differs=1
    fi
  else
    # Copy beside the target first, so an interrupted copy never leaves half
    # a folder in place of a whole one.
    tmp="$DATA/$f.sync-tmp"
    rm -rf "$tmp"
    mkdir -p "$(dirname "$tmp")"
    cp -R "$SHARED/$f" "$tmp"
    chmod -R u+w "$tmp"
    rm -rf "$DATA/$f"
    mv "$tmp" "$DATA/$f"
    echo "sync-test-data: tests/data/$f <- $SHARED/$f"
  fi
done
if [ "$check" = 1 ]; then
  if [ "$differs" = 1 ]; then
    echo "sync-test-data: tests/data is out of step with $SHARED; run scripts/sync-test-data.sh" >&2
    exit 1
  fi
  echo "sync-test-data: tests/data matches $SHARED"
fi
