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

passed=0 failed=0
usage() { sed -n '2,8s/^# \{0,1\}//p' "$0"; }
say() { printf '== %s (%d s)\n' "$*" "$SECONDS"; }
fault() { # WHY
  printf '   FAILED: %s\n' "$1"
  failed=$((failed + 1))
}

finish() {
  [ $((passed + failed)) -gt 0 ] || fault "no test was run"
  printf '%d passed, %d failed\n' "$passed" "$failed"
  exit $((failed > 0))
}

build() { # PRESET [TARGET...]
  local preset=$1 log="build/$1/build.log"
  shift && say "build $preset"
  mkdir -p -- "build/$preset"
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset" --target "${@:-all}"; } >"$log" 2>&1; then
    fault "the build; see $log"
    grep -E -A 6 'error|Error|FAILED' "$log" | head -n 120
    return 1
  fi
}

# Runs the tests of presets beside each other; programs under Wine wait more than they compute. Every test says how much
# it counted in its last line; one that does not come to it counts as failed.
run() { # "PRESET [CTEST-OPTION...]"...
  local tests preset good bad
  say "tests ${*%% *}"
  for tests in "$@"; do
    preset=${tests%% *}
    mkdir -p -- "build/$preset/Testing/Temporary"
    rm -f -- "build/$preset/tests.failed" && : >"build/$preset/Testing/Temporary/LastTest.log"
    { ctest --preset $tests --output-log "build/$preset/tests.log" || touch "build/$preset/tests.failed"; } &
  done
  wait
  for preset in "${@%% *}"; do
    read -r good bad < <(awk '/^[0-9]+ passed, [0-9]+ failed\r?$/ { good += $1; bad += $3 } END { print good + 0, bad + 0 }' \
      "build/$preset/Testing/Temporary/LastTest.log")
    passed=$((passed + good)) failed=$((failed + bad))
    [ ! -e "build/$preset/tests.failed" ] || [ "$bad" -gt 0 ] || fault "tests $preset did not end; see build/$preset/tests.log"
  done
}

quick() {
  export TESKREAD_QUICK=1
  ./setup.sh --quick || { fault "set-up" && return; }
  build linux && run "linux --label-exclude package"
}

everything() {
  ./setup.sh || { fault "set-up" && return; }
  build linux teskread process_tests teskread_bench pages && run "linux --label-exclude unit"
  build asan unit_tests && run asan
  # The tests of 64 bits use what was built for 32 bits, too.
  build windows && build windows64 TeskReader99 windows_tests both_servers_tests dialog_tests side_by_side &&
    run windows windows64
}

trap 'for what in {scanners,desktop,wine}" build/windows"{,64}; do tests/fixtures.sh stop $what; done; exit 130' INT TERM
case "$#:${1:-}" in
  0:) everything ;;
  1:--quick) quick ;;
  1:-h | 1:--help) usage && exit 0 ;;
  *) usage >&2 && exit 2 ;;
esac
finish
