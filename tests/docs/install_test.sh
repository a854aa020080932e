#!/bin/sh
# An installation below a folder: nothing is overwritten, or made for a map that was there, and members
# cannot replace programs.
#     install_test.sh BUILD_FOLDER
set -u
DESTDIR=$(mktemp -d)
export DESTDIR
trap 'rm -rf "$DESTDIR"' EXIT
product=$DESTDIR/usr/opt/tqs
failures=0
# mode MODE PATH
mode() {
    [ "$(stat -c %a "$product/$2")" = "$1" ] || { ls -ld "$product/$2"; failures=1; }
}

umask 077
for run in first second; do
    cmake --install "$1" > "$DESTDIR/output" || { cat "$DESTDIR/output"; failures=1; }
    mode 755 .
    mode 755 bin
    mode 755 bin/tqsmgr
    for folder in config events logs; do mode 2770 $folder; done
    if [ $run = first ]; then
        for file in SystemMap.xml kfx.conf models ostypes; do mode 660 config/$file; done
        echo changed > "$product/config/SystemMap.xml"
        rm "$product/config/kfx.conf"
        rm "$product/config/models" && ln -s nowhere "$product/config/models"
    fi
done
# No network client is linked in, and the program is hardened. With sanitizers it is another one.
dynamic=$(readelf -dW "$product/bin/tqsmgr")
case $dynamic in
*libasan*) ;;
*)
    echo "$dynamic" | grep NEEDED | grep -vE '\[(ld-linux[^.]*|libc|libm)\.so\.' && failures=1
    echo "$dynamic" | grep -q 'Flags: NOW PIE' || failures=1
    # Nor does it tell where it was built.
    grep -qF "$(cd "$(dirname "$0")/../.." && pwd)/" "$product/bin/tqsmgr" && failures=1
    readelf --dyn-syms -W "$product/bin/tqsmgr" | grep -q " __stack_chk_fail@" || failures=1
    ;;
esac
[ "$(cat "$product/config/SystemMap.xml")" = changed ] || failures=1
[ -L "$product/config/models" ] && [ ! -e "$product/config/kfx.conf" ] || failures=1
"$(dirname "$0")/../../scripts/install.sh" --uninstal 2> /dev/null && failures=1
[ "$(readlink -f "$DESTDIR/usr/local/bin/tqs")" = "$(realpath "$product/bin/tqs")" ] || failures=1
pages=$(cd "$(dirname "$0")/../.." && find man completion -type f | wc -l)
[ "$(find "$DESTDIR" -path '*/man[58]/*.gz' -o -path '*/completions/tqs*' | wc -l)" -eq "$pages" ] || failures=1
exit $failures
