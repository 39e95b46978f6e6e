#!/usr/bin/env bash
# Configures, builds and runs the native (host) build of the algorithmic kernels
# and the streams under AddressSanitizer and UndefinedBehaviorSanitizer, for
# 32-bit x86 (NATIVE_BITS=64: the host's width): native/CMakeLists.txt.
# Usage: native-check.sh BUILD_DIR [LOG]  (LOG receives CTest's output too)
set -uo pipefail
ROOT="$(cd "$(dirname "$0")/.." && pwd)"
NB="${1:-$ROOT/build-native}"
LOG="${2:-}"
JOBS="${JOBS:-2}"
start=$(date +%s)

run() {
  mkdir -p "$NB"
  # NATIVE_BITS=64 builds for the host's own width instead of the target's.
  local m32=ON
  [ "${NATIVE_BITS:-32}" = 64 ] && m32=OFF
  if [ ! -f "$NB/build.ninja" ] || ! grep -q "^RL132_NATIVE_M32:BOOL=$m32\$" "$NB/CMakeCache.txt"; then
    cmake -S "$ROOT/native" -B "$NB" -G Ninja -DCMAKE_CXX_COMPILER=g++ -DRL132_NATIVE_M32=$m32 \
      >"$NB/configure.log" 2>&1 || { cat "$NB/configure.log"; echo "native: configuring failed"; return 1; }
  fi
  cmake --build "$NB" -j"$JOBS" || { echo "native: build failed"; return 1; }
  ctest --test-dir "$NB" -L native -j"$JOBS" --output-on-failure
}

if [ -n "$LOG" ]; then
  run 2>&1 | tee "$LOG"
  rc=${PIPESTATUS[0]}
else
  run
  rc=$?
fi
echo "native phase: $(( $(date +%s) - start )) s"
exit "$rc"
