#!/bin/sh
# check_library.sh <nm or objdump> <library> <exports.tsv> [<host header>]
#
# The exports of a built library against the interface: list_exports.sh, then check_exports.sh.
set -eu

here=$(dirname "$0")
tool=$1
library=$2
shift 2
symbols=$(mktemp)
trap 'rm -f "$symbols"' EXIT
sh "$here/list_exports.sh" "$tool" "$library" > "$symbols"
sh "$here/check_exports.sh" "$symbols" "$@"
