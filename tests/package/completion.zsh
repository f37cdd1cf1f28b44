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
touch $home/class7.ndjson
cat >$root/bin/teskread <<END
#!/bin/sh
case "\$*" in "ports" | "settings list") exec "$root/usr/bin/teskread" "\$@" ;; esac
printf '<%s>' "\$@"
echo .
END
chmod +x $root/bin/teskread
export HOME=$home PATH=$root/bin:$PATH TERM=dumb XDG_CONFIG_HOME=$home/config HISTFILE=/dev/null
$root/usr/bin/teskread settings save --key 'School\Lab' --reader 4

# What is typed before the tabulator, and the words that come out. A file, a saved key and sim end words of which
# there is one here.
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
  'scan --set Duplex=T' '<scan><--set><Duplex=True>'
  'scan --reader 15 --output cla' '<scan><--reader><15><--output><class7.ndjson>'
  'help fir' '<help><firmware>'
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
