#!/usr/bin/env bash
# Builds everything and runs every test; ends with one line, "N passed, N failed".
#
#   ./test.sh           all of it: the unit tests under the sanitizers and as a Windows program, the command line
#                       over pseudo-terminals, the automation server and the setup dialog under Wine, the packages
#   ./test.sh --quick   the unit tests and the command line natively, without the longest sweeps
#
# Single tests: `ctest --preset linux|asan|windows|windows64 [-R NAME]` behind `cmake --build --preset …`.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1
exec </dev/null

passed=0
failed=0

usage() { sed -n '2,8s/^# \{0,1\}//p' "$0"; }

say() { printf '== %s (%d s)\n' "$*" "$SECONDS"; }

fault() { # WHY
  printf '   FAILED: %s\n' "$1"
  failed=$((failed + 1))
}

finish() {
  [ $((passed + failed)) -gt 0 ] || fault "no test was run"
  printf '%d passed, %d failed\n' "$passed" "$failed"
  [ "$failed" -eq 0 ]
  exit
}

build() { # PRESET [TARGET...]
  local preset=$1 log="build/$1/build.log"
  shift
  say "build $preset"
  mkdir -p -- "build/$preset"
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset" --target "${@:-all}"; } >"$log" 2>&1; then
    fault "the build; see $log"
    grep -E -A 6 'error|Error|FAILED' "$log" | head -n 120
    return 1
  fi
}

# Every test says how much it counted in its last line; one that does not come to it counts as failed.
run() { # PRESET [CTEST-OPTION...]
  local log="build/$1/tests.log" good bad status
  say "tests $1"
  ctest --preset "$@" --output-log "$log"
  status=$?
  read -r good bad < <(awk '/^[0-9]+ passed, [0-9]+ failed\r?$/ { good += $1; bad += $3 } END { print good + 0, bad + 0 }' \
    "build/$1/Testing/Temporary/LastTest.log")
  passed=$((passed + good))
  failed=$((failed + bad))
  [ "$status" -eq 0 ] || [ "$bad" -gt 0 ] || fault "tests $1 did not come to their end; see $log"
}

quick() {
  export TESKREAD_QUICK=1
  ./setup.sh --quick || { fault "set-up" && return; }
  build linux && run linux --label-exclude package
}

everything() {
  ./setup.sh || { fault "set-up" && return; }
  build linux teskread process_tests teskread_bench pages && run linux --label-exclude unit
  build asan unit_tests && run asan
  build windows && run windows
  # The 64-bit server's tests use the 32-bit one, too.
  build windows64 TeskReader99 windows_tests both_servers_tests dialog_tests side_by_side && run windows64
}

trap 'for what in scanners desktop wine; do
  tests/fixtures.sh stop $what build/windows
  tests/fixtures.sh stop $what build/windows64
done; exit 130' INT TERM
case "$#:${1:-}" in
  0:) everything ;;
  1:--quick) quick ;;
  1:-h | 1:--help) usage && exit 0 ;;
  *) usage >&2 && exit 2 ;;
esac
finish
