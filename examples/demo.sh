#!/usr/bin/env bash
# A walk through the service: configuration, the Discover page, a video and its stream, from the
# demo service over a real socket. Usage: demo.sh ORVO
set -euo pipefail
orvo=$1

serve=("$orvo" serve-demo --port 0 --json)
exec 3< <(exec "${serve[@]}")
service=$!
trap 'kill "$service" 2>/dev/null || true' EXIT

# The service says where it is as soon as it listens, in one JSON document.
document=
until [[ $document == *\}* ]]; do
  IFS= read -r line <&3 || { echo "the demo service did not start" >&2; exit 1; }
  document+=$line
done
address() { sed -E 's/.*"'"$1"'": *"([^"]*)".*/\1/' <<<"$document"; }
service_options=(--api "$(address api)" --resources "$(address resources)")

show() {
  printf '\n$ orvo … %s\n' "$*"
  "$orvo" "${service_options[@]}" "$@"
}

printf '$ %s\n' "orvo serve-demo &" "alias orvo=\"orvo ${service_options[*]}\""
show config
show views
show page view-discover
show video film-long-thaw
show stream film-long-thaw

stream=$("$orvo" "${service_options[@]}" stream film-long-thaw)
printf '\n$ curl -i %s\n' "$stream"
curl --silent --show-error --fail --include "$stream"
