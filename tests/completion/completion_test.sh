#!/bin/bash
# What the completion offers: names of the map and of the reference files, and for each action the
# options that the program accepts.
#     completion_test.sh [PROGRAM]      (the test program, whose paths are below the working directory)
set -u
source_dir=$(realpath "$(dirname "$0")/../..")
program=${1:+$(realpath "$1")}
export TQS_ROOT
TQS_ROOT=$(mktemp -d)
trap 'rm -rf "$TQS_ROOT"' EXIT
cd "$TQS_ROOT" && mkdir -p usr/opt/tqs/{config,events,logs,bin} tmp || exit 1
failures=0
fail() {
    echo "$1"
    failures=$((failures + 1))
}

config=usr/opt/tqs/config
# shellcheck disable=SC2016  # not to be expanded
printf '#M0|M0\nServer|M100\r\nno field\nBig|X 9|\nEvil|$(touch evil)\nQuotes|a"b`c'"'"'d\n|x:y\nempty|\n' >$config/models
printf 'Unknown|\n#no|\nlinux|Linux servers\nno field\n' >$config/ostypes
touch usr/opt/tqs/events/basic usr/opt/tqs/events/two\ words
printf '#no=1\nport=2\nno\nhost=a=b\n' >daemon.conf
# A map in a layout of its own, in which a comment and a cache name what is not there.
cat >$config/SystemMap.xml <<'END'
<?xml version='1.0'?><!-- <Platform><PropertyMap><Property name="Name" value="no"/></PropertyMap> -->
<SystemMap serial="9"><!--x--><Platform ID='1'><PropertyMap ID="1.pmap"><Property
 value = 'lab1' readonly="false" name="Name"/><Property name="Address" value="a>b"/></PropertyMap>
<Console ID="1:1"><PropertyMap ID="1:1.pmap"><Property name="Name" value="db1"/></PropertyMap></Console>
<Cache><Console><PropertyMap><Property name="Name" value="no"/></PropertyMap></Console>
<![CDATA[<Console>]]><Property name="Name" value="no"/></Cache>
<Console ID="1:2"><PropertyMap ID="1:2.pmap"><Property name="Name" value="db2"></Property></PropertyMap></Console></Platform>
<Console ID="2:1"><PropertyMap ID="2:1.pmap"><Property name="Name" value="s1"/></PropertyMap></Console>
<Platform ID="3"><PropertyMap ID="3.pmap"><Property name="Name" value="&amp;lt;`touch evil`"/></PropertyMap></Platform></SystemMap>
END
sed 's/lab1/other/' $config/SystemMap.xml >'my map.xml'

# offered LINE: the candidates at its end, in "offered".
# shellcheck source=/dev/null
source "$source_dir/completion/tqsmgr"
# shellcheck disable=SC2317  # called by the completion
compopt() { COMPREPLY+=("(files)"); }
offered() {
    COMP_LINE=$1 COMP_POINT=${#1}
    [[ $1 =~ (\"[^\"]*|\'[^\']*|(\\.|[^\\ :=])*)$ ]] && COMP_WORDS=(tqsmgr "${BASH_REMATCH[0]}")
    COMP_CWORD=1
    _tqsmgr
    offered=${COMPREPLY[*]-}
}

while IFS=$'\t' read -r line expected; do
    offered "tqsmgr ${line%.}"
    [ "$offered" = "$expected" ] || fail "$line: offers $offered, not $expected"
done <<'TABLE'
.	-f -nonotify -add -update -remove -view -write -config -security -U -V -h
-f m -nonotify web -U -ad.	-add
-f .	(files)
-nonotify .	web kfxd
-add .	platform system
-update .	platform system cache
-remove .	platform system cache
-view .	kfxconf security
-write .	kfxconf
-security .	true false
-security true .	
-add cache .	
-h .	
-update cache -platform lab1 < .	(files)
-config .	(files)
-config daemon.conf .	-get -set
-config daemon.conf -get .	port host
-config daemon.conf -set .	
-add platform -.	-name -addr -port -mport -comment -evfile -auth -logging -events -enable -model -template -first_ts_port -last_ts_port
-add system -name -addr -platform lab1 -t.	-type
-add system -platform lab1 -a.	-auth
-add system -addr 1 -p.	-port
-add platform -type x .	
-add platform -name .	
-add platform -comment -auth -auth .	0 1
-update platform -name .	lab1 \&lt\;\`touch\ evil\`
-f my\ map.xml -remove platform -name o.	other
-f "my map.xml" -remove platform -name o.	other
-f none -remove platform -name .	
-remove system -name .	db1 db2 s1
-update system -name d.	db1 db2
-view kfxconf -name .	lab1 db1 db2 s1 \&lt\;\`touch\ evil\`
-add system -platform l.	lab1
-update platform -model .	M100 X\ 9\| \$\(touch\ evil\) a\"b\`c\'d x:y
-add platform -model X\ .	X\ 9\|
-add platform -model "X .	"X 9|
-add platform -model 'X .	'X 9|
-add platform -model "a.	"a\"b\`c'd
-add platform -model 'a.	'a"b`c'\''d
-add platform -model x:.	y
-update system -type .	Unknown linux
-update system -evfile .	basic two\ words
TABLE
[ ! -e evil ] || fail "a name was executed"

# Each option against each action: the completion offers what the program accepts.
mapfile -t words < <({
    sed -n 's/^ *{k[^"]*"[^"]*", *"\([a-z_]*\)".*/-\1/p' "$source_dir/src/model/properties.cpp"
    grep -oE -- '-(newname|platform)\b' "$source_dir/src/commands/parse_command.cpp"
} | sort -u)
[ ${#words[@]} -ge 17 ] || fail "options: ${words[*]}"
while [ -n "$program" ] && read -r action; do
    # What the action cannot do without.
    case $action in
    '-add platform') required=(-name x -model x -addr x -port x) ;;
    '-add system') required=(-name x -port x -addr x) ;;
    -update\ [ps]*) required=(-name x -port x) ;;
    *) required=() ;;
    esac
    offered "tqsmgr $action "
    for word in "${words[@]}"; do
        given=("${required[@]}" "$word" 0)
        [[ $action$word == '-add system-platform' ]] && given=(-name x -port x "$word" 0)
        # shellcheck disable=SC2086  # action and object
        "$program" $action "${given[@]}" </dev/null >/dev/null 2>&1
        accepted=$(($? != 11))
        [[ " $offered " == *" $word "* ]] && is_offered=1 || is_offered=0
        [ "$accepted" = "$is_offered" ] || fail "$action $word: accepted $accepted, offered $is_offered"
    done
done < <(sed -n 's/^ *{Action::[^"]*"\(-[a-z]*\)", *"\([a-z][a-z]*\)".*/\1 \2/p' "$source_dir/src/commands/actions.cpp")

exit $((failures > 0))
