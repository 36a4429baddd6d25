#!/bin/sh
# install.sh CMAKE BUILD CONSUMER CC WORK VERSION: installs the build into WORK/prefix, moves it to WORK/moved (an
# installation must not know where it was made) and builds the consumer there: by find_package with the shared and
# the static library, and by pkg-config.
set -eu
cmake=$1 build=$2 consumer=$3 cc=$4 work=$5 version=$6
expected="version $version status 2 objective 2.8"

fail() { echo "$*" >&2; exit 1; }
check() { [ "$2" = "$expected" ] || fail "$1 printed '$2', expected '$expected'"; }

rm -rf "$work"
mkdir -p "$work"
"$cmake" --install "$build" --prefix "$work/prefix" >"$work/install.log"
mv "$work/prefix" "$work/moved"
prefix=$work/moved

for file in include/zorvex.h bin/zorvex share/man/man1/zorvex.1; do
  [ -e "$prefix/$file" ] || fail "$file is not installed"
done
[ "$(ls "$prefix/include")" = zorvex.h ] || fail "more than one header is installed"

"$cmake" -G Ninja -S "$consumer" -B "$work/by_cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release \
  "-Dversion=$version" >"$work/configure.log" 2>&1 || { cat "$work/configure.log"; fail "find_package failed"; }
"$cmake" --build "$work/by_cmake" >"$work/build.log" 2>&1 || { cat "$work/build.log"; fail "consumer does not build"; }
check "shared library by find_package" "$("$work/by_cmake/use_shared")"
check "static library by find_package" "$("$work/by_cmake/use_static")"

pc=$(find "$prefix" -name zorvex.pc)
lib=$(dirname "$(dirname "$pc")")
export PKG_CONFIG_PATH="$lib/pkgconfig"
[ "$(pkg-config --modversion zorvex)" = "$version" ] || fail "wrong version in zorvex.pc"
# shellcheck disable=SC2046  # the flags are words
"$cc" -std=c11 "$consumer/main.c" -o "$work/by_pkg_config" $(pkg-config --cflags --libs zorvex)
check "shared library by pkg-config" "$(LD_LIBRARY_PATH=$lib "$work/by_pkg_config")"

printed=$("$prefix/bin/zorvex" --version)
[ "$printed" = "zorvex $version" ] || fail "the installed program says '$printed', not 'zorvex $version'"
