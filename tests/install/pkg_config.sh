#!/usr/bin/env bash
# pkg_config.sh LIBDIR CONSUMER WORKDIR CXX [FLAG...]
# Builds and runs the consumer with what pkg-config says of the tree installed around LIBDIR; then a client of each
# library alone.
set -euo pipefail
libdir=$1 consumer=$2 work=$3
shift 3
export PKG_CONFIG_PATH=$libdir/pkgconfig PKG_CONFIG_LIBDIR=$libdir/pkgconfig
mkdir -p "$work"

# build NAME SOURCE PACKAGE - compiles SOURCE as a client of PACKAGE and runs it
build() {
    local flags
    read -ra flags <<<"$(pkg-config --cflags --libs "$3")"
    "${cxx[@]}" -std=c++20 "$2" -o "$work/$1" "${flags[@]}" -Wl,-rpath,"$libdir" -Wl,--no-undefined
    "$work/$1"
}

cxx=("$@")
build consumer "$consumer/main.cpp" BrixoTypes
for library in Vel pinbuf Ferrolog; do
    build "$library" "$consumer/$library.cpp" "$library"
done
