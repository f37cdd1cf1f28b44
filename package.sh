#!/usr/bin/env bash
# Builds every package into dist/, where SHA256SUMS has their sums. Packages are made of commits: with changes that are
# in none it refuses.
#
#   ./package.sh            the Debian package and the Windows installer
#   ./package.sh --debian   the Debian package alone
#   ./package.sh --dirty    both, also with changes that are not committed; such packages are for trying out
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
exec </dev/null

say() { printf '== %s (%d s)\n' "$*" "$SECONDS"; }

usage() { sed -n '2,7s/^# \{0,1\}//p' "$0"; }

refuse_changes() {
  local changes
  changes=$(git status --porcelain)
  [ -n "$changes" ] || return 0
  printf 'Not committed:\n%s\nCommit it, or build packages to try out: ./package.sh --dirty\n' "$changes" >&2
  exit 1
}

make_debian() { cmake --preset linux && package/debian/build.sh build/linux dist; }

make_windows() { package/windows/build.sh dist; }

# All of them or none.
make_packages() { # debian|windows...
  local kind log=build/package.log
  rm -rf -- dist
  mkdir -p -- dist build
  for kind in "$@"; do
    say "the package for $kind"
    if ! "make_$kind" >"$log" 2>&1; then
      cat -- "$log" >&2
      rm -rf -- dist
      printf 'No packages were made: the one for %s failed, as said above.\n' "$kind" >&2
      exit 1
    fi
  done
  (cd -- dist && sha256sum -- * >SHA256SUMS)
}

main() {
  local kinds=(debian windows) tools=()
  case "$#:${1:-}" in
    0:) refuse_changes ;;
    1:--debian) refuse_changes && kinds=(debian) tools=(--debian) ;;
    1:--dirty) say "uncommitted changes, if any, go into the packages" ;;
    1:-h | 1:--help) usage && exit 0 ;;
    *) usage >&2 && exit 2 ;;
  esac
  ./setup.sh "${tools[@]}"
  make_packages "${kinds[@]}"
  say "made of $(git describe --always --dirty), in dist/:"
  cat -- dist/SHA256SUMS
}

main "$@"
