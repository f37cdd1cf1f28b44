#!/usr/bin/env bash
# Installs, upgrades and uninstalls the Windows program under Wine: on a 64-bit Windows for the machine and for the
# user, on a 32-bit one. Ends with a line that counts: "N passed, N failed".
#   installer.sh BUILD-FOLDER
# Builds the installer, an older version of it and one whose 64-bit server cannot be registered; leaves its prefixes in
# BUILD-FOLDER/installer64 and BUILD-FOLDER/installer32.
set -uo pipefail

root=$(realpath -- "$(dirname -- "${BASH_SOURCE[0]}")/../..")
build=$(realpath -- "$1")
work="$build/installer"
wide="$build/installer64" # a prefix in a folder of this name is a 64-bit Windows
narrow="$build/installer32"
readonly root build work wide narrow
readonly setups='Z:'"${work//\//\\}" machine='C:\Program Files\TeskReader99' spaced='C:\Schule Nord\Marken Leser'
readonly class='{CC18CD03-C570-4898-9723-E0799561F9DB}' # clsTeskReader
readonly entry='Software\Microsoft\Windows\CurrentVersion\Uninstall\TeskReader99'
# Longer than a text of the installer's own language may be.
long_path="%SystemRoot%\\first$(printf ';C:\\folder%04d' {1..150})"
readonly long_path
passed=0
failed=0
place=$wide
exec </dev/null
unset DISPLAY
export HOME="$work/home" # Wine puts a desktop's menu entries there
unset XDG_DATA_HOME XDG_CONFIG_HOME

check() { # WHAT COMMAND...
  if "${@:2}" >"$work/said" 2>&1; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
    printf 'FAILED: %s\n' "$1"
    sed 's/^/   /' "$work/said"
  fi
}

in_wine() { timeout 120 "$root/cmake/wine.sh" "$place/prefix" "$@"; }
narrow_program() { in_wine cmd /c "$@"; }
wide_program() { in_wine cmd /c "C:\\windows\\sysnative\\$1" "${@:2}"; }
path_of() { printf '%s/prefix/drive_c/%s' "$place" "$(sed -e 's|^C:.||' -e 's|\\|/|g' <<<"$1")"; }
there() { [ -e "$(path_of "$1")" ]; }
gone() { ! there "$1"; }

# A folder with blanks comes last and without quotes, so it is handed over word by word.
setup() { # STATUS VERSION OPTION...
  local status=0
  in_wine "$setups\\TeskReader99-$2-setup.exe" /S "${@:3}" || status=$?
  [ "$status" -eq "$1" ] || { echo "status $status instead of $1" && return 1; }
}

uninstall() { # STATUS FOLDER; waits for it, so that its own file stays
  local status=0 folder
  read -ra folder <<<"$2"
  in_wine "$2\\uninstall-TeskReader99.exe" /S "_?=${folder[0]}" "${folder[@]:1}" || status=$?
  [ "$status" -eq "$1" ] || { echo "status $status instead of $1" && return 1; }
  [ "$1" -ne 0 ] || rm -- "$(path_of "$2")/uninstall-TeskReader99.exe"
}

# As a person does it: the uninstaller goes on in a copy of itself.
uninstall_early() { # ROOT FOLDER
  local tries=0
  in_wine "$2\\uninstall-TeskReader99.exe" /S || return
  until ! value "$1\\$entry" DisplayName; do
    [ "$((tries += 1))" -le 100 ] || { echo "it does not come to an end" && return 1; }
    sleep 0.1
  done
}

