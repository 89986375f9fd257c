#!/usr/bin/env bash
# What reads untrusted bytes was built so that a memory fault ends it: the stack is guarded and
# holds no code, the linker's tables are read-only before anything runs, and indirect jumps have
# landing pads. Usage: check_hardening.sh FILE…
set -euo pipefail
faults=0
fault() {
  echo "$file: $1"
  faults=1
}

case $(uname -m) in
  x86_64) pad='\xf3\x0f\x1e\xfa' ;;  # endbr64
  aarch64) pad='(\x5f\x24|[\x3f\x7f]\x23)\x03\xd5' ;;  # bti c, paciasp, pacibsp
  *) pad='' ;;
esac

for file in "$@"; do
  segments=$(readelf -lW "$file") dynamic=$(readelf -d "$file") symbols=$(nm -D "$file")
  grep -q '^ *GNU_RELRO ' <<<"$segments" || fault "no RELRO segment"
  grep -qE '\((FLAGS|FLAGS_1|BIND_NOW)\).*\b(NOW|BIND_NOW)\b' <<<"$dynamic" ||
    fault "symbols are bound late"
  grep -qE '^ *GNU_STACK .* RW +0x' <<<"$segments" || fault "the stack may hold code"
  grep -q ' U __stack_chk_fail' <<<"$symbols" || fault "no stack protector"
  functions=$(readelf -sW "$file" | awk '$4 == "FUNC" && $7 != "UND" { print $2 }' | sort -u | wc -l)
  pads=$(LC_ALL=C grep -aoP "$pad" "$file" | wc -l)
  # A function that is only called directly may do without, so not every one counts.
  [[ -z $pad ]] || ((functions > 0 && 2 * pads > functions)) ||
    fault "$pads landing pads for $functions functions"
done
exit "$faults"
