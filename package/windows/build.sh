#!/usr/bin/env bash
# Builds the Windows installer, TeskReader99-VERSION-setup.exe.
#   build.sh OUT-FOLDER
# Compiles the presets windows and windows64 where they are not up to date, lays out what is installed in
# build/package-windows/files and packs it. Says the installer's name in its last line.
set -euo pipefail

root=$(realpath -- "$(dirname -- "${BASH_SOURCE[0]}")/../..")
work="$root/build/package-windows"
readonly root work

usage() { sed -n '2,5s/^# \{0,1\}//p' "${BASH_SOURCE[0]}"; }

build() { # PRESET TARGET...
  local preset=$1 log="$work/build-$1.log"
  shift
  if ! (cd "$root" && cmake --preset "$preset" && cmake --build --preset "$preset" --target "$@") >"$log" 2>&1; then
    tail -n 40 -- "$log" >&2
    echo "the preset $preset does not build; see $log" >&2
    exit 1
  fi
}

version() { sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$root/build/windows/CMakeCache.txt"; }

put() { # FOLDER FILE...; the files as they are, beside what they refer to
  mkdir -p -- "$work/files/$1"
  install -m 644 -t "$work/files/$1" -- "${@:2}"
}

put_tree() { # FOLDER
  local file
  while IFS= read -r file; do
    put "$(dirname -- "$file")" "$root/$file"
  done < <(cd "$root" && find "$1" -type f ! -name '.*')
}

# Older editors of Windows show a text without CRs as one line, and VBA does not load such a class.
end_lines_as_windows_does() {
  find "$work/files" -type f ! -name '*.dll' ! -name '*.exe' ! -name '*.png' -exec sed -i 's/\r*$/\r/' {} +
}

lay_out() {
  local page
  rm -rf -- "$work/files"
  put server32 "$root"/build/windows/{TeskReader99.dll,TeskReader99.X.manifest,host.exe.manifest}
  put server64 "$root"/build/windows64/{TeskReader99.dll,TeskReader99.X.manifest,host.exe.manifest}
  put bin "$root/build/windows/teskread.exe" "$root/package/windows/scanner-settings.cmd"
  put_tree docs
  put_tree examples
  for page in README.md CHANGELOG.md LICENSE; do
    [ ! -f "$root/$page" ] || put . "$root/$page"
  done
  end_lines_as_windows_does
}

case "$#:${1:-}" in
  1:-h | 1:--help) usage && exit 0 ;;
  1:*) out=$1 ;;
  *) usage >&2 && exit 2 ;;
esac
mkdir -p -- "$work" "$out"
build windows TeskReader99 teskread
build windows64 TeskReader99
lay_out
"$root/package/windows/pack.sh" "$work/files" "$(version)" "$out"
