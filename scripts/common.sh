# What the scripts beside this one share; they read it with "." from anywhere. It leaves the shell in
# the repository's folder.
# shellcheck shell=bash disable=SC2034

unset CDPATH
cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." || exit
jobs=${JOBS:-2}
# What is built is dated by the version's entry in the changelog, so that the same sources make the
# same programs and the same package.
if [ -z "${SOURCE_DATE_EPOCH:-}" ]; then
    SOURCE_DATE_EPOCH=$(date -d "$(sed -n '/^ -- /{s/.*>  //p;q}' packaging/changelog.in)" +%s)
fi
export SOURCE_DATE_EPOCH
build_packages="g++ cmake ninja-build make libxerces-c-dev libicu-dev libcli11-dev nlohmann-json3-dev"

# Installs those of the named Debian packages that are missing.
need() {
    local package missing=()
    for package; do
        if [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" != installed ]; then
            missing+=("$package")
        fi
    done
    if [ ${#missing[@]} -eq 0 ]; then
        return
    fi
    local as_root=(env DEBIAN_FRONTEND=noninteractive LC_ALL=C)
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo "${as_root[@]}")
    fi
    echo "Installing ${missing[*]} ..."
    "${as_root[@]}" apt-get -qq update
    "${as_root[@]}" apt-get -qq -o Dpkg::Use-Pty=0 install -y --no-install-recommends "${missing[@]}" \
        > /dev/null
}

# The folder below which trees are built: build/ here, unless the checkout, or what stands there, is
# another user's.
builds() {
    if [ -O . ] && [ -w . ] && [ -z "$(find build ! -user "$(id -u)" -print -quit 2>/dev/null)" ]; then
        echo "$PWD/build"
    else
        echo "${XDG_CACHE_HOME:-$HOME/.cache}/tqsmgr-build"
    fi
}

# configure PRESET FOLDER [OPTION...]: prepares FOLDER for building, with the flags of CXXFLAGS,
# CPPFLAGS and LDFLAGS. What was configured for a checkout that stood elsewhere is thrown away.
configure() {
    local preset=$1 folder=$2 options=()
    shift 2
    options+=("-DCMAKE_CXX_FLAGS=${CXXFLAGS:-}${CPPFLAGS:+ $CPPFLAGS}"
        "-DCMAKE_EXE_LINKER_FLAGS=${LDFLAGS:-}")
    if [ -f "$folder/CMakeCache.txt" ] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "$folder/CMakeCache.txt"; then
        rm -r -- "$folder"
    fi
    if command -v ccache > /dev/null; then
        options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    fi
    cmake --preset "$preset" -B "$folder" "${options[@]}" "$@" > /dev/null
}
