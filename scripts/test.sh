#!/usr/bin/env bash
# Installs what the tests need, refuses sources that clang-format would change or clang-tidy finds
# fault with, builds the program as it is shipped and with sanitizers, and runs all tests of both.
# Extra arguments are passed to ctest, for example: scripts/test.sh -R documents
set -euo pipefail
# shellcheck source=scripts/common.sh
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

# shellcheck disable=SC2086
need $build_packages libgtest-dev libxml2-utils shellcheck mandoc dpkg-dev file \
    clang-format clang-tidy
echo "Looking at the format of the sources ..."
find src tests fuzz bench '(' -name '*.cpp' -o -name '*.h' ')' -print0 | xargs -0 clang-format --dry-run -Werror
builds=$(builds)
configure release "$builds/release" -DTQS_TESTS=ON
configure sanitizers "$builds/sanitizers" -DTQS_TIDY=ON
for tree in release sanitizers; do
    echo "Building $builds/$tree ..."
    cmake --build "$builds/$tree" -j "$jobs" -- --quiet
done

# One run over both trees, so that its closing line speaks of all tests.
mkdir -p "$builds/tests"
for tree in release sanitizers; do
    echo "subdirs(\"$builds/$tree\")"
done > "$builds/tests/CTestTestfile.cmake"
ctest --test-dir "$builds/tests" -j "$jobs" --output-on-failure --no-tests=error "$@"
