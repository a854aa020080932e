#!/usr/bin/env bash
# Builds the program as it is shipped, and the Debian package of it.
set -euo pipefail
umask 022
# shellcheck source=scripts/common.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

# shellcheck disable=SC2086
need $build_packages dpkg-dev file
builds=$(builds)
configure release "$builds/release"
cmake --build "$builds/release" --target tqsmgr tqs -j "$jobs" -- --quiet
(cd "$builds/release" && cpack)
