#!/usr/bin/env bash
# Builds the part that controls Windows services with MinGW, and runs it under Wine, where there is
# no such service. Argument: a scratch folder, in which Wine's own files are kept between runs.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
source=$(cd "$here/../../.." && pwd)
scratch=$1
mkdir -p "$scratch"

x86_64-w64-mingw32-g++ -std=c++17 -Wall -Wextra -Wpedantic -Wshadow -Werror -static \
    -I"$source/src" "$here/service_manager_windows.cpp" \
    "$source/src/core/service_manager.cpp" "$source/src/core/service_manager_windows.cpp" \
    -lshell32 -o "$scratch/service_manager_windows.exe"

# Debian's program for 64 bits only is not on the PATH.
wine=$(PATH="$PATH:/usr/lib/wine" command -v wine64)
export WINEPREFIX=$scratch/wine WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml='
unset DISPLAY WAYLAND_DISPLAY
"$wine" "$scratch/service_manager_windows.exe"
