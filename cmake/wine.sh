#!/bin/sh
# Runs a Windows program, or wineserver, in a 32-bit Wine prefix of its own.
#   wine.sh PREFIX PROGRAM [ARGUMENT...]      wine.sh PREFIX wineserver [OPTION...]
# A prefix whose file "screen" holds a number shows its windows on that screen.
set -eu
WINEPREFIX=$(realpath -m -- "$1")
shift
export WINEPREFIX WINEARCH=win32 WINEDEBUG="${WINEDEBUG:--all}"
# Neither .NET nor the HTML engine is needed; without this Wine asks to download them.
export WINEDLLOVERRIDES="mscoree=;mshtml="
mkdir -p -- "$(dirname -- "$WINEPREFIX")"
if [ -s "$WINEPREFIX/screen" ]; then
  DISPLAY=":$(cat -- "$WINEPREFIX/screen")"
  export DISPLAY
fi
if [ "$1" = wineserver ]; then
  exec "$@"
fi
exec wine "$@"
