#!/usr/bin/env bash
# Installs the build into a folder of its own and builds a host against it, in both ways that a
# host may find the library. Arguments: build folder, scratch folder.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1 scratch=$2

rm -rf "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >"$scratch.log"

cmake -S "$here" -B "$scratch/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" \
      -DCMAKE_CXX_FLAGS="${CXXFLAGS:-}" >>"$scratch.log"
cmake --build "$scratch/cmake" >>"$scratch.log" || { tail -n 30 "$scratch.log"; exit 1; }
"$scratch/cmake/consumer"

export PKG_CONFIG_PATH=$(dirname "$(find "$scratch/prefix" -name trovek-ui.pc)")
libdir=$(pkg-config --variable=libdir trovek-ui)
c++ -std=c++17 ${CXXFLAGS:-} "$here/main.cpp" -o "$scratch/by-pkg-config" \
    $(pkg-config --cflags --libs trovek-ui) -Wl,-rpath,"$libdir"
"$scratch/by-pkg-config"

# Every public header compiles alone.
cflags=$(pkg-config --cflags trovek-ui)
compile_alone() {
    echo "#include <trovek-ui/$1>" | c++ -std=c++17 -fsyntax-only $cflags -x c++ - ||
        { echo "does not compile alone: $1"; return 1; }
}
export -f compile_alone
export cflags
(cd "$scratch/prefix/include/trovek-ui" && find . -name '*.h' -printf '%P\n') |
    xargs -P "$(nproc)" -I{} bash -c 'compile_alone {}'
