#!/usr/bin/env bash
# Shows the main job in a private tree, which is removed at the end: nothing of the system is touched
# but for the packages that the build needs. The argument, if given, is a built test program, the one
# whose paths are below the working directory, with "tqs-test" beside it; then nothing is installed or
# built.
set -euo pipefail
program=${1:+$(realpath -- "$1")}
# shellcheck source=scripts/common.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

if [ -z "$program" ]; then
    # shellcheck disable=SC2086
    need $build_packages libgtest-dev
    builds=$(builds)
    echo "Building $builds/release ..."
    configure release "$builds/release" -DTQS_TESTS=ON
    cmake --build "$builds/release" --target tqsmgr-test tqs-test -j "$jobs" -- --quiet
    program=$builds/release/tests/tqsmgr-test
fi

demo=$(mktemp -d)
trap 'rm -rf -- "$demo"' EXIT
starter=$PWD/packaging/starter
mkdir "$demo/path" && ln -s "$program" "$demo/path/tqsmgr"
ln -s "$(dirname -- "$program")/tqs-test" "$demo/path/tqs"
PATH=$demo/path:$PATH

# fresh FOLDER: makes FOLDER a tree as an installation leaves it and goes there.
fresh() {
    mkdir -p "$demo/$1" && cd "$demo/$1"
    mkdir -p usr/opt/tqs/{bin,config,events,logs} tmp
    cp "$starter"/* usr/opt/tqs/config/
    : > usr/opt/tqs/events/basic
}
title() { printf '\n=== %s\n' "$*"; }
show() {
    local word line=
    for word; do
        [[ $word != *" "* ]] || word="'$word'"
        line+=" $word"
    done
    printf '\n$%s\n' "$line${input:+ < $input}"
    "$@" < "${input:-/dev/null}"
}
# ends CODE COMMAND...: a command that must end with CODE, which is not 0.
ends() {
    local expected=$1 code=0
    shift
    show "$@" 2>&1 || code=$?
    echo "(exit code $code)"
    [ "$code" = "$expected" ]
}
# "tqsmgr" finds no other component here that could be told of changes.
run() { show tqsmgr -nonotify web "$@"; }

fresh lab
config=usr/opt/tqs/config
title "An empty inventory, and what may stand in it"
show cat $config/SystemMap.xml
show cat $config/models
show cat $config/ostypes
show ls usr/opt/tqs/events

title "A small lab: two platforms with consoles, and a console of its own"
run -add platform -name lab1 -model RS100 -addr 10.1.1.5 -port 7001 -comment "row 3, rack 7"
run -add platform -name lab2 -model TS16 -addr 10.1.1.6 -port 7001 -evfile basic
run -add system -name db1 -platform lab1 -port 2003 -type linux
run -add system -name web1 -platform lab1 -port 2004 -type unix -logging 0
run -add system -name gate -addr 10.1.1.9 -port 2005 -type switch
printf '<?xml version="1.0"?>\n<Cache><Slot number="1" card="A7"/></Cache>\n' > tmp/cache.xml
show cat tmp/cache.xml
input=tmp/cache.xml run -update cache -platform lab1
run -update system -name db1 -port 2006 -comment "moved from 2003"

title "A mistake is refused, and nothing changes"
ends 7 tqsmgr -add system -name db2 -platform lab1 -port 2006
ends 18 tqsmgr -add platform -name lab3 -model none -addr 10.1.1.7 -port 7001

title "Many changes are one: of a script with a mistake nothing is done"
show cp $config/SystemMap.xml tmp/before.xml
cat > tmp/changes.sh << 'END'
tqsmgr -update system -name gate -addr 10.1.1.10
tqsmgr -add system -name db2 -platform lab1 -port 2007 -type linux
tqsmgr -add system -name db3 -platform lab1 -port 2006 -type linux
END
show cat tmp/changes.sh
ends 7 tqs apply --no-notify web tmp/changes.sh
show tqs diff tmp/before.xml $config/SystemMap.xml
show sed -i s/2006/2008/ tmp/changes.sh
show tqs apply --dry-run tmp/changes.sh
show tqs apply --no-notify web tmp/changes.sh
ends 1 tqs diff tmp/before.xml $config/SystemMap.xml
show tqs list --kind console
show tqs check

title "The map, what the console daemon gets of it, and the log"
show cat $config/SystemMap.xml
show cat $config/kfx.conf
show cat usr/opt/tqs/logs/tqsmgr.log

title "The log is a script: on the state of the start it makes the same map"
fresh replay
show cp ../lab/usr/opt/tqs/logs/tqsmgr.log tmp/replay.sh
show sh tmp/replay.sh 2>&1 | tee tmp/output
show cmp ../lab/$config/SystemMap.xml $config/SystemMap.xml
show cmp ../lab/$config/kfx.conf $config/kfx.conf
sed -n 's/^Recorded Exit Code = \([0-9]*\), This Exit Code = \([0-9]*\)$/\1 \2/p' tmp/output |
    awk '$1 != $2 { exit 1 } END { exit NR != 12 }'
printf '\nThe same map, the same kfx.conf, the same exit codes.\n'
