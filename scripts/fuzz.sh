#!/usr/bin/env bash
# Builds the libFuzzer programs of tests/native/fuzz_*.cpp with clang (32-bit,
# with AddressSanitizer and UndefinedBehaviorSanitizer, like the native tests)
# and runs each for a fixed time, one after the other. Not part of `make test`;
# findings land in BUILD/findings, the corpora grow in BUILD/corpus.
# Usage: fuzz.sh BUILD_DIR SECONDS [TARGET...]   (FUZZ_BITS=64: the host's width)
set -uo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
FB="${1:-$ROOT/build-fuzz}"
SECONDS_EACH="${2:-20}"
shift 2 2>/dev/null || shift $#
if ! command -v clang++ >/dev/null 2>&1; then
  echo "fuzz: clang++ is not installed; nothing to do"
  exit 0
fi
m32=ON
[ "${FUZZ_BITS:-32}" = 64 ] && m32=OFF
FB="$(mkdir -p "$FB" && cd "$FB" && pwd)"
cmake -S "$ROOT/native" -B "$FB" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DRL132_FUZZ=ON -DRL132_NATIVE_M32=$m32 \
  >"$FB/configure.log" 2>&1 || { cat "$FB/configure.log"; exit 1; }
if [ $# -gt 0 ]; then
  fuzzers="$*"
else
  fuzzers=$(cd "$ROOT/tests/native" && ls fuzz_*.cpp 2>/dev/null | sed 's/\.cpp$//')
fi
# shellcheck disable=SC2086
cmake --build "$FB" -j2 --target $fuzzers || exit 1

# Starting points. explode: "AIAIAIAIAIAIA" in binary mode with a 1,024-byte
# dictionary, then the byte that picks the read piece size. stream: a seed
# byte, then a frame holding "AIAIAIAIAIAIA" and the same frame cut short.
mkdir -p "$FB/corpus/fuzz_explode" "$FB/corpus/fuzz_stream" "$FB/corpus/fuzz_roundtrip"
printf '\x00\x04\x82\x24\x25\x8f\x80\x7f\x10' > "$FB/corpus/fuzz_explode/aiai"
printf '\x07\xb1\xaa\x12\x00\x08\x00\x00\x00\x00\x04\x82\x24\x25\x8f\x80\x7f' > "$FB/corpus/fuzz_stream/frame"
printf '\x07\xb1\xaa\x12\x00\x08\x00\x00\x00\x00\x04\x82\x24' > "$FB/corpus/fuzz_stream/cut"
printf '\x35\x01the frame the raw the length the magic' > "$FB/corpus/fuzz_roundtrip/words"
# The file fuzzer opens and deletes a scratch file per input: in memory if possible.
[ -d /dev/shm ] && export TMPDIR=/dev/shm
rc=0
for f in $fuzzers; do
  [ -x "$FB/$f" ] || { echo "fuzz: $f was not built (no -fsanitize=fuzzer?)"; continue; }
  mkdir -p "$FB/corpus/$f" "$FB/findings"
  echo "== $f for ${SECONDS_EACH} s"
  (cd "$FB/findings" && "$FB/$f" -max_total_time="$SECONDS_EACH" -seed=1 -max_len=8192 \
     -print_final_stats=1 "$FB/corpus/$f") || rc=1
done
exit "$rc"
