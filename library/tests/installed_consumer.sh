#!/bin/sh
# usage: installed_consumer.sh CMAKE COMPILER BUILD_FOLDER WORK_FOLDER. Installs the library into a folder of its
# own, then builds and runs a program outside this project against it: with find_package and with pkg-config.
set -e
cmake=$1 compiler=$2 build=$3 work=$4
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work/project"
"$cmake" --install "$build" --prefix "$work/stage" --component library >/dev/null

cp "$here/consumer.cpp" "$work/project/"
cat >"$work/project/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(consumer LANGUAGES CXX)
find_package(qkel4x 1 REQUIRED)
add_executable(consumer consumer.cpp)
target_link_libraries(consumer PRIVATE qkel4x::workbench qkel4x::qkel4x)
END
"$cmake" -S "$work/project" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/stage" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$CXXFLAGS" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
"$cmake" --build "$work/build" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
echo "find_package:"
"$work/build/consumer"

library_folder=$(dirname "$(find "$work/stage" -name libqkel4x.so)")
PKG_CONFIG_PATH=$(dirname "$(find "$work/stage" -name qkel4x.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046,SC2086: flags are words
"$compiler" -std=c++20 $CXXFLAGS "$here/consumer.cpp" $(pkg-config --cflags --libs qkel4x-workbench) \
  -Wl,-rpath,"$library_folder" -o "$work/consumer"
echo "pkg-config:"
"$work/consumer"
