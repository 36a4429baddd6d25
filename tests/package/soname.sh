#!/bin/sh
# soname.sh OBJDUMP LIBRARY NAME
set -eu
found=$("$1" -p "$2" | awk '$1 == "SONAME" {print $2}')
[ "$found" = "$3" ] || { echo "SONAME is '$found', expected '$3'" >&2; exit 1; }
