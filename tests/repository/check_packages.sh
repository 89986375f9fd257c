#!/usr/bin/env bash
# What a packager asks of the packages in FOLDER, where debian/build has put them: lintian finds no
# fault; a second build, in another folder and without a compiler's cache, gives the same bytes; in a
# clean system they install, their tests run, and removing them leaves nothing. In that system
# README's lines are run, too, as they stand. Usage: check_packages.sh FOLDER [lint|twice|install|readme…]
set -euo pipefail
folder=$(realpath "$1")
source=$(realpath "$(dirname "${BASH_SOURCE[0]}")/../..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
parts=("${@:2}")
((${#parts[@]})) || parts=(lint twice install readme)

lint() {
  # Not lintian's: that a first upload closes no bug, and what is said of root.
  lintian --no-cfg --fail-on error,warning \
    --suppress-tags initial-upload-closes-no-bugs "$folder"/*.changes
}

twice() {
  local deb
  env -u CMAKE_CXX_COMPILER_LAUNCHER "$source/debian/build" "$work/a-second-time"
  for deb in "$folder"/*.deb; do
    cmp "$deb" "$work/a-second-time/$(basename "$deb")"
  done
}

# clean_system COMMAND: runs it, as root, in a Debian with nothing in it but apt; the packages are in
# /packages, the sources in /source.
clean_system() {
  mkdir -p "$work/source" "$work/packages"
  (cd "$source" && git ls-files -z | xargs -0 cp --parents -P -t "$work/source")
  find "$folder" -maxdepth 1 -name '*.deb' ! -name '*-dbgsym_*' -exec cp {} "$work/packages" \;
  printf 'set -euxo pipefail\ncd /\n%s\n' "$1" >"$work/try"
  mmdebstrap --quiet --variant=apt \
    --customize-hook="copy-in $work/source $work/packages $work/try /" \
    --customize-hook='chroot "$1" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root DEBIAN_FRONTEND=noninteractive bash /try' \
    bookworm /dev/null &>"$work/log" || { tail -n 60 "$work/log" >&2; return 1; }
}

install() {
  clean_system '
apt-get -qq install -y --no-install-recommends /packages/*.deb \
  cmake g++ man-db ninja-build pkg-config python3 >/dev/null
sh -x /source/debian/tests/tool
bash -x /source/debian/tests/programs
apt-get -qq purge -y liborvoapi0.1 liborvoapi-dev orvo >/dev/null
left=$(find / -xdev -iname "*orvo*" ! -path "/proc/*" ! -path "/source/*" ! -path "/packages/*" \
  ! -path "/tmp/*" ! -path "/var/cache/man/*")
[[ -z $left ]] || { echo "left behind: $left"; exit 1; }'
}

# README as root, to whom sudo is nothing, and who agrees to what apt-get asks.
readme() {
  clean_system '
echo "APT::Get::Assume-Yes \"true\";" >/etc/apt/apt.conf.d/agreed
sudo() { "$@"; }
block() { sed -n "/^\`\`\`$1 $2\$/,/^\`\`\`\$/{//!p}" README.md; }
apt-get -qq install python3 >/dev/null
cd /source
eval "$(block sh install)"
block cpp first-program >app.cpp
eval "$(block sh compile)"
exec 3< <(exec orvo serve-demo --port 0 --json)
server=$!
trap "kill $server" EXIT
read -ra addresses < <(python3 -c "
import json, sys
text = str()
for line in sys.stdin:
    text += line
    try:
        found = json.loads(text)
    except ValueError:
        continue
    print(found[\"api\"], found[\"resources\"])
    break
" <&3)
./app "${addresses[@]}" | grep "/film-long-thaw/.*m3u8$"
eval "$(block sh install-for-yourself)"
./app "${addresses[@]}" | grep "/film-long-thaw/.*m3u8$"'
}

for part in "${parts[@]}"; do
  "$part"
  echo "packages: $part: no fault"
done
