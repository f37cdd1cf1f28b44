#!/usr/bin/env bash
# Builds everything and runs every test; ends with one line, "N passed, N failed".
#
#   ./test.sh           all of it
#   ./test.sh --quick   without the Windows side and the long sweeps
#
# The output of each runner is kept in build/PRESET/reports/.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1
exec </dev/null

# No test program may hang the run; the longest sweep takes a small part of this.
readonly runner_limit_seconds=1500
readonly wine_prefix="$PWD/build/windows/wine-prefix"

with_windows=yes
passed=0
failed=0
failures=()
reports="$PWD/build/reports"
side=sources
wine_runs=no
runner_group=""
screen_pid=""
scanner_pids=()

say() { printf '%s\n' "== $*"; }

# ---- counting -------------------------------------------------------------------------------------

note_failure() { # NAME WHY [COUNT]
  failed=$((failed + ${3:-1}))
  failures+=("$side $1: $2")
  printf '   FAILED %s: %s\n' "$1" "$2"
}

finish() {
  local failure
  if [ $((passed + failed)) -eq 0 ]; then
    note_failure "test.sh" "no test was run"
  fi
  stop_wine
  if [ "$failed" -gt 0 ]; then
    say "what failed"
    for failure in "${failures[@]}"; do printf '   %s\n' "$failure"; done
  fi
  printf '%d passed, %d failed\n' "$passed" "$failed"
  [ "$failed" -eq 0 ]
  exit
}

# ---- running --------------------------------------------------------------------------------------

# Runs a command in a session of its own, its output in a file; whatever it leaves behind is ended.
run_contained() { # LOG COMMAND...
  local log=$1 status
  shift
  setsid timeout --kill-after=10 "$runner_limit_seconds" "$@" >"$log" 2>&1 &
  runner_group=$!
  wait "$runner_group" 2>/dev/null
  status=$?
  kill -KILL -- "-$runner_group" 2>/dev/null
  runner_group=""
  return "$status"
}

# A test that is one command: it passes when the command's status is 0.
run_check() { # NAME COMMAND...
  local name=$1 log="$reports/$1.log" status
  shift
  run_contained "$log" "$@"
  status=$?
  if [ "$status" -eq 0 ]; then
    passed=$((passed + 1))
    printf '   %-24s passed\n' "$name"
  else
    note_failure "$name" "status $status; see ${log#"$PWD"/}"
    tail -n 40 "$log"
  fi
}

# How many lines of a GoogleTest report match; it is written only when the program came to its end.
count_in_report() { grep -cE "$2" "$1" 2>/dev/null || true; }

failures_in_report() { # the report's first "failures" is that of the whole run
  sed -n "s/^  \"failures\": \([0-9]*\),\r\{0,1\}\$/\1/p" "$1" | head -n 1
}

# A GoogleTest program: every test case that ran counts.
run_gtest() { # NAME COMMAND...
  local name=$1 log="$reports/$1.log" report="$reports/$1.json" started=$SECONDS
  local status ran bad skipped
  shift
  rm -f -- "$report"
  # The report's name is relative: a Windows program takes a path with a leading "/" for a relative one.
  run_contained "$log" env -C "$reports" "$@" "--gtest_output=json:$name.json" --gtest_color=no
  status=$?
  if [ ! -s "$report" ]; then
    note_failure "$name" "came to no end (status $status); see ${log#"$PWD"/}"
    tail -n 40 "$log"
    return
  fi
  ran=$(count_in_report "$report" '^ +"result": "COMPLETED",')
  skipped=$(count_in_report "$report" '^ +"result": "SKIPPED",')
  bad=$(failures_in_report "$report")
  judge_gtest "$name" "$status" "$ran" "${bad:-0}" "$skipped" "$((SECONDS - started))"
}

