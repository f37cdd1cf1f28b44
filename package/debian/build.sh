#!/usr/bin/env bash
# Packs what a native build folder holds: OUT-FOLDER/teskread_VERSION_ARCHITECTURE.deb. The same commit gives the same
# file.
#   build.sh BUILD-FOLDER OUT-FOLDER
set -euo pipefail

build=$(realpath -- "$1")
mkdir -p -- "$2"
out=$(realpath -- "$2")
sources=$(realpath -- "$(dirname -- "${BASH_SOURCE[0]}")/../..")
work=$(mktemp -d)
trap 'rm -rf -- "$work"' EXIT

SOURCE_DATE_EPOCH=$(git -C "$sources" log -1 --format=%ct)
export SOURCE_DATE_EPOCH
umask 022
cmake --build "$build" --target teskread pages
# cpack keeps its working files beside the package.
(cd -- "$build" && cpack -G DEB -B "$work") || { cat -- "$work"/_CPack_Packages/*/DEB/*.log >&2 && exit 1; }
mv -- "$work"/*.deb "$out"
