#!/usr/bin/env bash
# What the shared library exports and needs. It exports the two version symbols and what installed
# headers declare in orvo:: and orvo::detail, all of it, so that any code of theirs links; nothing
# that is private. It needs no library beyond the agreed ones.
# Usage: check_library.sh LIBRARY SOURCE_FOLDER OBJECT…
set -euo pipefail
library=$1 sources=$2 objects=("${@:3}")
faults=0

# fault TEXT NAMES: a fault, if there are names.
fault() {
  [[ -n $2 ]] || return 0
  echo "$1:"
  c++filt <<<"$2" | sed 's/^/  /'
  faults=1
}

exported=$(nm -D --defined-only "$library" | cut -d' ' -f3 | sort)
fault "exported from outside of orvo::" "$(grep -vE \
  '^_Z(T[CISTV]|GV|T[chv][^N]*_)?NK?4orvo|^OrvoAPIVersion(Number|String)$' <<<"$exported" || true)"
fault "not exported" "$(comm -13 <(echo "$exported") \
  <(printf '%s\n' OrvoAPIVersionNumber OrvoAPIVersionString))"

# The names that installed headers declare in orvo::detail: classes with a body, and functions.
# Formatting puts them at the start of a line, and a comment at the end of a namespace of more than
# one line.
mapfile -t headers < <(find "$sources" -name '*.h' ! -name '*Internal.h')
shared=$(awk '
  /^namespace (orvo::)?detail \{/ { inside = 1; opened = FNR }
  /^\}  \/\/ namespace / || (/^\}$/ && FNR == opened + 2) || FNR == 1 { inside = 0 }
  inside' "${headers[@]}" | sed -nE '
    s/^(class|struct) (ORVO_[A-Z_]+(\(.*\))? )?(\w+).*[^;]$/\4/p
    t
    /^(requires|inline|concept) /b
    s/^[A-Za-z[][^()]* \*?(\w+)\(.*/\1/p' | sort -u)

# Splits symbols into those that belong to the interface and those that are private: what is in
# orvo::detail under another name.
names_of() {
  awk -v want="$1" '
    NR == FNR { shared[$0]; next }
    { name = $0; private = 0 }
    sub(/^_Z.*N[VK]*4orvo6detail/, "", name) {
      length_of = name
      sub(/[^0-9].*/, "", length_of)
      private = !(substr(name, length(length_of) + 1, length_of + 0) in shared)
    }
    private == (want == "private")' <(echo "$shared") -
}

fault "private, but exported" "$(names_of private <<<"$exported")"
# Weak symbols are inline functions, templates and the like: whatever uses them has them.
strong=$(nm --defined-only "${objects[@]}" | awk '$2 ~ /[TDRB]/ { print $3 }' | grep '4orvo' | sort -u)
[[ -n $strong ]] || { echo "no symbols found in the objects"; faults=1; }
fault "declared in an installed header, but not exported" \
  "$(comm -13 <(echo "$exported") <(names_of interface <<<"$strong"))"

agreed='libcurl|libsimdjson|liburiparser|libstdc\+\+|libm|libgcc_s|libc|ld-linux.*'
needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
[[ -n $needed ]] || { echo "no needed libraries found"; faults=1; }
fault "needs libraries that were not agreed on" \
  "$(grep -vE "^($agreed)\.so(\.|$)" <<<"$needed" || true)"
exit $faults
