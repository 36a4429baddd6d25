#!/bin/sh
# exported_symbols.sh NM HEADER LIBRARY: the library's dynamic symbols are exactly the header's ZLP_EXPORT functions.
set -eu
nm=$1 header=$2 library=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

sed -n 's/^ZLP_EXPORT[^(]*[ *]\(ZLP[A-Za-z]*\)(.*/\1/p' "$header" | LC_ALL=C sort >"$work/declared"
"$nm" -D --defined-only "$library" | awk '{print $NF}' | sed 's/@.*//' | LC_ALL=C sort >"$work/exported"

[ "$(grep -c '^ZLP_EXPORT' "$header")" -eq "$(wc -l <"$work/declared")" ] || {
  echo "a ZLP_EXPORT line of the header was not understood" >&2
  exit 1
}
diff -u "$work/declared" "$work/exported" || {
  echo "- declared but not exported, + exported but not declared" >&2
  exit 1
}
echo "$(wc -l <"$work/exported") symbols"
