#!/usr/bin/env bash
# Builds the program and installs it: /usr/opt/tqs with the group "tqs", and manual pages, completion
# and documents below PREFIX (/usr/local). Run it as root; or set DESTDIR to install below another
# folder, where no group is created. An inventory that is there stays as it is.
set -euo pipefail
umask 022
if [ "$(id -u)" -ne 0 ] && [ -z "${DESTDIR:-}" ]; then
    echo "$0: run it as root, or set DESTDIR" >&2
    exit 1
fi
if [ -n "${DESTDIR:-}" ]; then
    DESTDIR=$(realpath -m -- "$DESTDIR")
    export DESTDIR
fi
# shellcheck source=scripts/common.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

# shellcheck disable=SC2086
need $build_packages
builds=$(builds)
configure release "$builds/release"
echo "Building $builds/release ..."
cmake --build "$builds/release" --target tqsmgr -j "$jobs" -- --quiet
cmake --install "$builds/release" --prefix "${PREFIX:-/usr/local}" --strip
echo "Installed ${DESTDIR:-}/usr/opt/tqs. Add those who may use it to the group: usermod -aG tqs NAME"