judge_gtest() { # NAME STATUS RAN BAD SKIPPED SECONDS
  local name=$1 status=$2 ran=$3 bad=$4 skipped=$5
  passed=$((passed + ran - bad))
  printf '   %-24s %d passed, %d failed (%d s)\n' "$name" "$((ran - bad))" "$bad" "$6"
  if [ "$bad" -gt 0 ]; then
    note_failure "$name" "$bad failed; see ${reports#"$PWD"/}/$name.log" "$bad"
    grep -E -B 12 '^\[  FAILED  \] .*\([0-9]+ ms\)' "$reports/$name.log" | head -n 200
  elif [ "$status" -ne 0 ]; then
    note_failure "$name" "all test cases passed, yet its status is $status"
  fi
  if [ "$ran" -eq 0 ]; then
    note_failure "$name" "ran no test"
  fi
  if [ "$skipped" -gt 0 ] && [ -z "${TESKREAD_QUICK:-}" ]; then
    note_failure "$name" "$skipped skipped, in a run that leaves nothing out" "$skipped"
  fi
}

# ---- the steps ------------------------------------------------------------------------------------

set_up() {
  say "set-up"
  local arguments=()
  [ "$with_windows" = yes ] || arguments=(--quick)
  if ! ./setup.sh "${arguments[@]}"; then
    note_failure "setup.sh" "see above"
    finish
  fi
}

check_format() {
  find . \( -name build -o -name .git \) -prune -o \( -name '*.cpp' -o -name '*.h' \) -print0 |
    xargs -0 -r clang-format --dry-run -Werror
}

run_checks() {
  say "checks of the sources"
  mkdir -p -- "$reports"
  export -f check_format
  run_check format bash -c 'set -o pipefail; check_format'
  run_check house_includes cmake/check_house.sh includes
  run_check house_cycles cmake/check_house.sh cycles
  run_check house_systems cmake/check_house.sh systems
}

# Leaves `side` and `reports` at the preset's own.
build() { # PRESET [TARGET]
  say "build $1"
  side=$1
  reports="$PWD/build/$1/reports"
  mkdir -p -- "$reports"
  if ! { cmake --preset "$1" && cmake --build --preset "$1" --parallel "$(nproc)" --target "${2:-all}"; } \
    >"$reports/build.log" 2>&1; then
    note_failure build "see ${reports#"$PWD"/}/build.log"
    grep -E -A 6 'error|Error|FAILED' "$reports/build.log" | head -n 120
    return 1
  fi
}

run_linux() {
  build linux || return
  say "tests linux"
  run_gtest unit_tests "$PWD/build/linux/unit_tests"
  run_gtest process_tests "$PWD/build/linux/process_tests"
}

# The same unit, driver and contract tests under the address and undefined-behaviour sanitizers.
run_sanitized() {
  build asan unit_tests || return
  say "tests asan"
  run_gtest unit_tests "$PWD/build/asan/unit_tests"
}

# ---- the Windows side -----------------------------------------------------------------------------

in_wine() { cmake/wine.sh "$wine_prefix" "$@"; }

# A standing server and one run of the loader beforehand: programs then start in milliseconds.
start_wine() {
  say "Wine"
  wine_runs=yes
  {
    in_wine wineserver -p
    [ -f "$wine_prefix/system.reg" ] || timeout 300 cmake/wine.sh "$wine_prefix" wineboot -i
    timeout 120 cmake/wine.sh "$wine_prefix" cmd /c exit
  } >"$reports/wine.log" 2>&1 || {
    note_failure "Wine" "does not start; see ${reports#"$PWD"/}/wine.log"
    return 1
  }
}

stop_wine() {
  if [ "$wine_runs" = yes ]; then
    in_wine wineserver -k >/dev/null 2>&1
    timeout 30 cmake/wine.sh "$wine_prefix" wineserver -w >/dev/null 2>&1
  fi
}

# A simulated scanner behind a serial port of Wine's.
start_scanner() { # PORT READER OPTION...
  local port=$1 reader=$2 log="$reports/scanner_com$1.log" tries=0
  shift 2
  rm -f -- "$wine_prefix/dosdevices/com$port" # Wine's own link to a port of this machine
  build/linux/teskread simulate --reader "$reader" --link "$wine_prefix/dosdevices/com$port" "$@" \
    >"$log" 2>&1 &
  scanner_pids+=("$!")
  until grep -q '^listening' "$log" || [ "$((tries += 1))" -gt 100 ]; do sleep 0.1; done
}

