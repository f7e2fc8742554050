#!/bin/sh
# list_exports.sh <nm or objdump> <library>
#
# Prints the names that a shared library exports, one a line: with nm for ELF, with objdump for a DLL.
set -eu

tool=$1
library=$2

case $library in
*.dll)
    "$tool" -p "$library" | awk '
        /^\[Ordinal\/Name Pointer\] Table/ { inTable = 1; next }
        inTable && NF == 0 { exit }
        inTable && /\[ *[0-9]+\]/ { print $NF }'
    ;;
*)
    # Type A is the version node of the linker script, not a function.
    "$tool" -D --defined-only "$library" | awk 'NF >= 3 && $2 != "A" { sub(/@.*/, "", $3); print $3 }'
    ;;
esac
