#!/usr/bin/env bash
# Shows the main job with no hardware: builds teskread, and lets it read sheets from a simulated
# scanner on a pseudo-terminal. Ends with "N passed, N failed": sheets read, sheets not read.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1

readonly logs="$PWD/build/demo"
passed=0
failed=0

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

build() { # PRESET
  say "building $1 (the compiler's words are in build/demo/build-$1.log)"
  if ! { cmake --preset "$1" && cmake --build --preset "$1" --target teskread --parallel "$(nproc)"; } \
    </dev/null >"$logs/build-$1.log" 2>&1; then
    tail -n 40 "$logs/build-$1.log"
    fail "the build failed"
    return 1
  fi
}

demo_linux() {
  build linux || return
  say "teskread reads answer sheets from a simulated scanner"
  show linux build/linux/teskread demo
}

main() {
  mkdir -p -- "$logs"
  say "set-up"
  if ! ./setup.sh --quick; then
    fail "the set-up failed"
    finish
  fi
  demo_linux
  finish
}

main "$@"
