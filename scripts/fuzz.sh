#!/usr/bin/env bash
# Builds the libFuzzer programs of tests/native/fuzz_*.cpp with clang and runs
# each for a fixed time. Not part of `make test`; findings land in BUILD/findings.
# Usage: fuzz.sh BUILD_DIR SECONDS
set -uo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
FB="${1:-$ROOT/build-fuzz}"
SECONDS_EACH="${2:-20}"
if ! command -v clang++ >/dev/null 2>&1; then
  echo "fuzz: clang++ is not installed; nothing to do"
  exit 0
fi
FB="$(mkdir -p "$FB" && cd "$FB" && pwd)"
cmake -S "$ROOT/native" -B "$FB" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DRL132_FUZZ=ON >"$FB/configure.log" 2>&1 ||
  { cat "$FB/configure.log"; exit 1; }
fuzzers=$(cd "$ROOT/tests/native" && ls fuzz_*.cpp 2>/dev/null | sed 's/\.cpp$//')
# shellcheck disable=SC2086
cmake --build "$FB" -j2 --target $fuzzers || exit 1
# A valid stream to start from: "AIAIAIAIAIAIA" in binary mode with a 1,024-byte
# dictionary, then the byte that picks the read piece size.
mkdir -p "$FB/corpus/fuzz_explode"
printf '\x00\x04\x82\x24\x25\x8f\x80\x7f\x10' > "$FB/corpus/fuzz_explode/aiai"
rc=0
for f in $fuzzers; do
  [ -x "$FB/$f" ] || { echo "fuzz: $f was not built (no -fsanitize=fuzzer?)"; continue; }
  mkdir -p "$FB/corpus/$f" "$FB/findings"
  echo "== $f for ${SECONDS_EACH} s"
  (cd "$FB/findings" && "$FB/$f" -max_total_time="$SECONDS_EACH" -seed=1 -max_len=8192 \
     -print_final_stats=1 "$FB/corpus/$f") || rc=1
done
exit "$rc"
