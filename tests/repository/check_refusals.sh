#!/usr/bin/env bash
# Code that must not compile, and the sentence that the compiler is to say of it.
# Usage: check_refusals.sh COMPILER INCLUDE_FOLDER…
set -euo pipefail
compiler=$1
includes=("${@:2}")
includes=("${includes[@]/#/-I}")
faults=0

# refused SENTENCE MOST_LINES CODE OPTION…: the code is refused with the sentence, in so few lines.
refused() {
  local sentence=$1 most=$2 code=$3 said
  if said=$("$compiler" -std=c++20 "${@:4}" "${includes[@]}" -fsyntax-only -x c++ - <<<"$code" 2>&1); then
    echo "compiles: $code"
    faults=1
  elif ! grep -qF "$sentence" <<<"$said" || (($(wc -l <<<"$said") > most)); then
    printf 'not said in %s lines: %s\n%s\n' "$most" "$sentence" "$said"
    faults=1
  fi
}

future='#include <OrvoAPI/Futures/Future.h>
orvo::Future<int> future;'
# The same code without its fault, lest something else be refused.
"$compiler" -std=c++20 "${includes[@]}" -fsyntax-only -x c++ - <<<"$future
auto mapped = future.map([](int value) { return value; });
auto flat = future.flatMap([](int value) { return orvo::Future<int>::completed(value); });"

refused 'Future::map has to return a value; a task that returns nothing is for onSuccess' 25 \
  "$future auto mapped = future.map([](int) {});"
refused 'Future::flatMap has to return a Future' 25 \
  "$future auto flat = future.flatMap([](int value) { return value; });"
refused 'Future::flatMap has to return a Future' 25 \
  "$future auto flat = future.flatMap([](int) {});"
refused 'needs #include <OrvoAPI/Futures/Coroutine.h>' 25 "#include <coroutine>
$future
orvo::Future<int> next() { co_return 1; }"

refused '<OrvoAPI/Integration/GLib.h> needs GLib' 15 '#include <OrvoAPI/Integration/GLib.h>'
refused '<OrvoAPI/Integration/Qt.h> needs Qt 6' 15 '#include <OrvoAPI/Integration/Qt.h>'

for header in Integration/Qt.h Integration/GLib.h OrvoAPI.h Context/ContextService.h Futures/Future.h; do
  code="#include <OrvoAPI/$header>"
  refused 'OrvoAPI needs C++20: compile with -std=c++20' 15 "$code" -std=c++17
  refused 'OrvoAPI needs exceptions: compile without -fno-exceptions' 15 "$code" -fno-exceptions
  refused 'OrvoAPI needs run-time type information: compile without -fno-rtti' 15 "$code" -fno-rtti
done
exit $faults
