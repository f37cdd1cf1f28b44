#!/usr/bin/env bash
# Takes the pictures of the setup dialog in docs/pictures/: one of each family of readers.
#   tests/windows/dialog/pictures.sh [BUILD-FOLDER]      default build/windows
# Needs show_dialog.exe, Xvfb, imagemagick (import, convert) and fonts-open-sans, which stands in for the font
# of current Windows.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../../.."

readonly build=${1:-build/windows}
readonly prefix="$build/pictures-prefix"
readonly pictures=docs/pictures
readonly desktop=1024x768
readonly readers=(15:scanmark 4:opscan 23:ezdata 33:usb 42:hybrid)
readonly desktop_key='HKCU\Control Panel\Desktop\WindowMetrics'

in_wine() { cmake/wine.sh "$prefix" "$@" >/dev/null 2>&1; }

# A LOGFONTW in hexadecimal: 12 dots high at 96 dots per inch, as 9 points are.
font() { # WEIGHT
  printf 'F4FFFFFF000000000000000000000000%s0000000100000000%s%0*d' "$1" \
    "$(printf 'Open Sans' | iconv -t UTF-16LE | od -An -v -tx1 | tr -d ' \n')" 92 0 | cut -c1-184
}

prepare() {
  [ -f "$prefix/system.reg" ] || in_wine wineboot -i
  in_wine reg add "$desktop_key" /v MessageFont /t REG_BINARY /d "$(font 90010000)" /f
  in_wine reg add "$desktop_key" /v CaptionFont /t REG_BINARY /d "$(font 90010000)" /f
  # The close button's sign, which Wine does not find where Debian puts it.
  cp -n /usr/share/wine/fonts/marlett.ttf "$prefix/drive_c/windows/Fonts/" 2>/dev/null || true
  mkdir -p -- "$pictures"
}

# What is not the desktop's own colour is the dialog.
take() { # TYPE NAME
  local shot="$build/$2.png"
  cmake/wine.sh "$prefix" explorer "/desktop=$2,$desktop" "$(realpath "$build")/show_dialog.exe" "$1" >/dev/null 2>&1 &
  local desktop_process=$!
  sleep "${SECONDS_TO_DRAW:-8}"
  import -window root -crop "$desktop+0+0" "$shot"
  convert "$shot" -bordercolor "$(convert "$shot" -format '%[pixel:p{2,2}]' info:)" -border 1 -trim +repage \
    -strip +dither -colors 64 "PNG8:$pictures/setup-$2.png"
  kill "$desktop_process" 2>/dev/null || true
  in_wine wineserver -k || true
  wait "$desktop_process" 2>/dev/null || true
}

coproc screen { exec Xvfb -displayfd 1 -screen 0 1280x960x24 2>/dev/null; }
trap 'in_wine wineserver -k || true; kill "$screen_PID" 2>/dev/null || true' EXIT
read -r number <&"${screen[0]}"
export DISPLAY=":$number"
prepare
for reader in "${readers[@]}"; do
  take "${reader%%:*}" "${reader##*:}"
done
