#!/usr/bin/env bash
# What tests of the Windows build stand on, started and ended for CTest.
#   fixtures.sh start|stop wine|desktop|scanners BUILD-FOLDER
#     wine      a Wine prefix whose server stays, without a screen: no message box can hang a test
#     desktop   a screen, and a prefix of its own that shows its windows there without a window manager
#     scanners  simulated scanners behind serial ports of "wine"; stopping says whether a host broke their protocol
# Runs nothing in the foreground; what it starts writes its process number below BUILD-FOLDER/fixtures.
set -euo pipefail

action=$1
what=$2
build=$(realpath -- "$3")
sources=$(realpath -- "$(dirname -- "${BASH_SOURCE[0]}")/..")
state="$build/fixtures"
mkdir -p -- "$state"
exec </dev/null
unset DISPLAY

in_wine() { timeout 300 "$sources/cmake/wine.sh" "$build/$1" "${@:2}" >>"$state/wine.log" 2>&1; }

# Runs a command that outlives this script; its output and, at its end, its status are kept. What an earlier one
# left would pass for its own.
keep_running() { # NAME COMMAND...
  rm -f -- "$state/$1.status" "$state/$1.log" "$state/$1.pid"
  setsid bash -c '"${@:2}" & echo $! >"$1.pid"; wait $!; echo $? >"$1.status"' \
    keep_running "$state/$1" "${@:2}" >"$state/$1.log" 2>&1 &
}

end() { # NAME; yields the command's status
  local name=$1 tries=0
  [ -f "$state/$name.pid" ] || return 0
  kill "$(cat -- "$state/$name.pid")" 2>/dev/null || true
  until [ -s "$state/$name.status" ] || [ "$((tries += 1))" -gt 100 ]; do sleep 0.1; done
  rm -f -- "$state/$name.pid"
  return "$(cat -- "$state/$name.status" 2>/dev/null || echo 1)"
}

wait_for() { # PATTERN FILE
  local tries=0
  until grep -qs "$1" "$2"; do
    [ "$((tries += 1))" -le 300 ] || { echo "no \"$1\" in $2" >&2 && return 1; }
    sleep 0.1
  done
}

# A server that stays, and a program that does: each time the last one ends, the system's services begin to end, too, and
# a program that is started meanwhile brings up second ones, which block one another. They begin anew behind a boot.
start_prefix() { # PREFIX
  local fifo="$state/keeper-$1.fifo"
  if [ ! -f "$build/$1/system.reg" ]; then
    in_wine "$1" wineboot -i
    end_wine "$1"
  fi
  in_wine "$1" wineserver -p || true # one that stays already is as good
  [ -p "$fifo" ] || mkfifo -- "$fifo"
  # shellcheck disable=SC2016 # expanded by that bash
  keep_running "keeper-$1" bash -c 'exec "${@:2}" <>"$1"' bash "$fifo" "$sources/cmake/wine.sh" "$build/$1" cmd
  in_wine "$1" cmd /c exit # a first run of the loader: programs then start in milliseconds
}

start_wine() { start_prefix wine-prefix; }

end_wine() { # PREFIX
  in_wine "$1" wineserver -k || true
  in_wine "$1" wineserver -w || true
  end "keeper-$1" || true # it was ended with the server
}

stop_wine() { end_wine wine-prefix; }

start_desktop() {
  local prefix="$build/desktop-prefix"
  mkdir -p -- "$prefix"
  rm -f -- "$prefix/screen"
  keep_running screen sh -c 'exec Xvfb -displayfd 3 -screen 0 2560x1600x24 3>"$1"' sh "$prefix/screen"
  wait_for '[0-9]' "$prefix/screen"
  start_prefix desktop-prefix
  in_wine desktop-prefix reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f
}

stop_desktop() {
  end_wine desktop-prefix
  end screen || true # a screen ends by the signal
  rm -f -- "$build/desktop-prefix/screen"
}

start_scanner() { # PORT READER OPTION...
  local port=$1 reader=$2 link="$build/wine-prefix/dosdevices/com$1"
  shift 2
  rm -f -- "$link" # Wine's own link to a port of this machine
  keep_running "com$port" "$sources/build/linux/teskread" simulate --reader "$reader" --link "$link" "$@"
  wait_for '^listening' "$state/com$port.log"
}

readonly scanmark=15 opscan=26 sekonic=8 vmr=24

start_scanners() {
  [ -x "$sources/build/linux/teskread" ] || { echo "build/linux/teskread is missing: build the preset linux first" && exit 1; }
  start_scanner 3 "$scanmark" --count 400 --seed 7
  start_scanner 4 "$scanmark" --count 0
  start_scanner 5 "$scanmark" --count 400 --seed 7 --side1 48x48
  start_scanner 6 "$opscan" --count 200 --seed 7 --side2 50x48
  start_scanner 7 "$opscan" --count 200 --seed 7 --side2 50x48 --fault skew@2
  start_scanner 8 "$sekonic" --count 200 --seed 7
  start_scanner 9 "$vmr" --count 200 --seed 7 --side1 50x12
}

# A scanner ends well when the host kept to its protocol.
stop_scanners() {
  local port failed=0
  for port in 3 4 5 6 7 8 9; do
    end "com$port" || { echo "the scanner on com$port complained:" && cat -- "$state/com$port.log" && failed=1; }
  done
  return "$failed"
}

"${action}_$what"
