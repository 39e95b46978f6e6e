#!/usr/bin/env bash
# Installs the SDK into a scratch prefix, builds tests/host against that prefix
# alone with find_package(RL132), and runs the result.
set -euo pipefail
SRC="$1"; BUILD="$2"
PREFIX="$BUILD/test-install"; HOST="$BUILD/test-host"
rm -rf "$PREFIX" "$HOST"
cmake --install "$BUILD" --prefix "$PREFIX" >/dev/null
for f in bin/RL132.dll bin/rltool.exe lib/libRL132.dll.a include/rl132.h \
         include/rl132/core/vmem.h lib/cmake/RL132/RL132Config.cmake; do
  [ -e "$PREFIX/$f" ] || { echo "FAIL: $f not installed"; exit 1; }
done
cmake -S "$SRC/tests/host" -B "$HOST" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$SRC/cmake/mingw-i686.cmake" \
  -DCMAKE_PREFIX_PATH="$PREFIX" -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$HOST" >/dev/null
cp "$PREFIX/bin/RL132.dll" "$HOST/"
out=$(cd "$HOST" && "$BUILD/wine-run" "$HOST/host.exe" | tr -d '\r')
echo "$out"
[ "$out" = "A title that the stream writes as a length and its characters | 42 | 1.5 | cyan is 0,255,255" ]
