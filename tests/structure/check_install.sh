#!/usr/bin/env bash
# What is installed can be found and used: by find_package, by pkg-config, and as a command.
# usage: check_install.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$2" --prefix "$prefix/usr" >/dev/null
mkdir "$prefix/consumer"
cp "$1/examples/twopoint.c" "$prefix/consumer/"
cat >"$prefix/consumer/CMakeLists.txt" <<'CONSUMER'
cmake_minimum_required(VERSION 3.20)
project(consumer C)
find_package(tessarmont REQUIRED)
add_executable(consumer twopoint.c)
target_link_libraries(consumer PRIVATE tessarmont::tessarmont)
CONSUMER
cmake -G Ninja -S "$prefix/consumer" -B "$prefix/build" -DCMAKE_PREFIX_PATH="$prefix/usr" >/dev/null
cmake --build "$prefix/build" >/dev/null
"$prefix/build/consumer"
library=$(dirname "$(find "$prefix/usr" -name tessarmont.pc)")
PKG_CONFIG_PATH=$library PKG_CONFIG_SYSROOT_DIR= pkg-config --exists tessarmont
flags=$(PKG_CONFIG_PATH=$library pkg-config --define-variable=prefix="$prefix/usr" --cflags --libs tessarmont)
# shellcheck disable=SC2086
cc "$prefix/consumer/twopoint.c" $flags -o "$prefix/plain"
LD_LIBRARY_PATH=$(dirname "$library") "$prefix/plain"
"$prefix/usr/bin/tessarmont" --version
