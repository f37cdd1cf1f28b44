#!/usr/bin/env bash
# Checks the rules of the house that no compiler checks. Prints each fault; the status is 1 if any.
#   check_house.sh includes   an include points down the house, from the repository root
#   check_house.sh cycles     no two files include each other by any road
#   check_house.sh format    the sources stand as clang-format sets them
#   check_house.sh systems    the question "which system?" is asked in platform/ and automation/ only
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

readonly folders=(base profiles transport engine drivers setup platform assembly automation cli simulator)

# What a layer may include; a file belongs to the layer with the longest folder that it stands in.
readonly may_include='
base: base
profiles: base profiles
transport: base transport
engine: base profiles transport engine
drivers: base profiles transport engine drivers
transport/dispatch: base profiles transport engine drivers transport/dispatch
setup: base profiles transport engine drivers setup
platform: base transport engine platform
setup/windows: base engine setup platform setup/windows
setup/terminal: base engine setup platform setup/terminal
assembly: base profiles transport transport/dispatch engine drivers setup platform assembly
automation: base profiles transport engine drivers setup platform assembly automation
cli: base profiles transport engine drivers setup platform assembly simulator cli
cli/pages: base engine assembly cli cli/pages
simulator: base simulator
'

# Of folders that are there; the house is built one by one.
sources_in() {
  { find "$@" -type f \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' \) 2>/dev/null || true; } |
    LC_ALL=C sort
}

# Lines "FILE INCLUDED" for every include in double quotes.
quoted_includes() {
  sources_in "$@" | while IFS= read -r file; do
    sed -n "s|^[[:space:]]*#[[:space:]]*include[[:space:]]*\"\([^\"]*\)\".*|$file \1|p" "$file"
  done
}

check_includes() {
  quoted_includes "${folders[@]}" | awk -v table="$may_include" '
    function layer(path) {
      while (path ~ /\// && !(path in known)) sub(/\/[^\/]*$/, "", path)
      return path in known ? path : ""
    }
    function exists(path,   line, found) {
      found = (getline line < path) >= 0
      close(path)
      return found
    }
    BEGIN {
      count = split(table, lines, "\n")
      for (i = 1; i <= count; ++i) {
        words = split(lines[i], word, /:? /)
        known[word[1]]
        for (j = 2; j <= words; ++j) allowed[word[1], word[j]] = 1
      }
    }
    {
      from = layer($1); to = layer($2)
      generated = from == "automation" && to == ""
      if (generated) next
      if (!exists($2)) { print $1 ": \"" $2 "\" is no file from the repository root"; faults = 1 }
      else if (!((from, to) in allowed)) { print $1 ": may not include \"" $2 "\""; faults = 1 }
    }
    END { exit faults }'
}

check_cycles() {
  quoted_includes "${folders[@]}" tests bench | awk '$1 != $2' | tsort >/dev/null
}

check_systems() {
  local guarded
  guarded=$(sources_in "${folders[@]}" | grep -v -e '^platform/' -e '^automation/' |
    tr '\n' '\0' | xargs -0 -r grep -nE '^[[:space:]]*#.*\b(_WIN32|__linux__|__unix__|__MINGW32__)\b' || true)
  [ -z "$guarded" ] || { printf '%s\n' "$guarded" && return 1; }
}

check_format() {
  sources_in "${folders[@]}" bench tests | tr '\n' '\0' | xargs -0 -r clang-format --dry-run -Werror
}

case "${1:-}" in
  format) check_format ;;
  includes) check_includes ;;
  cycles) check_cycles ;;
  systems) check_systems ;;
  *) sed -n '2,6s/^# \{0,1\}//p' "$0" >&2 && exit 2 ;;
esac
