#!/usr/bin/env bash
# Compiles every header of an installed copy by itself under clang++, with warnings as errors, and
# all of them at once under g++, after the macros of other libraries. The headers for the loops of
# others are the only ones that are given those libraries' headers. Usage: check_headers.sh
# INCLUDE_FOLDER
set -euo pipefail
include=$1
headers=$(cd "$include" && find OrvoAPI -name '*.h' | sort)
[[ -n $headers ]] || { echo "no headers under $include" >&2; exit 1; }

# compile COMPILER INCLUDE_FOLDER HEADER [OPTION…]
compile() {
  local compiler=$1 include=$2 header=$3
  printf '#include <%s>\n' "$header" |
    "$compiler" -std=c++20 -Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror -fsyntax-only \
      -I "$include" "${@:4}" -x c++ - ||
    { echo "$compiler: <$header> does not compile alone" >&2; exit 1; }
}
export -f compile

loops='OrvoAPI/Integration/GLib.h
OrvoAPI/Integration/Qt.h'
read -ra glib <<<"$(pkg-config --cflags glib-2.0 | sed 's/-I */-isystem /g')"
read -ra qt <<<"-fPIC $(pkg-config --cflags Qt6Core | sed 's/-I */-isystem /g')"
headers=$(grep -vxF "$loops" <<<"$headers")
xargs -P "$(nproc)" -I{} bash -c 'compile "$@"' - clang++ "$include" {} <<<"$headers"
for compiler in g++ clang++; do
  compile "$compiler" "$include" OrvoAPI/Integration/GLib.h "${glib[@]}"
  compile "$compiler" "$include" OrvoAPI/Integration/Qt.h "${qt[@]}"
  compile "$compiler" "$include" OrvoAPI/Integration/Qt.h "${qt[@]}" -DQT_NO_KEYWORDS
done
# Words that others define away: Qt, <windows.h> and what imitates it, X11. X11's Status is left
# out: it is the name of a model of ours.
macros='
#define slots
#define signals public
#define emit
#define foreach(variable, container) for (variable : container)
#define forever for (;;)
#define min(a, b) ((a) < (b) ? (a) : (b))
#define max(a, b) ((a) > (b) ? (a) : (b))
#define Always 2
#define Bool int
#define False 0
#define None 0L
#define Success 0
#define True 1'
# The standard library's headers come first: they are not ours to mend.
standard=$(cd "$include" && grep -rhoE '^#include <[a-z_]+>' OrvoAPI | sort -u)
printf '%s\n' "$standard" "$macros" "$(sed 's/.*/#include <&>/' <<<"$headers")" |
  g++ -std=c++20 -Wall -Wextra -Wconversion -Wshadow -Wpedantic -Werror -fsyntax-only -I "$include" -x c++ - ||
  { echo "a header does not compile behind other libraries' macros" >&2; exit 1; }

echo "$(wc -l <<<"$headers"$'\n'"$loops") headers compile"
