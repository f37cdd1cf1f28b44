#!/usr/bin/env bash
# Runs one test of CTest's and ends with one line that counts: "N passed, N failed".
#   run_test.sh check COMMAND...                 one test, which passes when the status is 0
#   run_test.sh cases REPORT COMMAND...          a GoogleTest program: every test case counts; the report is JSON
# A test case that is skipped, a program without test cases, and an end before the report are failures.
set -uo pipefail

mode=$1
shift

check() {
  if "$@"; then
    echo "1 passed, 0 failed"
  else
    echo "0 passed, 1 failed"
    return 1
  fi
}

cases() { # REPORT COMMAND...
  local report=$1 status ran bad skipped
  shift
  mkdir -p -- "$(dirname -- "$report")"
  rm -f -- "$report"
  # The report's name is relative: a Windows program takes a path with a leading "/" for a relative one.
  # The output goes to a file: a process that the program leaves behind would hold a pipe open.
  env -C "$(dirname -- "$report")" "$@" "--gtest_output=json:$(basename -- "$report")" --gtest_color=no --gtest_brief=1 \
    >"$report.log" 2>&1
  status=$?
  cat -- "$report.log"
  if [ ! -s "$report" ]; then
    echo "it came to no end (status $status)"
    echo "0 passed, 1 failed"
    return 1
  fi
  ran=$(grep -cE '^ +"result": "COMPLETED",' "$report")
  skipped=$(grep -cE '^ +"result": "SKIPPED",' "$report")
  bad=$(sed -n 's/^  "failures": \([0-9]*\),\r\{0,1\}$/\1/p' "$report" | head -n 1)
  bad=$((${bad:-0} + skipped))
  if [ "$bad" -eq 0 ] && { [ "$status" -ne 0 ] || [ "$ran" -eq 0 ]; }; then
    echo "$ran test cases ran, status $status"
    bad=1
  fi
  [ "$skipped" -eq 0 ] || echo "$skipped test cases were skipped"
  echo "$((ran - (${bad:-0} - skipped))) passed, $bad failed"
  [ "$bad" -eq 0 ]
}

"$mode" "$@"
