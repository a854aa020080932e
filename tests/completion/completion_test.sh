#!/bin/bash
# What the completion offers: names of the map and of the reference files, and for each action the
# options that the program accepts.
#     completion_test.sh PROGRAM      (the test program, whose paths are below the working directory)
set -u
source_dir=$(realpath "$(dirname "$0")/../..")
program=$(realpath "$1")
tqs=$(dirname "$program")/tqs-test
export TQS_ROOT
TQS_ROOT=$(mktemp -d)
trap 'rm -rf "$TQS_ROOT"' EXIT
cd "$TQS_ROOT" && mkdir -p usr/opt/tqs/{config,events,logs,bin} tmp || exit 1
ln -s "$tqs" usr/opt/tqs/bin/tqs
failures=0
config=usr/opt/tqs/config
# shellcheck disable=SC2016  # not to be expanded
printf '#M0|M0\nServer|M100\r\nno field\nBig|X 9|\nEvil|$(touch evil)\nQuotes|a"b`c'"'"'d\n|x:y\n' >$config/models
printf 'port=2\n#no=1\nhost=a=b\n' >daemon.conf
# In a layout of its own; a comment and a cache name what is not there.
cat >$config/SystemMap.xml <<'END'
<!-- <Platform><PropertyMap><Property name="Name" value="no"/></PropertyMap> --><SystemMap><Platform ID='1'><PropertyMap><Property
 value = 'lab1' readonly="false" name="Name"/><Property name="Address" value="a>b"/></PropertyMap>
<Console ID="1:1"><PropertyMap><Property name="Name" value="db1"/></PropertyMap></Console>
<Cache><Console><PropertyMap><Property name="Name" value="no"/></PropertyMap></Console></Cache></Platform>
<Platform ID="3"><PropertyMap><Property name="Name" value="&amp;lt;`touch evil`"/></PropertyMap></Platform></SystemMap>
END
printf 'kind,name\nconsole,"%s"\nplatform,p\n' "'\$x" >names.csv
sed 's/lab1/other/' $config/SystemMap.xml >'my map.xml'

# offered LINE: the candidates at its end, in "offered".
# shellcheck source=/dev/null
source "$source_dir/completion/tqs"
# shellcheck disable=SC2317  # called by the completion
compopt() { COMPREPLY+=("(files)"); }
offered() {
    COMP_LINE=$1 COMP_POINT=${#1}
    [[ $1 =~ (\"[^\"]*|\'[^\']*|(\\.|[^\\ :=])*)$ ]] && COMP_WORDS=(tqsmgr "${BASH_REMATCH[0]}")
    COMP_CWORD=1
    "_${1%% *}"
    offered=${COMPREPLY[*]-}
}
expect() {
    [ "$2" = "$3" ] || { echo "$1: $2, not $3"; failures=1; }
}

while IFS=$'\t' read -r line expected; do
    [[ $line == tqs* ]] || line="tqsmgr $line"
    offered "${line%.}"
    expect "$line" "$offered" "$expected"
done <<'TABLE'
.	-f -nonotify -add -update -remove -view -write -config -security -U -V -h
-f m -nonotify web -U -ad.	-add
-update cache -platform lab1 < .	(files)
-config daemon.conf -get .	port host
-add platform -comment -auth -auth .	0 1
-update platform -name .	lab1 \&lt\;\`touch\ evil\`
-f "my map.xml" -remove platform -name o.	other
-view kfxconf -name .	lab1 db1 \&lt\;\`touch\ evil\`
-update platform -model .	M100 X\ 9\| \$\(touch\ evil\) a\"b\`c\'d x:y
-add platform -model 'a.	'a"b`c'\''d
tqs list --kind platform l.	lab1
tqs list --map names.csv --where name=x --.	--kind --where --fields --sort --format --help
tqs list --kind console --map "names.csv" -- .	\'\$x
tqs list --fields name,a.	(files) name,addr name,auth
tqs sync --no-notify w.	web
tqs diff --json --.	--help
tqs check .	(files)
TABLE
expect "run for a name" "$(ls evil 2>/dev/null)" ""

# The commands, options, keys and formats of tqs: its help, the completion and the manual agree.
sorted() { grep -oE -- "$1" | sort | tr -d '\n'; }
synopsis=$(mandoc -Tascii -Owidth=400 "$source_dir/man/tqs.8" | sed "s/.$(printf '\b')//g" | sed -n '/^SYN/,/^DESC/p')
commands=$("$tqs" --help | sed -n '/^Subcommands/,$s/^  \([a-z]*\) .*/\1/p' | xargs)
offered "tqs "
expect "commands of tqs" "$offered" "$commands --help --version"
for command in $commands; do
    options=$("$tqs" "$command" --help | grep -oE '^  --[a-z-]+' | sorted '--.*')
    offered "tqs $command -"
    expect "tqs $command" "$(sorted '--[a-z-]+' <<<"$offered")" "$options"
    expect "manual of $command" "$({ grep "tqs $command" <<<"$synopsis"; echo --help; } | sorted '--[a-z-]+')" "$options"
done
offered "tqs list --sort "
expect keys "$offered" "$("$tqs" list --help | sed -n 's/^Keys: //p')"
expect "keys of the manual" "$(sed -n '/^\.Sh KEYS/,/^\.Sh INV/s/^\.It Cm //p' "$source_dir/man/tqs.8" | sorted '[a-z_]+')" \
    "$(sorted '[a-z_]+' <<<"$offered")"
offered "tqs list --format "
expect formats "$offered" "$("$tqs" list --help | sed -n 's/.*--format \([^ ]*\).*/\1/p' | tr '|' ' ')"

# Each option against each action: the completion offers what the program accepts.
options=$(sed -n 's/^ *{k[^"]*"[^"]*", *"\([a-z_]*\)".*/-\1/p' "$source_dir/src/model/properties.cpp")
while read -r action; do
    # What the action cannot do without.
    case $action in
    '-add platform') required=(-name x -model x -addr x -port x) ;;
    '-add system') required=(-name x -port x -addr x) ;;
    -update\ [ps]*) required=(-name x -port x) ;;
    *) required=() ;;
    esac
    offered "tqsmgr $action "
    for word in $options -newname -platform; do
        given=("${required[@]}" "$word" 0)
        [[ $action$word == '-add system-platform' ]] && given=(-name x -port x "$word" 0)
        # shellcheck disable=SC2086  # action and object
        "$program" $action "${given[@]}" </dev/null >/dev/null 2>&1
        accepted=$(($? != 11))
        [[ " $offered " == *" $word "* ]] && is_offered=1 || is_offered=0
        expect "$action $word" "$accepted" "$is_offered"
    done
done < <(sed -n 's/^ *{Action::[^"]*"\(-[a-z]*\)", *"\([a-z][a-z]*\)".*/\1 \2/p' "$source_dir/src/commands/actions.cpp")
exit $failures
