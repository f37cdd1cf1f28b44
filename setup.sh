#!/usr/bin/env bash
# Installs what building and testing needs on a Debian 12 machine that has nothing but git and a
# root shell (or sudo). It looks first and touches nothing when nothing is missing.
#
#   ./setup.sh            everything: the native build, the packages and the Windows side
#   ./setup.sh --debian   without the Windows side (cross compiler, Wine)
#   ./setup.sh --quick    the native build alone
set -euo pipefail

readonly native_packages=(
  g++ cmake ninja-build ccache mold clang-format
  libcli11-dev nlohmann-json3-dev libfmt-dev libncurses-dev
  googletest libgtest-dev libgmock-dev libbenchmark-dev)
readonly package_packages=(dpkg-dev fakeroot lintian man-db bash-completion zsh)
readonly cross_packages=(g++-mingw-w64-i686-posix g++-mingw-w64-x86-64-posix mingw-w64-tools nsis xvfb xauth)
readonly wine_packages=(wine wine32:i386 wine64 fonts-wine)

scratch=""
package_lists_are_fresh=no

say() { printf 'set-up: %s\n' "$*"; }

die() {
  printf 'set-up failed: %s\n' "$*" >&2
  exit 1
}

usage() { sed -n '2,7s/^# \{0,1\}//p' "$0"; }

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo -- "$@"
  else
    die "\"$*\" needs root: run ./setup.sh as root, or install sudo"
  fi
}

apt() { as_root env DEBIAN_FRONTEND=noninteractive apt-get -q -y "$@" </dev/null; }

missing_of() {
  local package
  for package in "$@"; do
    if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
      printf '%s\n' "$package"
    fi
  done
}

# A list that cannot be fetched (a mirror in the middle of an update) is no failure yet: whether the
# rest suffices is seen when packages are installed.
refresh_package_lists() {
  if [ "$package_lists_are_fresh" = no ]; then
    say "fetching the package lists"
    apt update || say "some package lists could not be fetched; going on with the rest"
    package_lists_are_fresh=yes
  fi
}

ensure() {
  local missing
  mapfile -t missing < <(missing_of "$@")
  [ "${#missing[@]}" -gt 0 ] || return 0
  refresh_package_lists
  say "installing ${missing[*]}"
  apt install --no-install-recommends "${missing[@]}" ||
    die "apt-get cannot install ${missing[*]} (network? /etc/apt/sources.list?)"
}

ensure_i386_architecture() {
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    say "adding the architecture i386 (32-bit Wine)"
    as_root dpkg --add-architecture i386
    package_lists_are_fresh=no
  fi
}

# Where the security archive serves one architecture only, or at another pace than the other, the
# i386 libraries have no amd64 twin of the same version and apt refuses. Looking past that archive
# for this one call leaves a consistent set; it may take libraries back to the release's version.
install_wine_without_security_archive() {
  local preferences="$scratch/preferences"
  printf 'Package: *\nPin: release l=Debian-Security\nPin-Priority: 50\n' >"$preferences"
  chmod 755 "$scratch"
  chmod 644 "$preferences"
  say "the plain way fails here; trying again without the security archive"
  apt -o "Dir::Etc::Preferences=$preferences" install --no-install-recommends --allow-downgrades \
    "${wine_packages[@]}" "${cross_packages[@]}"
}

ensure_wine() {
  local missing
  mapfile -t missing < <(missing_of "${wine_packages[@]}" "${cross_packages[@]}")
  [ "${#missing[@]}" -gt 0 ] || return 0
  ensure_i386_architecture
  refresh_package_lists
  say "installing ${missing[*]}"
  apt install --no-install-recommends "${wine_packages[@]}" "${cross_packages[@]}" ||
    install_wine_without_security_archive ||
    die "32-bit Wine cannot be had here; \"--quick\" leaves the Windows side out"
}

check_platform() {
  command -v apt-get >/dev/null && command -v dpkg-query >/dev/null ||
    die "this script knows Debian's packages only; see its lists for what to install by hand"
}

main() {
  local with_windows=yes with_packages=yes
  case "${1:-}" in
    "") ;;
    --debian) with_windows=no ;;
    --quick) with_windows=no with_packages=no ;;
    -h | --help) usage && exit 0 ;;
    *) usage >&2 && exit 2 ;;
  esac
  check_platform
  scratch=$(mktemp -d)
  trap 'rm -rf -- "$scratch"' EXIT
  ensure "${native_packages[@]}"
  if [ "$with_packages" = yes ]; then
    ensure "${package_packages[@]}"
  fi
  if [ "$with_windows" = yes ]; then
    ensure_wine
  fi
  say "everything needed is installed"
}

main "$@"