# A scanner ends well when the host kept to its protocol.
stop_scanners() {
  local pid
  for pid in ${scanner_pids[@]+"${scanner_pids[@]}"}; do
    kill "$pid" 2>/dev/null
    wait "$pid" || note_failure "scanner" "it complained; see ${reports#"$PWD"/}/scanner_com*.log"
  done
  scanner_pids=()
}

# Without a screen no message box can hang a test.
run_automation() {
  local scanmark=15 opscan=26 sekonic=8 vmr=24
  start_scanner 3 "$scanmark" --count 400 --seed 7
  start_scanner 4 "$scanmark" --count 0
  start_scanner 5 "$scanmark" --count 40 --seed 7 --fault jam@2
  start_scanner 6 "$opscan" --count 200 --seed 7 --side2 50x48
  start_scanner 7 "$opscan" --count 200 --seed 7 --side2 50x48 --fault skew@2
  start_scanner 8 "$sekonic" --count 200 --seed 7
  start_scanner 9 "$vmr" --count 200 --seed 7 --side1 50x12
  run_gtest windows_tests env -u DISPLAY "$PWD/cmake/wine.sh" "$wine_prefix" \
    "$PWD/build/windows/windows_tests.exe"
  stop_scanners
}

# The setup dialog needs a screen. Wine's desktop takes to one when it starts, hence the restart; and no
# window manager is there that it could wait for.
run_dialog() {
  local number=""
  coproc screen { exec Xvfb -displayfd 1 -screen 0 2560x1600x24 2>"$reports/screen.log"; }
  screen_pid=$screen_PID
  if ! read -r -t 30 -u "${screen[0]}" number; then
    note_failure dialog_tests "Xvfb does not start; see ${reports#"$PWD"/}/screen.log"
    return
  fi
  in_wine wineserver -k >/dev/null 2>&1
  timeout 30 cmake/wine.sh "$wine_prefix" wineserver -w >/dev/null 2>&1
  DISPLAY=":$number" timeout 120 cmake/wine.sh "$wine_prefix" reg add 'HKCU\Software\Wine\X11 Driver' \
    /v Managed /d N /f >>"$reports/wine.log" 2>&1
  run_gtest dialog_tests env "DISPLAY=:$number" "$PWD/cmake/wine.sh" "$wine_prefix" \
    "$PWD/build/windows/dialog_tests.exe"
  in_wine wineserver -k >/dev/null 2>&1
  stop_screen
}

stop_screen() {
  [ -z "$screen_pid" ] || kill "$screen_pid" 2>/dev/null
  screen_pid=""
}

check_size() { # the server is to stay small enough to be sent along with a host
  [ "$(stat -c %s build/windows/TeskReader99.dll)" -lt 3145728 ]
}

# Only what every Windows has.
check_imports() {
  ! i686-w64-mingw32-objdump -p build/windows/TeskReader99.dll | sed -n 's/^.*DLL Name: //p' |
    grep -viE '^(advapi32|comctl32|comdlg32|gdi32|kernel32|msvcrt|ole32|oleaut32|shell32|user32)\.dll$'
}

run_windows() {
  build windows || return
  start_wine || return
  say "tests windows"
  run_gtest unit_tests "$PWD/cmake/wine.sh" "$wine_prefix" "$PWD/build/windows/unit_tests.exe"
  export -f check_size check_imports
  run_check server_size bash -c check_size
  run_check server_imports bash -c check_imports
  run_automation
  run_dialog
}

# ---- the run --------------------------------------------------------------------------------------

end_early() {
  [ -z "$runner_group" ] || kill -KILL -- "-$runner_group" 2>/dev/null
  stop_scanners >/dev/null
  stop_wine
  stop_screen
  exit 130
}

main() {
  case "${1:-}" in
    "") ;;
    --quick)
      with_windows=no
      export TESKREAD_QUICK=1
      ;;
    -h | --help) sed -n '2,7s/^# \{0,1\}//p' "$0" && exit 0 ;;
    *) sed -n '2,7s/^# \{0,1\}//p' "$0" >&2 && exit 2 ;;
  esac
  trap end_early INT TERM
  set_up
  run_checks
  run_linux
  run_sanitized
  [ "$with_windows" = no ] || run_windows
  finish
}

main "$@"
