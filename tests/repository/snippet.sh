#!/usr/bin/env bash
# Prints a program that a document shows: the code block that begins with ```cpp NAME.
# Usage: snippet.sh DOCUMENT NAME
set -euo pipefail
awk -v fence="\`\`\`cpp $2" '
  $0 == fence { inside = found = 1; next }
  /^```/ { inside = 0 }
  inside
  END { exit !found }
' "$1" || { echo "$1 shows no program named $2" >&2; exit 1; }
