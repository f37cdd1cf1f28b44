# Types commands into bash and zsh, each behind a terminal of its own, and looks at what a tabulator made of them.
#   zsh -f completion.zsh ROOT     ROOT holds the unpacked package
# A stand-in for the program prints the words that it gets, but hands the listings that completion asks for over to
# the program itself.
emulate -R zsh
setopt err_return no_unset
zmodload zsh/zpty

root=$1
home=$root/home
mkdir -p $home $root/bin
touch $home/class7.ndjson $home/'7b@10:30 h.csv'
mkdir $home/'Scantron Scanmark 5500'
cat >$root/bin/teskread <<END
#!/bin/sh
case "\$*" in "ports" | "settings list") exec "$root/usr/bin/teskread" "\$@" ;; esac
printf '<%s>' "\$@"
echo .
END
chmod +x $root/bin/teskread
export HOME=$home PATH=$root/bin:$PATH TERM=dumb XDG_CONFIG_HOME=$home/config HISTFILE=/dev/null
for key in 'School\Lab' 'Room 7\Left wing' 'A$HOME' 'Quo"te' "O'Neil" 'Hall: 7' 'Wow!x'; do
  $root/usr/bin/teskread settings save --key $key --reader 4
done

# What is typed before the tabulator, and the words that come out. Files, saved keys and sim are what there is
# here, and a folder that is called like a reader.
typeset -a cases=(
  'sc' '<scan>'
  'scan --form' '<scan><--format>'
  'scan --format nd' '<scan><--format><ndjson>'
  'scan --format=nd' '<scan><--format=ndjson>'
  'settings sa' '<settings><save>'
  'settings save --roo' '<settings><save><--root>'
  'settings save --root Class' '<settings><save><--root><ClassesRoot>'
  'readers --group Datawin --js' '<readers><--group><Datawin><--json>'
  'scan --reader Peri' '<scan><--reader><Peripheral Dynamics Inc. VMR138>'
  'scan --reader scantron\ scanmark\ 55' '<scan><--reader><Scantron Scanmark 5500>'
  'scan --port si' '<scan><--port><sim>'
  'scan --key Sch' '<scan><--key><School\Lab>'
  'scan --key School\\l' '<scan><--key><School\Lab>'
  'scan --key=School\\L' '<scan><--key=School\Lab>'
  'scan --key "School\L' '<scan><--key><School\Lab>'
  "scan --key 'School\\L" '<scan><--key><School\Lab>'
  'scan --key Room' '<scan><--key><Room 7\Left wing>'
  'scan --key "Room 7\le' '<scan><--key><Room 7\Left wing>'
  'scan --key A' '<scan><--key><A$HOME>'
  'scan --key "A' '<scan><--key><A$HOME>'
  'scan --key quo' '<scan><--key><Quo"te>'
  'scan --key "Quo' '<scan><--key><Quo"te>'
  "scan --key 'O" "<scan><--key><O'Neil>"
  'scan --key Hall:' '<scan><--key><Hall: 7>'
  'scan --key "Wow' '<scan><--key><Wow!x>'
  'scan --key School"\L' '<scan><--key><School\Lab>'
  'scan --set Duplex=T' '<scan><--set><Duplex=True>'
  'scan --set reje' '<scan><--set><Rejecter=>'
  'scan --set duplex=t' '<scan><--set><duplex=True>'
  'scan --set "duplex=f' '<scan><--set><duplex=False>'
  'scan --set=duplex=f' '<scan><--set=duplex=False>'
  'scan --reader 15 --output cla' '<scan><--reader><15><--output><class7.ndjson>'
  'scan --reader 15 --output 7b@10:3' '<scan><--reader><15><--output><7b@10:30 h.csv>'
  'scan --reader 15 --output "7b' '<scan><--reader><15><--output><7b@10:30 h.csv>'
  'scan --port ./7b@' '<scan><--port><./7b@10:30 h.csv>'
  'help fir' '<help><firmware>'
  'help settings de' '<help><settings><delete>'
  'help scan fir' '<help><scan><fir>'
)

start_bash() {
  zpty shell bash --noprofile --norc -i
  zpty -w shell "PS1=; bind 'set enable-bracketed-paste off'; . /usr/share/bash-completion/bash_completion"
  zpty -w shell ". $root/usr/share/bash-completion/completions/teskread; cd; echo rea''dy"
}

start_zsh() {
  zpty shell zsh -f -i
  zpty -w shell "PS1=; unsetopt zle_bracketed_paste 2>/dev/null; fpath=($root/usr/share/zsh/vendor-completions \$fpath)"
  zpty -w shell 'autoload -Uz compinit; compinit -u -D; cd; echo rea""dy'
}

# A quote that nothing closes keeps the shell waiting, until the time is up.
trap 'print -r -- "$name: \"$typed\" became no command"; exit 1' TERM

faults=0
for name in bash zsh; do
  start_$name
  zpty -r shell said $'*ready\r\n'
  for typed wanted in $cases; do
    zpty -w shell "teskread $typed"$'\t'
    zpty -r shell said $'*>.\r\n'
    got=${${said%$'.\r\n'}##*$'\n'}
    [[ $got == *$wanted ]] || { print -r -- "$name: \"$typed\" became $got, not $wanted"; (( ++faults )) }
  done
  zpty -d shell
done
exit $(( faults > 0 ))
