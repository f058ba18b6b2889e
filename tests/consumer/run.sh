#!/usr/bin/env bash
# Installs the build into a folder of its own and builds a host against it, in both ways that a
# host may find the library. Arguments: build folder, scratch folder.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$1 scratch=$2

rm -rf "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >"$scratch.log"

# Every public header compiles alone.
for header in "$scratch"/prefix/include/trovek-ui/*.h; do
    name=$(basename "$header")
    [ "$name" = export.h ] && continue
    echo "#include <trovek-ui/$name>"
done | sort >"$scratch/all.txt"

cmake -S "$here" -B "$scratch/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" \
      -DCMAKE_CXX_FLAGS="${CXXFLAGS:-}" >>"$scratch.log"
cmake --build "$scratch/cmake" >>"$scratch.log" || { tail -n 30 "$scratch.log"; exit 1; }
"$scratch/cmake/consumer"

export PKG_CONFIG_PATH=$(dirname "$(find "$scratch/prefix" -name trovek-ui.pc)")
libdir=$(pkg-config --define-prefix --variable=libdir trovek-ui)
c++ -std=c++17 ${CXXFLAGS:-} "$here/main.cpp" -o "$scratch/by-pkg-config" \
    $(pkg-config --define-prefix --cflags --libs trovek-ui) -Wl,-rpath,"$libdir"
"$scratch/by-pkg-config"

while read -r line; do
    echo "$line" >"$scratch/alone.cpp"
    c++ -std=c++17 -fsyntax-only $(pkg-config --define-prefix --cflags trovek-ui) "$scratch/alone.cpp" ||
        { echo "does not compile alone: $line"; exit 1; }
done <"$scratch/all.txt"
echo "installed headers that compile alone: $(wc -l <"$scratch/all.txt")"
