#!/usr/bin/env bash
# Checks the automation server's file. Prints each fault; the status is 1 if any.
#   check_server.sh size SERVER      it is small enough to be sent along with a host
#   check_server.sh imports SERVER   it needs only what every Windows has
set -euo pipefail

readonly largest=3145728 # bytes

case "${1:-}" in
  size) [ "$(stat -c %s -- "$2")" -lt "$largest" ] ;;
  imports)
    imported=$(objdump -p -- "$2" | sed -n 's/^.*DLL Name: //p')
    [ -n "$imported" ] || { echo "$2 imports nothing: is it a library?" && exit 1; }
    ! grep -viE '^(advapi32|comctl32|comdlg32|gdi32|kernel32|msvcrt|ole32|oleaut32|shell32|user32)\.dll$' <<<"$imported"
    ;;
  *) sed -n '2,4s/^# \{0,1\}//p' "$0" >&2 && exit 2 ;;
esac
