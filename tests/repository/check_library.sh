#!/usr/bin/env bash
# The shared library exports nothing outside orvo:: but the two version symbols, and needs no
# library beyond the agreed ones. Usage: check_library.sh LIBRARY
set -euo pipefail
library=$1
faults=0

symbols=$(nm -D --defined-only -C "$library" | cut -d' ' -f3-)
foreign=$(grep -vE '^((non-virtual thunk|virtual thunk|covariant return thunk) to |[A-Za-z ]+ for )?orvo::|^OrvoAPIVersion(Number|String)$' \
  <<<"$symbols" || true)
if [[ -n $foreign ]]; then
  echo "exported from outside orvo:: :" "$foreign"
  faults=1
fi
for symbol in OrvoAPIVersionNumber OrvoAPIVersionString; do
  grep -qx "$symbol" <<<"$symbols" || { echo "$symbol is not exported"; faults=1; }
done
grep -q '^orvo::' <<<"$symbols" || { echo "nothing of orvo:: is exported"; faults=1; }

agreed='libcurl|libsimdjson|liburiparser|libstdc\+\+|libm|libgcc_s|libc|ld-linux.*'
needed=$(readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
[[ -n $needed ]] || { echo "no needed libraries found"; faults=1; }
strange=$(grep -vE "^($agreed)\.so(\.|$)" <<<"$needed" || true)
if [[ -n $strange ]]; then
  echo "needs libraries that were not agreed on: $strange"
  faults=1
fi
exit $faults
