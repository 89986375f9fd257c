#!/usr/bin/env bash
# Uses an installed copy as others do, by README's own lines: they are taken from it and run as they
# stand. Each program fetches a video from the installed tool's demo service. With `all` the library
# is also built from its sources as a part of other projects, and linked statically.
# Usage: check_consumers.sh BUILD_FOLDER [all], BUILD_FOLDER being a built one, which
# stands for README's
set -euo pipefail
build=$(realpath "$1") all=${2:-}
source=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../..")
work=$(mktemp -d)
trap 'kill ${server:-} 2>/dev/null || true; rm -rf "$work"' EXIT
unset CMAKE_PREFIX_PATH PKG_CONFIG_PATH LD_LIBRARY_PATH
# ~ in README's lines.
export HOME=$work/home
prefix=$HOME/orvo

# block LANGUAGE NAME: README's block of that name.
block() {
  awk -v head="\`\`\`$1 $2" '$0 == head { inside = found = 1; next } /^```$/ { inside = 0 } inside
    END { exit !found }' "$source/README.md" ||
    { echo "README has no block \"$1 $2\"" >&2; return 1; }
}

# consumer KIND: a folder of that name with the files of consumer/KIND and the two programs.
consumer() {
  cp -r "$source/tests/repository/consumer/$1" "$work/$1"
  cp "$source/tests/repository/consumer/kit.cpp" "$work/app.cpp" "$work/$1"
  cd "$work/$1"
}

# runs PROGRAM: it fetches a video.
runs() {
  local printed
  printed=$(timeout 60 "$1" "${addresses[@]}")
  echo "$printed"
  grep -qE '^https?://.*/film-long-thaw/[^/]+/playlist\.m3u8$' <<<"$printed"
}

# refused SENTENCE COMMAND…: the command fails and says so, however its lines are broken.
refused() {
  local said
  ! said=$("${@:2}" 2>&1) || { echo "not refused: ${*:2}"; return 1; }
  [[ $(tr -s '[:space:]' ' ' <<<"$said") == *"$1"* ]] || { echo "$said"; return 1; }
}

by_readme() {
  mkdir "$work/by-readme"
  cd "$work/by-readme"
  cp "$work/app.cpp" .
  # It was installed already, so that the others need not wait for it.
  eval "$(block sh install-for-yourself | grep -v '^cmake --install ')"
  runs ./app
}

by_find_package() {
  consumer installed
  block cmake find-package >find-package.cmake
  cmake -B build -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_CXX_STANDARD=23 -DCMAKE_BUILD_TYPE=Debug
  cmake --build build
  build/kit
  runs build/app
  runs build/behind-qt
}

by_meson() {
  consumer meson
  mkdir app
  mv app.cpp app
  block meson meson >app/meson.build
  PKG_CONFIG_PATH=$prefix/lib/pkgconfig meson setup build --cmake-prefix-path "$prefix"
  ninja -C build
  runs build/app/app
  # This way Meson leaves finding the library at run time to its user.
  LD_LIBRARY_PATH=$prefix/lib runs build/by-cmake
}

by_pkg_config_with_the_kit() {
  export PKG_CONFIG_PATH=$1/lib/pkgconfig
  g++ -std=c++20 -Wall -Wextra -Werror "$source/tests/repository/consumer/kit.cpp" -o "$work/kit-$2" \
    $(pkg-config --cflags --libs orvoapi-testing) -Wl,-rpath,"$1/lib"
  "$work/kit-$2"
}

components() {
  mkdir "$work/components"
  cd "$work/components"
  local component prefix=$PWD/prefix
  printf '%s\n' 'cmake_minimum_required(VERSION 3.25)' 'project(P LANGUAGES CXX)' \
    'find_package(OrvoAPI REQUIRED COMPONENTS ${WANTED})' >CMakeLists.txt
  try() { cmake -B build -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DWANTED="$1"; }
  cmake --install "$build" --prefix "$prefix" --component runtime
  [[ $(cd "$prefix" && find . -type f) =~ ^\./lib/libOrvoAPI\.so\.[0-9.]*$ ]]
  cmake --install "$build" --prefix "$prefix" --component dev
  refused 'its test kit is not installed here' try Testing
  try ''
  cmake --install "$build" --prefix "$prefix" --component testing
  try Testing
  refused 'it has no component "Demo", only Testing' try Demo
  cmake --install "$build" --prefix "$prefix" --component tool
  # All that an install without components has, and nothing twice.
  diff <(cd "$prefix" && find . -type f | sort) <(cd "$HOME/orvo" && find . -type f | sort)
}