value() { # KEY [NAME]
  local query=narrow_program
  [ "$place" = "$narrow" ] || query=wide_program
  if [ $# -eq 1 ]; then set -- "$1" /ve; else set -- "$1" /v "$2"; fi
  "$query" reg.exe query "$@" 2>/dev/null
}

is() { # TEXT COMMAND...; its output has the text
  "${@:2}" 2>&1 | tr -d '\r' | tee "$work/output" | grep -F -- "$1" >"$work/found" || { cat -- "$work/output" && return 1; }
}

# What is on the disk and in the registry, as lines. Wine's files of the registry are complete when its server has
# ended; they hold times. Left out is what Wine and the installer's own system write on their own account: temporary
# folders, the display driver's date, a list of desktop menus, and the uninstaller's copy of itself, which the next
# start of Windows removes.
state() { # NAME
  in_wine wineserver -k
  in_wine wineserver -w
  (cd "$place/prefix/drive_c" && find . -iname temp -prune -o -type f -printf '%P %s\n' -o -printf '%P\n') |
    LC_ALL=C sort >"$work/$1.files"
  sed -e '/^#\(time\|class\)=/d' -e 's/^\(\[.*\]\) [0-9]*$/\1/' -e '/^"DriverDateData"=/d' \
    -e '/^\[Software\\\\Wine\\\\MenuFiles\]/,/^$/d' \
    -e '/^"PendingFileRenameOperations"=/s/\\\\??[^?~]*\\\\~nsu[^?~]*\.tmp\(\\\\Un\.exe\)\{0,1\}\\0\\0//g' \
    -e '/^"PendingFileRenameOperations"=str(7):""$/d' \
    "$place"/prefix/{system,user,userdef}.reg >"$work/$1.registry"
  in_wine wineserver -p60
}

same_state() { # NAME NAME
  diff "$work/$1.files" "$work/$2.files" && diff "$work/$1.registry" "$work/$2.registry"
}

sums() { (cd "$(path_of "$machine")" && find . -type f -exec sha256sum {} + | LC_ALL=C sort); }

same_files() { # COMMAND...; which leaves the installed files as they are
  local before
  before=$(sums)
  "$@" || return
  diff <(echo "$before") <(sums)
}

script() { cp -- "$root/tests/package/$1" "$place/prefix/drive_c/$1"; }

creates() { "$1_program" cscript.exe //nologo 'C:\create.vbs'; } # narrow|wide

# Wine's hosts know the machine's classes only, so the user's are looked up. Of those Wine has one place for both kinds,
# where the 64-bit server comes last.
serves_user() { # FILE
  is "$1" value "HKCU\\Software\\Classes\\CLSID\\$class\\InprocServer32"
}

both_create() { is "$1\\server32\\" creates narrow && is "$1\\server64\\" creates wide; }

start_prefix() { # FOLDER
  local key
  place=$1
  rm -rf -- "$place"
  mkdir -p -- "$place" "$HOME"
  in_wine wineboot -i && state "boot.$(basename -- "$place")" # the first start after a boot writes some more
  script create.vbs
  script hold.vbs
  # The hosts and the registry's tool register themselves when they first run.
  creates narrow
  [ "$place" = "$narrow" ] || creates wide
  for key in Classes\\{AppID,CLSID,Interface,TypeLib} Microsoft\\Windows\\CurrentVersion\\Uninstall; do
    in_wine reg add "HKCU\\Software\\$key" /f # every other Windows has them
  done
  in_wine reg add 'HKCU\Environment' /v Path /t REG_EXPAND_SZ /d "$long_path" /f
  in_wine 'Z:'"${root//\//\\}"'\build\windows\teskread.exe' settings save --key 'Software\TeskReader99\Scanner' --reader 15 --port 3
  mkdir -p -- "$place/prefix/drive_c/Schule Nord"
  state "before.$(basename -- "$place")"
}

unchanged() { # there is nothing but what was there before
  state after
  same_state "before.$(basename -- "$place")" after
}

variant() { # VERSION CHANGE...; the installer of changed files
  rm -rf -- "$work/files"
  cp -r -- "$root/build/package-windows/files" "$work/files"
  (cd "$work/files" && "${@:2}") && "$root/package/windows/pack.sh" "$work/files" "$1" "$work" zlib
}

with_more_files() { mkdir old && touch old/gone.txt docs/gone.md; }
with_broken_server() { echo broken >server64/TeskReader99.dll; }

build_installers() {
  "$root/package/windows/build.sh" "$work" | tee "$work/built" || return
  version=$(sed -n '$s/.*TeskReader99-\(.*\)-setup.exe$/\1/p' "$work/built")
  variant 0.0.1 with_more_files && variant 99.0.0 with_broken_server
}

# --- for the machine

upgrades() {
  check "an older version installs" setup 0 0.0.1 /ALLUSERS
  check "it is listed" is 0.0.1 value "HKLM\\$entry" DisplayVersion
  echo mine >"$(path_of "$machine")/docs/notes.txt"
  check "the new version installs over it" setup 0 "$version"
  check "the new version is listed" is "$version" value "HKLM\\$entry" DisplayVersion
  check "what only the older version had goes" gone "$machine\\docs\\gone.md"
  check "its empty folder goes" gone "$machine\\old"
  check "nothing stays set aside" gone "$machine\\set-aside-by-setup"
  check "the PATH leads to teskread" is "teskread $version" in_wine cmd /c teskread --version
  check "the PATH has one entry" is 1 entries
}

entries() {
  value 'HKLM\SYSTEM\CurrentControlSet\Control\Session Manager\Environment' Path >"$work/path"
  { grep -oF 'TeskReader99\bin' "$work/path" || true; } | wc -l
}

reads() { # narrow|wide
  is '3 sheets read, 0 lost' "$1_program" cscript.exe //nologo "$machine\\examples\\read_sheets.vbs" 3
}

reads_sheets() {
  local scanner tries=0
  rm -f -- "$place/prefix/dosdevices/com3"
  "$root/build/linux/teskread" simulate --reader 15 --count 6 --link "$place/prefix/dosdevices/com3" >"$work/scanner.log" 2>&1 &
  scanner=$!
  until grep -qs '^listening' "$work/scanner.log" || [ "$((tries += 1))" -gt 100 ]; do sleep 0.1; done
  check "a 32-bit host reads sheets" reads narrow
  check "a 64-bit host reads sheets" reads wide
  kill "$scanner"
  check "the scanner has no complaint" wait "$scanner"
  rm -f -- "$place/prefix/dosdevices/com3"
}

starts_from_the_menu() {
  local menu='C:\ProgramData\Microsoft\Windows\Start Menu\Programs\TeskReader99'
  check "the start menu leads to the settings" grep -qF scanner-settings.cmd <(tr -d '\0' <"$(path_of "$menu")/Scanner settings.lnk")
  # Without a screen the dialog says so; anything else would be told instead.
  check "the saved settings are shown" is 'The window of the setup dialog' in_wine cmd /c "$machine\\bin\\scanner-settings.cmd"
}

held() { # PROGRAM CHECK...; while a host of 32 or 64 bits holds the server
  local holder tries=0 drive="$place/prefix/drive_c"
  rm -f -- "$drive/held" "$drive/release"
  "$1_program" cscript.exe //nologo 'C:\hold.vbs' >"$work/hold.log" 2>&1 &
  holder=$!
  until [ -e "$drive/held" ] || [ "$((tries += 1))" -gt 100 ]; do sleep 0.1; done
  "${@:2}"
  touch -- "$drive/release"
  wait "$holder"
  check "the host had the server all the while" grep -q clsTeskReader "$work/hold.log"
  rm -f -- "$drive/held" "$drive/release"
}

refuses_in_use() {
  check "an upgrade says which server is in use" is 'server32\TeskReader99.dll is in use' same_files setup 5 0.0.1
  check "the uninstaller leaves a server in use" same_files uninstall 5 "$machine"
}

refuses_in_use_64() { check "a 64-bit server in use is not replaced" same_files setup 5 0.0.1; }

keeps_what_works() {
  check "what cannot be registered is told" is 'server64\TeskReader99.dll cannot be registered' same_files setup 6 99.0.0
  check "the version before still serves" both_create "$machine"
  check "the version before is still listed" is "$version" value "HKLM\\$entry" DisplayVersion
}

for_the_machine() {
  upgrades
  reads_sheets
  starts_from_the_menu
  held narrow refuses_in_use
  held wide refuses_in_use_64
  keeps_what_works
  check "the uninstaller comes to an end" uninstall_early HKLM "$machine"
  check "what is left is the file of the user's" is ./docs/notes.txt only_file
  rm -r -- "$(path_of "$machine")"
}

only_file() { (cd "$(path_of "$machine")" && find . -type f ! -path ./docs/notes.txt -exec false {} + && find . -type f); }

# --- for the user

# The earlier version stands in another folder than the new one.
moves() {
  check "an older version installs for the user" setup 0 0.0.1 /CURRENTUSER
  check "a long PATH is kept, with one entry more" path_is "$long_path;$users\\bin"
  keeps_what_cannot_be_put_back
  check "the new version installs into a folder with blanks" setup 0 "$version" /CURRENTUSER /D=C:\\Schule Nord\\Marken Leser
  check "the older one is gone from where it was" gone "$users"
  check "the entry on the PATH moves" path_is "$long_path;$spaced\\bin"
  check "the server is registered for the user" serves_user "$spaced\\server64\\"
  check "nothing is registered for the machine" is none unregistered_for_machine
}

# A folder takes the place of a file of the earlier version while that is set aside.
keeps_what_cannot_be_put_back() {
  local folder aside
  folder=$(path_of "$users")
  aside="$folder/set-aside-by-setup"
  obstruct "$aside/docs/gone.md" "$folder/docs/gone.md" &
  check "it is told where the file lies" is 'could not be put back: they lie in' setup 6 99.0.0
  check "something stood in its way" wait $!
  check "and there it lies" mv -T -- "$aside/docs/gone.md" "$work/gone.md"
  rmdir -- "$folder/docs/gone.md"
  mv -T -- "$work/gone.md" "$folder/docs/gone.md"
  rm -r -- "$aside"
}

obstruct() { # FILE FOLDER; makes the folder when there is the file
  local tries=0
  until [ -e "$1" ]; do
    [ "$((tries += 1))" -le 400 ] || return 1
    sleep 0.05
  done
  mkdir -p -- "$2"
}

path_is() { # TEXT
  is "Path    REG_EXPAND_SZ    $1<" line_of_path
}
line_of_path() { value 'HKCU\Environment' Path | tr -d '\r' | sed 's/$/</'; }

unregistered_for_machine() { value "HKLM\\Software\\Classes\\CLSID\\$class" || echo none; }

both_scopes() {
  check "the machine may have it as well" setup 0 "$version" /ALLUSERS /PATH=no
  check "without the PATH where that is not wanted" is 0 entries
  check "its uninstaller comes to an end" uninstall_early HKLM "$machine"
  check "what is the user's stays" serves_user "$spaced\\server64\\"
}

users_folder() { in_wine cmd /c 'echo %LOCALAPPDATA%\Programs\TeskReader99' | tr -d '\r'; }

for_the_user() {
  users=$(users_folder)
  moves
  both_scopes
  check "the uninstaller waits where it is told to" uninstall 0 "$spaced"
  rmdir -- "$(path_of "$spaced")"
}

# --- what is refused changes nothing

refusals() {
  local foreign='C:\Schule Nord\Eigenes'
  check "a choice that there is not is told" is 'not "perhaps"' setup 3 "$version" /PATH=perhaps
  check "servers that cannot be registered are told" is 'cannot be registered' setup 6 99.0.0
  mkdir -p -- "$(path_of "$foreign")"
  echo mine >"$(path_of "$foreign")/README.md"
  check "a folder of somebody else's is told" is 'Choose another folder' setup 2 "$version" /D=C:\\Schule Nord\\Eigenes
  check "a file of somebody else's stays" grep -qx mine "$(path_of "$foreign")/README.md"
  rm -r -- "$(path_of "$foreign")"
  refuses_folders
  leaves_what_is_not_its_own
}

refuses_folders() {
  local folder
  # shellcheck disable=SC1003
  for folder in 'C:\' 'C:\windows\..' 'C:\windows\win.ini' 'C:\a;b' 'C:\%windir%' '"C:\quoted"' 'folder'; do
    check "$folder cannot be the folder" setup 3 "$version" /CURRENTUSER "/D=$folder"
  done
}

# Files of somebody else's, which a list of that name claims; lists that lead out of the folder; an uninstaller that
# stands where nothing is registered.
leaves_what_is_not_its_own() {
  local other='C:\Other' list=TeskReader99-files.txt aside=set-aside-by-setup line
  mkdir -p -- "$(path_of "$other")/$aside"
  echo mine | tee "$(path_of "$other")/data.db" "$(path_of "$other")/$aside/marks.csv" >"$(path_of 'C:\victim.txt')"
  printf 'data.db\r\n' >"$(path_of "$other")/$list"
  check "a list that nobody registered is not believed" is "$list is not TeskReader99" setup 2 "$version" /CURRENTUSER "/D=$other"
  rm -- "$(path_of "$other")/$list"
  check "it goes beside the files of the user's" setup 0 "$version" /CURRENTUSER /PATH=no "/D=$other"
  check "and over itself" setup 0 "$version"
  cp -- "$(path_of "$other")/$list" "$work/list"
  for line in '..\victim.txt' 'C:\victim.txt' '\victim.txt' '/victim.txt' ''; do
    { printf '%s\r\n' "$line" && cat -- "$work/list"; } >"$(path_of "$other")/$list"
    check "a list with \"$line\" is refused" setup 2 "$version"
  done
  cp -- "$work/list" "$(path_of "$other")/$list"
  mkdir -- "$(path_of 'C:\Copy')"
  cp -t "$(path_of 'C:\Copy')" -- "$(path_of "$other")/uninstall-TeskReader99.exe"
  check "a copied uninstaller takes nothing away" is 'No TeskReader99 is installed' uninstall 2 'C:\Copy'
  check "the user's entry stays" is "$other" value "HKCU\\$entry" InstallLocation
  rm -- "$(path_of "$other")/uninstall-TeskReader99.exe"
  check "what cannot be removed elsewhere is told" is "earlier version in $other cannot be removed" setup 8 "$version" '/D=C:\Next'
  check "it uninstalls from there" uninstall 0 'C:\Next'
  rmdir -- "$(path_of 'C:\Next')"
  check "what was there before is there" is 3 grep -cx mine <(cat -- "$(path_of "$other")/data.db" \
    "$(path_of "$other")/$aside/marks.csv" "$(path_of 'C:\victim.txt')")
  rm -r -- "$(path_of "$other")" "$(path_of 'C:\victim.txt')" "$(path_of 'C:\Copy')"
}

on_64_bits() {
  place=$wide
  for_the_machine
  check "the machine is as it was before" unchanged
  for_the_user
  refusals
  check "for the user and after refusals, too" unchanged
  in_wine wineserver -k
}

on_32_bits() {
  place=$narrow
  check "a 32-bit Windows takes it" setup 0 "$version"
  check "its hosts find the one server" is "$machine\\server32\\" creates narrow
  check "it gets no 64-bit server" gone "$machine\\server64"
  check "its uninstaller comes to an end" uninstall_early HKLM "$machine"
  check "it takes it for the user" setup 0 "$version" /CURRENTUSER
  check "the server is registered for the user" serves_user 'TeskReader99\server32\TeskReader99.dll'
  check "the user's uninstaller comes to an end" uninstall_early HKCU "$(users_folder)"
  check "it is as it was before" unchanged
  in_wine wineserver -k
}

finish() {
  for place in "$wide" "$narrow"; do [ ! -d "$place/prefix" ] || in_wine wineserver -k; done
  printf '%d passed, %d failed\n' "$passed" "$failed"
}

trap finish EXIT
mkdir -p -- "$work" "$HOME"
check "there is a scanner to read from" test -x "$root/build/linux/teskread"
check "the installers are built" build_installers
if [ "$failed" -eq 0 ]; then
  start_prefix "$narrow" >"$work/narrow.log" 2>&1 &
  start_prefix "$wide" >"$work/wide.log" 2>&1
  wait
  on_64_bits
  on_32_bits
fi
[ "$failed" -eq 0 ]
