#!/usr/bin/env bash
# Runs the whole suite under Wine: the headless programs first, then the ones that
# need a 256-colour screen, under Xvfb at depth 8, then the native build of the
# algorithmic kernels under the sanitizers. Each phase prints CTest's summary;
# the last line counts all phases together.
set -uo pipefail
BUILD="$(cd "${1:-build}" && pwd)"
. "$(dirname "$0")/wine-env.sh"
JOBS="${JOBS:-2}"
rm -f "$BUILD"/ctest-*.log

wine_prefix_ready
unset DISPLAY
wine_server_up
ctest --test-dir "$BUILD" -L headless -j"$JOBS" --output-on-failure 2>&1 | tee "$BUILD/ctest-headless.log"
rc_headless=${PIPESTATUS[0]}
wine_server_down

rc_display=0
if ctest --test-dir "$BUILD" -N -L display8 2>/dev/null | grep 'Test *#' >/dev/null; then
  # The desktop process of a prefix keeps the display it started with, so the
  # display8 phase gets a fresh wineserver that sees DISPLAY from the start.
  n=97
  while [ -e "/tmp/.X11-unix/X$n" ] || [ -e "/tmp/.X$n-lock" ]; do n=$((n+1)); done
  Xvfb ":$n" -screen 0 800x600x8 -nolisten tcp >/dev/null 2>&1 &
  xvfb_pid=$!
  for _ in $(seq 100); do [ -e "/tmp/.X11-unix/X$n" ] && break; sleep 0.1; done
  export DISPLAY=":$n"
  wine_server_up
  ctest --test-dir "$BUILD" -L display8 -j1 --output-on-failure 2>&1 | tee "$BUILD/ctest-display8.log"
  rc_display=${PIPESTATUS[0]}
  wine_server_down
  kill "$xvfb_pid" 2>/dev/null; wait "$xvfb_pid" 2>/dev/null
fi

# The kernels built for the host under AddressSanitizer and
# UndefinedBehaviorSanitizer, next to the cross build.
bash "$(dirname "$0")/native-check.sh" "$BUILD-native" "$BUILD/ctest-native.log"
rc_native=$?

results() { # the result lines of CTest runs in the logs named
  cat "$@" 2>/dev/null | grep -E '^ *[0-9]+/[0-9]+ Test +#[0-9]+: '
}
passed=$(results "$BUILD"/ctest-*.log | grep -c ' Passed')
failed=$(results "$BUILD"/ctest-*.log | grep -vc ' Passed')
# Every program the cross build registers must have run in one of the Wine phases.
known=$(ctest --test-dir "$BUILD" -N 2>/dev/null | sed -n 's/^Total Tests: *//p')
ran=$(results "$BUILD/ctest-headless.log" "$BUILD/ctest-display8.log" | grep -c .)
missing=$(( ${known:-0} - ran ))
echo
[ "$missing" -gt 0 ] && echo "$missing registered test programs did not run"
echo "$passed passed, $failed failed"
[ "$rc_headless" = 0 ] && [ "$rc_display" = 0 ] && [ "$rc_native" = 0 ] && [ "$passed" -gt 0 ] \
  && [ "$missing" -le 0 ]
