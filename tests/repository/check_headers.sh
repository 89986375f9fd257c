#!/usr/bin/env bash
# Compiles every header of an installed copy by itself, under g++ and clang++, with warnings as
# errors. Usage: check_headers.sh INCLUDE_FOLDER
set -euo pipefail
include=$1
headers=$(cd "$include" && find OrvoAPI -name '*.h' | sort)
[[ -n $headers ]] || { echo "no headers under $include" >&2; exit 1; }

compile() {
  local compiler=$1 include=$2 header=$3
  printf '#include <%s>\n' "$header" |
    "$compiler" -std=c++20 -Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror -fsyntax-only \
      -I "$include" -x c++ - || { echo "$compiler: <$header> does not compile alone" >&2; exit 1; }
}
export -f compile

for compiler in g++ clang++; do
  xargs -P "$(nproc)" -I{} bash -c 'compile "$@"' - "$compiler" "$include" {} <<<"$headers"
done
echo "$(wc -l <<<"$headers") headers compile alone under g++ and clang++"
