#!/usr/bin/env bash
# Compares the binary interface of a debug build with the one that is kept in abi/ under the library's
# SONAME: what programs that were linked then rely on has to be there still. Any difference fails,
# and says of which kind it is. Usage: check_abi.sh BUILD_FOLDER [keep]; `keep` writes the kept one anew.
set -euo pipefail
build=$1 keep=${2:-}
library=$(realpath "$build/OrvoAPI/libOrvoAPI.so")
soname=$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
kept=$(dirname "${BASH_SOURCE[0]}")/abi/$soname.abi.xz

rm -rf "$build/stage"
cmake --install "$build" --prefix "$build/stage" --component dev >/dev/null
# Only the types in installed headers count. Without the places where they are declared, a comment
# more in a header is no difference.
abidw --headers-dir "$build/stage/include" --drop-private-types --no-show-locs --no-corpus-path \
  --no-comp-dir-path --no-elf-needed --no-parameter-names --drop-undefined-syms \
  --out-file "$build/now.abi" "$library"
if [[ $keep == keep ]]; then
  mkdir -p "$(dirname "$kept")"
  xz -9e --stdout "$build/now.abi" >"$kept"
  echo "abi: kept $(wc -c <"$kept") bytes for $soname"
  exit
fi
[[ -f $kept ]] ||
  { echo "abi: nothing is kept for $soname; ./dev abi keep begins its promise"; exit 1; }
xz --decompress --stdout "$kept" >"$build/kept.abi"
status=0
abidiff "$build/kept.abi" "$build/now.abi" || status=$?
# Bits of the status: 1 and 2 an error, 4 a change, 8 one that breaks programs.
if ((status & 3)); then
  exit "$status"
elif ((status & 8)); then
  echo "abi: programs built with $soname break. Undo it, or give the library another SONAME: the next"
  echo "abi: minor version. While $soname is unpublished: ./dev abi keep"
  exit 1
elif ((status)); then
  echo "abi: the above is to be judged: an added member at the end of a type that programs make breaks"
  echo "abi: them, a new function does not"
  exit 1
fi
echo "abi: $soname is what was kept"
