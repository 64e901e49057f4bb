#!/usr/bin/env bash
# Builds the suite and takes the pictures of the user's guide anew; with arguments, other pictures,
# see screenshots.py.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh

need_packages "${build_packages[@]}" "${display_packages[@]}" "${picture_packages[@]}"
[ -f build/release/build.ninja ] || cmake --preset release
cmake --build build/release --target velantor-suite velantor-sim
exec python3 tools/screenshots.py build/release/bin "$@"
