#!/usr/bin/env bash
# Packs a folder of files into the Windows installer TeskReader99-VERSION-setup.exe.
#   pack.sh FILES VERSION OUT-FOLDER [lzma|zlib]
# FILES is laid out as it is to be on the disk; server64/ in it is for 64-bit Windows alone. zlib packs faster.
# Says the installer's name in its last line.
set -euo pipefail

[ $# -ge 3 ] || { sed -n '2,5s/^# \{0,1\}//p' "${BASH_SOURCE[0]}" >&2 && exit 2; }
here=$(realpath -- "$(dirname -- "${BASH_SOURCE[0]}")")
files=$(realpath -- "$1")
version=$2
out=$(realpath -- "$3")
compressor=${4:-lzma}
readonly here files version out compressor

command -v makensis >/dev/null || { echo "makensis is missing: run ./setup.sh" >&2 && exit 1; }
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || { echo "\"$version\" is no version of three numbers" >&2 && exit 2; }

# A macro that inserts the macro DO once for each name on standard input, as Windows writes it.
each() { # MACRO
  printf '!macro %s DO\n' "$1"
  sed -e 's|/|\\|g' -e "s|.*|  !insertmacro \${DO} \"&\"|"
  printf '!macroend\n'
}

names() { (cd "$files" && LC_ALL=C find . -mindepth 1 "$@" -printf '%P\n' | LC_ALL=C sort); }

lists=$(mktemp)
trap 'rm -f -- "$lists"' EXIT
{
  names -type f ! -path './server64/*' | each EachFile
  names -type f -path './server64/*' | each EachFile64
  names -type d | LC_ALL=C sort -r | each EachFolderFromBelow
} >"$lists"

makensis -V2 -NOCD -DVERSION="$version" -DFILES="$files" -DLISTS="$lists" -DCOMPRESSOR="$compressor" \
  -DOUT="$out/TeskReader99-$version-setup.exe" -DKILOBYTES="$(du -sk -- "$files" | cut -f 1)" \
  -X"!addincludedir $here" "$here/installer.nsi"
echo "$out/TeskReader99-$version-setup.exe"
