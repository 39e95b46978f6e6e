# Sourced by the make scripts: Wine settings for the build directory $BUILD.
export WINEPREFIX="${RL132_WINEPREFIX:-$BUILD/wineprefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"
export WINEARCH=win32

# Creates the prefix once; no Mono or Gecko installer is offered because of the overrides.
wine_prefix_ready() {
  if [ ! -f "$WINEPREFIX/system.reg" ]; then
    mkdir -p "$WINEPREFIX"
    wineboot -i >/dev/null 2>&1 || true
    wineserver -w 2>/dev/null || true
  fi
}

# One wineserver for the whole run instead of one start per program.
# The first program of a server's life starts Wine's own services; started from
# inside CTest they would inherit its output pipes and keep each test "running"
# until its timeout. Start them here, with nothing inherited.
wine_server_up() {
  wineserver -p 2>/dev/null || true
  wine cmd /c exit </dev/null >/dev/null 2>&1 || true
}

wine_server_down() {
  wineserver -k 2>/dev/null || true
}
