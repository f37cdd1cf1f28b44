#!/usr/bin/env bash
# Shows the main job with no hardware: builds teskread, and lets it read sheets from a simulated
# scanner on a pseudo-terminal; then builds the automation server, and lets a Windows script host read
# three sheets through it. Ends with "N passed, N failed": sheets read, sheets not read.
#
#   ./demo.sh           everything; a Windows side that cannot be had is counted as failed
#   ./demo.sh --quick   without the Windows side (cross compiler, Wine)
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1

readonly logs="$PWD/build/demo"
readonly wine_prefix="$PWD/build/demo/wine-prefix"
passed=0
failed=0

usage() { sed -n '2,7s/^# \{0,1\}//p' "$0"; }

say() { printf '\n== %s\n' "$*"; }

finish() {
  printf '\n%d passed, %d failed\n' "$passed" "$failed"
  [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
  exit
}

fail() { # WHY
  printf 'demo: %s\n' "$1" >&2
  failed=$((failed + 1))
}

# Adds what a demonstration said in its last line of the form "N sheets read, N lost".
count_sheets() { # LOG
  local read_sheets lost
  read -r read_sheets lost < <(
    sed -n 's/^\([0-9][0-9]*\) sheets read, \([0-9][0-9]*\) lost.*$/\1 \2/p' "$1" | tail -n 1)
  if [ -z "${lost:-}" ]; then
    fail "it did not say how many sheets it read; see ${1#"$PWD"/}"
    return
  fi
  passed=$((passed + read_sheets))
  failed=$((failed + lost))
}

# Runs a demonstration before the person's eyes, counting its sheets.
show() { # NAME COMMAND...
  local log="$logs/$1.log" status failed_before=$failed
  shift
  "$@" </dev/null 2>&1 | tee "$log"
  status=${PIPESTATUS[0]}
  count_sheets "$log"
  if [ "$status" -ne 0 ] && [ "$failed" -eq "$failed_before" ]; then
    fail "it ended with status $status"
  fi
}

build() { # PRESET TARGET
  say "building $1 (the compiler's words are in build/demo/build-$1.log)"
  if ! { cmake --preset "$1" && cmake --build --preset "$1" --target "$2" --parallel "$(nproc)"; } \
    </dev/null >"$logs/build-$1.log" 2>&1; then
    tail -n 40 "$logs/build-$1.log"
    fail "the build failed"
    return 1
  fi
}

demo_linux() {
  build linux teskread || return
  say "teskread reads answer sheets from a simulated scanner"
  show linux build/linux/teskread demo
}

in_wine() { env -u DISPLAY timeout 300 cmake/wine.sh "$wine_prefix" "$@"; }

# Wine takes a path that begins with "/" for a switch; its drive Z is the whole machine.
windows_path() { printf 'Z:%s\n' "${1//\//\\}"; }

start_windows() {
  {
    in_wine wineserver -p
    [ -f "$wine_prefix/system.reg" ] || in_wine wineboot -i
    in_wine regsvr32 /s "$(windows_path "$PWD/build/windows/TeskReader99.dll")"
  } </dev/null >"$logs/wine.log" 2>&1 || {
    fail "the automation server could not be registered; see build/demo/wine.log"
    return 1
  }
}

demo_windows() {
  build windows TeskReader99 || return
  say "a Windows script host reads answer sheets through the registered automation server"
  start_windows || return
  rm -f -- "$wine_prefix/dosdevices/com3" # Wine's own link to a port of this machine
  build/linux/teskread simulate --reader 15 --count 3 --link "$wine_prefix/dosdevices/com3" \
    >"$logs/scanner.log" 2>&1 &
  local scanner=$! tries=0
  until grep -q '^listening' "$logs/scanner.log" || [ "$((tries += 1))" -gt 100 ]; do sleep 0.1; done
  show windows in_wine cscript //nologo "$(windows_path "$PWD/examples/read_sheets.vbs")" 3
  kill "$scanner" 2>/dev/null
  wait "$scanner" || fail "the scanner complained; see build/demo/scanner.log"
  {
    in_wine regsvr32 /u /s "$(windows_path "$PWD/build/windows/TeskReader99.dll")"
    in_wine wineserver -k
  } </dev/null >>"$logs/wine.log" 2>&1
}

# What the native part needs is enough to begin with; the Windows side may be out of reach.
main() {
  local with_windows=yes
  case "$#:${1:-}" in
    0:) ;;
    1:--quick) with_windows=no ;;
    1:-h | 1:--help) usage && exit 0 ;;
    *) usage >&2 && exit 2 ;;
  esac
  mkdir -p -- "$logs"
  say "set-up"
  if ! ./setup.sh --quick; then
    fail "the set-up failed"
    finish
  fi
  demo_linux
  if [ "$with_windows" = no ]; then
    say "the Windows side was left out"
  elif ./setup.sh; then
    demo_windows
  else
    fail "the Windows side was not run: the cross compiler or Wine cannot be had"
  fi
  finish
}

main "$@"
