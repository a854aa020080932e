#!/usr/bin/env bash
# Builds the programs and installs them: /usr/opt/tqs with the group "tqs", and links to the programs,
# manual pages, completion and documents below PREFIX (/usr/local). Run it as root; or set DESTDIR to
# install below another folder, where no group is created. An inventory that is there stays as it is.
#     install.sh [--uninstall]       removes what an installation put there, but no inventory
set -euo pipefail
umask 022
if [ $# -gt 1 ] || [ "${1:---uninstall}" != --uninstall ]; then
    echo "usage: $0 [--uninstall]" >&2
    exit 2
fi
if [ -z "${DESTDIR:-}" ] && dpkg-query -S /usr/opt/tqs/bin/tqsmgr > /dev/null 2>&1; then
    echo "$0: the package tqsmgr is installed, and apt-get updates or removes it" >&2
    exit 1
fi
if [ "$(id -u)" -ne 0 ] && [ -z "${DESTDIR:-}" ]; then
    echo "$0: run it as root, or set DESTDIR" >&2
    exit 1
fi
if [ -n "${DESTDIR:-}" ]; then
    DESTDIR=$(realpath -m -- "$DESTDIR")
    export DESTDIR
fi
prefix=${PREFIX:-/usr/local}
# shellcheck source=scripts/common.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

uninstall() {
    local product=${DESTDIR:-}/usr/opt/tqs share=${DESTDIR:-}$prefix/share page
    rm -f "$product"/bin/{tqsmgr,tqs} "${DESTDIR:-}$prefix"/bin/{tqsmgr,tqs}
    rm -f "$share"/bash-completion/completions/{tqsmgr,tqs}
    for page in man/*.[58]; do
        rm -f "$share/man/man${page##*.}/${page#man/}.gz"
    done
    rm -rf "$share/tqsmgr" "$share/doc/tqsmgr"
    echo "Removed. The inventory stays in $product, and the group tqs."
}

if [ "${1:-}" = --uninstall ]; then
    uninstall
    exit
fi
# shellcheck disable=SC2086
need $build_packages
builds=$(builds)
configure release "$builds/release"
echo "Building $builds/release ..."
cmake --build "$builds/release" --target tqsmgr tqs -j "$jobs" -- --quiet
cmake --install "$builds/release" --prefix "$prefix" --strip
echo "Installed ${DESTDIR:-}/usr/opt/tqs. Add those who may use it to the group: usermod -aG tqs NAME"
