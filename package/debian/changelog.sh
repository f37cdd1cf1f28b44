#!/usr/bin/env bash
# The changelog in Debian's form, from CHANGELOG.md: a release with its date, one line for each of its points.
#   changelog.sh CHANGELOG.md OUTPUT
set -euo pipefail
export LC_ALL=C

readonly maintainer='TeskReader99 developers <teskreader99@example.org>'

# The points of one release, each in one line, without Markdown's quotes and headings.
points() { # VERSION FILE
  awk -v wanted="## [$1] " '
    function tell() { if (point != "") print point; point = "" }
    /^## / { tell(); within = index($0, wanted) == 1; next }
    !within { next }
    /^- / { tell(); point = substr($0, 3); next }
    /^  / { point = point " " substr($0, 3); next }
    { tell() }
    END { tell() }' "$2" | tr -d '`'
}

item() { fold -s -w 74 <<<"$1" | sed -e 's/ *$//' -e '1s/^/  * /' -e '1!s/^/    /'; }

release() { # VERSION DATE FILE
  printf 'teskread (%s) unstable; urgency=medium\n\n' "$1"
  points "$1" "$3" | while IFS= read -r point; do item "$point"; done
  printf '\n -- %s  %s\n\n' "$maintainer" "$(date -u -R -d "$2")"
}

main() { # CHANGELOG OUTPUT
  sed -n 's/^## \[\(.*\)\] - \(.*\)$/\1 \2/p' "$1" |
    while read -r version date; do release "$version" "$date" "$1"; done >"$2"
}

main "$@"