# What the library is as a part of another project; built only if asked for.
by_sources() {
  consumer from-source
  ln -s "$source" OrvoAPI
  block cmake sources >sources.cmake
  cmake -B build -G Ninja -DBY=add_subdirectory
  [[ $all == all ]] || return 0
  # Static, as the parent has not said otherwise, and installed with it.
  cmake -B build -DBY=FetchContent -DORVO_INSTALL=ON -DCMAKE_BUILD_TYPE=Debug -DCMAKE_UNITY_BUILD=ON \
    -DCMAKE_CXX_FLAGS_DEBUG=-O0
  cmake --build build
  build/kit
  runs build/app
  cmake -B build -DBY=add_subdirectory
  cmake --build build
  runs build/app
  cmake --install build --prefix "$work/static"
  by_pkg_config_with_the_kit "$work/static" static
  eval "$(block sh compile | sed "s|app.cpp -o app|$work/app.cpp -o $work/static-app|")"
  runs "$work/static-app"
  cp "$work/from-source/sources.cmake" "$work/from-source/find-package.cmake"
  cd "$work/installed"
  cmake -B static -G Ninja -DCMAKE_PREFIX_PATH="$work/static"
  cmake --build static
  runs static/app
}

tools_needs() {
  refused 'need what was not found: CLI11 (Debian: libcli11-dev)' \
    cmake -S "$source" -B "$work/needs" -G Ninja -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON
  refused 'build the library without them: -DORVO_BUILD_TOOL=OFF' \
    cmake -S "$source" -B "$work/needs" -G Ninja -DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON
}

# With the tool come its manual pages and what lets shells complete its command lines; and every
# header that README sends its reader to is there.
what_is_installed() {
  local file
  for file in man/man1/orvo.1 man/man1/orvo-collection.1 bash-completion/completions/orvo \
    zsh/vendor-completions/_orvo fish/vendor_completions.d/orvo.fish; do
    grep -q orvo "$prefix/share/$file"
  done
  for file in $(grep -oE '`[A-Z][A-Za-z]+/[A-Za-z]+\.h`' "$source/README.md" | tr -d '`'); do
    [[ -f $prefix/include/OrvoAPI/$file ]] || { echo "README names $file"; return 1; }
  done
}

block cpp first-program >"$work/app.cpp"
(($(wc -l <"$work/app.cpp") < 20)) || { echo "README's first program is not under 20 lines"; exit 1; }
mkdir "$HOME"
(
  mkdir -p "$work/checkout/build"
  cd "$work/checkout"
  ln -s "$build" build/release
  eval "$(block sh install-for-yourself | grep '^cmake --install ')" >/dev/null
)

exec 3< <(exec "$prefix/bin/orvo" serve-demo --port 0 --json)
server=$!
read -ra addresses < <(python3 -c '
import json, sys
text = ""
for line in sys.stdin:
    text += line
    try:
        found = json.loads(text)
    except ValueError:
        continue
    print(found["api"], found["resources"])
    break
' <&3)

declare -A running
start() {
  (set -e; "$@") &>"$work/$1.log" </dev/null &
  running[$1]=$!
}
failed=0
finish() {
  local name
  for name in "${!running[@]}"; do
    wait "${running[$name]}" || { echo "$name failed:"; tail -n 30 "$work/$name.log"; failed=1; }
  done
  running=()
}
start by_readme
start by_find_package
start by_meson
start by_pkg_config_with_the_kit "$prefix" shared
finish
start components
start tools_needs
start what_is_installed
start by_sources
finish
((!failed)) || exit 1
echo "consumers: README's lines, CMake, pkg-config and Meson build programs that fetch"
