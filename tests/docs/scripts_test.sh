#!/bin/bash
# The scripts that install and package, in the tree of the release, and the other ways to configure a
# build that the documents name.
set -u
cd "$(dirname "$0")/../.." || exit 1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
# must COMMAND...: runs it; what it prints stays in "printed".
must() {
    "$@" > "$work/printed" 2>&1 || { echo "$*"; cat "$work/printed"; failures=1; }
}

must env DESTDIR="$work/a root" scripts/install.sh
must test -x "$work/a root/usr/opt/tqs/bin/tqsmgr" -a -L "$work/a root/usr/local/bin/tqs"
must env DESTDIR="$work/a root" scripts/install.sh --uninstall
left=$(cd "$work/a root" && find . ! -type d -printf "%f\n" | LC_ALL=C sort | tr "\n" " ")
[ "$left" = "SystemMap.xml kfx.conf models ostypes " ] || { echo "left: $left"; failures=1; }
must scripts/package.sh
package=$(sed -n 's/.*package: \(.*\.deb\) generated.*/\1/p' "$work/printed")
dpkg-deb --contents "$package" > "$work/contents"
must grep '^-rwxr-xr-x root/root .* \./usr/opt/tqs/bin/tqsmgr$' "$work/contents"
must grep 'root/root .* \./usr/bin/tqs -> \.\./opt/tqs/bin/tqs$' "$work/contents"
must cmake -S . -B "$work/plain"
must cmake --preset development -B "$work/development"
exit $failures
