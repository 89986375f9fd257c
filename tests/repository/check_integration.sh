#!/usr/bin/env bash
# Builds the programs in integration/ against an installed copy, as apps with those loops do, and
# runs them. Usage: check_integration.sh PREFIX BUILD_FOLDER
set -euo pipefail
prefix=$(realpath "$1") build=$2
cmake -S "$(dirname "${BASH_SOURCE[0]}")/integration" -B "$build" -G Ninja \
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG= \
  -DCMAKE_CXX_FLAGS='-Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror' \
  -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$build" >&2
for program in "$build"/*Test; do
  timeout 120 "$program" --gtest_brief=1
done
