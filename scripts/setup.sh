#!/usr/bin/env bash
# Installs what the build and the tests need from Debian's packages.
# Idempotent: when everything is present it only checks and returns.
set -euo pipefail

need_cmds=(i686-w64-mingw32-g++-posix i686-w64-mingw32-windres i686-w64-mingw32-objdump
           cmake ninja wine Xvfb g++)
missing=0
for c in "${need_cmds[@]}"; do command -v "$c" >/dev/null 2>&1 || missing=1; done
[ -f /usr/src/googletest/CMakeLists.txt ] || missing=1
# wine32 is what actually runs 32-bit programs; the wine launcher alone is not enough.
dpkg -s wine32:i386 >/dev/null 2>&1 || missing=1
# The native sanitizer build is 32-bit (gcc -m32): the i386 C and C++ runtimes.
dpkg -s g++-multilib >/dev/null 2>&1 || missing=1
# ImageMagick (optional for the tests and bench, which skip without it) reads and
# writes Photo CD image packs; /usr/local/bin/convert may be a stand-in script.
[ -x /usr/bin/convert ] || missing=1
[ "$missing" = 0 ] && exit 0

SUDO=""
[ "$(id -u)" = 0 ] || SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive

if ! dpkg --print-foreign-architectures | grep -x i386 >/dev/null; then
  $SUDO dpkg --add-architecture i386
fi

pkgs=(g++-mingw-w64-i686-posix mingw-w64-tools binutils-mingw-w64-i686 cmake ninja-build
      make wine wine32:i386 xvfb xauth googletest g++ g++-multilib imagemagick)

apt_q() { $SUDO apt-get -y -q "$@"; }

# First try: the machine's own sources.
if apt_q update >/dev/null 2>&1 && apt_q install --no-install-recommends "${pkgs[@]}"; then
  exit 0
fi

# The i386 index of the security suite can lag its amd64 index; Multi-Arch: same
# libraries then disagree on versions and wine32 is "held broken". Retry with the
# main suites only.
echo "setup: retrying with the main suites only" >&2
parts=$(mktemp -d)
trap 'rm -rf "$parts"' EXIT
src=/etc/apt/sources.list.d/debian.sources
if [ -f "$src" ]; then
  awk 'BEGIN{RS=""; ORS="\n\n"} !/security/' "$src" > "$parts/main.sources"
else
  grep -v security /etc/apt/sources.list > "$parts/main.list"
fi
opts=(-o Dir::Etc::SourceList=/dev/null -o Dir::Etc::SourceParts="$parts")
apt_q "${opts[@]}" update
apt_q "${opts[@]}" install --no-install-recommends "${pkgs[@]}"
