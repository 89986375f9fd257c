#!/usr/bin/env bash
# Installs a build and uses the copy as a user does: README's first program is built through
# find_package and through pkg-config, and both fetch a video from the installed tool's demo
# service; a program that uses the test kit is built and run. Usage: check_installed.sh
# SOURCE_FOLDER BUILD_FOLDER
set -euo pipefail
source=$1 build=$2
here=$source/tests/repository
work=$(mktemp -d)
trap 'kill ${server:-} 2>/dev/null || true; rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >"$work/log"
cp -r "$here/consumer" "$work/consumer"
program=$work/consumer/program.cpp
sed -n '/^```cpp first-program$/,/^```$/{//!p}' "$source/README.md" >"$program"
(($(wc -l <"$program") < 20)) || { echo "README's first program is not under 20 lines"; exit 1; }

cmake -S "$work/consumer" -B "$work/by-cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_BUILD_TYPE=Debug >>"$work/log" || { cat "$work/log"; exit 1; }
cmake --build "$work/by-cmake"

PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name orvoapi.pc)")
export PKG_CONFIG_PATH
read -ra flags <<<"$(pkg-config --cflags --libs orvoapi)"
g++ -std=c++20 "$program" -o "$work/by-pkg-config" "${flags[@]}" \
  -Wl,-rpath,"$(pkg-config --variable=libdir orvoapi)"

"$work/by-cmake/kit"

exec 3< <(exec "$work/prefix/bin/orvo" serve-demo --port 0 --json)
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

for program in "$work/by-cmake/program" "$work/by-pkg-config"; do
  printed=$("$program" "${addresses[@]}")
  echo "$printed"
  grep -qE '^https?://.*/film-long-thaw/[^/]+/playlist\.m3u8$' <<<"$printed"
done

# With the tool come its manual pages and what lets shells complete its command lines.
for file in man/man1/orvo.1 man/man1/orvo-collection.1 bash-completion/completions/orvo \
  zsh/vendor-completions/_orvo fish/vendor_completions.d/orvo.fish; do
  grep -q orvo "$work/prefix/share/$file"
done

# Every header that README sends its reader to is there.
for header in $(grep -oE '`[A-Z][A-Za-z]+/[A-Za-z]+\.h`' "$source/README.md" | tr -d '`'); do
  [[ -f $work/prefix/include/OrvoAPI/$header ]] || { echo "README names $header"; exit 1; }
done
