#!/bin/sh
# Runs a Windows program, or wineserver, in a Wine prefix of its own.
#   wine.sh PREFIX PROGRAM [ARGUMENT...]      wine.sh PREFIX wineserver [OPTION...]
# A prefix in a folder whose name ends in 64 is a 64-bit Windows, which runs 32-bit programs, too; any other is a
# 32-bit one. A prefix whose file "screen" holds a number shows its windows on that screen.
set -eu
WINEPREFIX=$(realpath -m -- "$1")
shift
case "$(dirname -- "$WINEPREFIX")" in
  *64) WINEARCH=win64 ;;
  *) WINEARCH=win32 ;;
esac
export WINEPREFIX WINEARCH WINEDEBUG="${WINEDEBUG:--all}"
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
