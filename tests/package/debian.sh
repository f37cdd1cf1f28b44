#!/usr/bin/env bash
# The Debian package and `cmake --install`, tried in scratch roots: needs no root, touches nothing of the system.
#   debian.sh build BUILD-FOLDER        packs build/…; the other checks take that package
#   debian.sh lintian BUILD-FOLDER      Debian's checks of a package; the same again from the same sources
#   debian.sh life BUILD-FOLDER         installed, run, removed, purged; what it needs is computed
#   debian.sh pages BUILD-FOLDER        the manual page renders, and knows what the program's help knows
#   debian.sh completion BUILD-FOLDER   what bash and zsh complete behind a tabulator
#   debian.sh prefix BUILD-FOLDER       cmake --install with a prefix, moved afterwards, and with DESTDIR
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."
export LC_ALL=C.UTF-8
exec </dev/null

build=$(realpath -- "${2:?BUILD-FOLDER}")
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
scratch=$(mktemp -d)
trap 'rm -rf -- "$scratch"' EXIT

fault() {
  printf '%s\n' "$*" >&2
  exit 1
}

package_in() { # FOLDER
  local package
  package="$1/teskread_${version}_$(dpkg --print-architecture).deb"
  [ -f "$package" ] || fault "no $package"
  printf '%s\n' "$package"
}

pack() { package/debian/build.sh "$build" "$1"; }

check_build() { pack "$build/package/debian" && package_in "$build/package/debian"; }

check_lintian() {
  local package
  package=$(package_in "$build/package/debian")
  lintian --allow-root --fail-on error,warning "$package"
  pack "$scratch"
  cmp -- "$package" "$(package_in "$scratch")"
}

# A system in which the packages that this one depends on are installed as they are here, and nothing else.
make_system() { # PACKAGE
  local name architecture admin="$scratch/system/var/lib/dpkg"
  architecture=$(dpkg --print-architecture)
  mkdir -p -- "$admin/info" "$admin/updates"
  dpkg-deb -f "$1" Depends | tr ',' '\n' | sed 's/^ *\([^ ]*\).*/\1/' | while read -r name; do
    dpkg-query -s "$name:$architecture"
    printf '\n'
    touch -- "$admin/info/$name.list" "$admin/info/$name:$architecture.list"
  done >"$admin/status"
}

in_system() { fakeroot dpkg --root="$scratch/system" --log="$scratch/log" "$@" >>"$scratch/dpkg.out"; }

files() { find "$scratch/system" -path '*/var/lib/dpkg' -prune -o -print | sort; }

check_life() {
  local package before way
  package=$(package_in "$build/package/debian")
  make_system "$package"
  before=$(files)
  in_system --install "$package"
  [ -x "$scratch/system/usr/bin/teskread" ] || fault "not installed: $(cat -- "$scratch/dpkg.out")"
  [ "$("$scratch/system/usr/bin/teskread" --version)" = "teskread $version" ] || fault "another version than $version"
  "$scratch/system/usr/bin/teskread" demo | tail -n 1 | grep -qx '3 sheets read, 0 lost'
  for way in --remove --purge; do
    in_system --install "$package"
    in_system "$way" teskread
    [ "$(files)" = "$before" ] || fault "$way left: $(comm -13 <(printf '%s\n' "$before") <(files))"
  done
}

# The options and commands that the help lists, but for --help itself.
listed() { # COMMAND...
  "$scratch/usr/bin/teskread" "$@" --help | sed -n -e '/^Options:$/,/^$/p' -e '/^Subcommands:$/,/^$/p' |
    sed -n 's/^  \([a-z-][a-z0-9-]*\)  *.*/\1/p'
}

# A command has a heading of its own; an option stands below its command's.
look_for_all_of() { # COMMAND...
  local word heading="   teskread${*:+ $*}" section="$text"
  [ $# -eq 0 ] || section=$(sed -n "/^$heading\$/,/^   [a-z]/p" <<<"$text")
  for word in $(listed "$@"); do
    case "$word" in
      -*) grep -qE "^ +$word( |,|\$)" <<<"$section" ;;
      *) grep -qx -- "$heading $word" <<<"$text" && look_for_all_of "$@" "$word" ;;
    esac || fault "teskread $*: no \"$word\" in the page"
    count=$((count + 1))
  done
}

check_pages() {
  local page="$scratch/usr/share/man/man1/teskread.1.gz" said text count=0
  dpkg-deb -x "$(package_in "$build/package/debian")" "$scratch"
  said=$(MANWIDTH=80 man --warnings -E UTF-8 -Tutf8 -l "$page" 2>&1 >/dev/null)
  [ -z "$said" ] || fault "$said"
  text=$(MANWIDTH=80 man -E UTF-8 -l "$page" | col -bx)
  grep -q "teskread $version " <<<"$text" || fault "the page is not about $version"
  look_for_all_of
  [ "$count" -gt 60 ] || fault "only $count words were looked for"
}

check_completion() {
  dpkg-deb -x "$(package_in "$build/package/debian")" "$scratch"
  timeout 60 zsh -f tests/package/completion.zsh "$scratch"
}

check_prefix() {
  local place
  cmake --install "$build" --prefix "$scratch/first" >/dev/null
  mv -- "$scratch/first" "$scratch/second"
  DESTDIR="$scratch/destination" cmake --install "$build" --prefix /opt/tesk >/dev/null
  for place in "$scratch/second" "$scratch/destination/opt/tesk"; do
    "$place/bin/teskread" demo --sheets 1 | tail -n 1 | grep -qx '1 sheets read, 0 lost'
    ls -- "$place/share/man/man1/teskread.1.gz" "$place/share/bash-completion/completions/teskread" \
      "$place/share/zsh/site-functions/_teskread" "$place/share/doc/teskread/CHANGELOG.md" >/dev/null
  done
  ! grep -rlF "$scratch" "$scratch/second" || fault "a file knows where it was installed"
}

"check_$1"
