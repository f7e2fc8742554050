#!/bin/sh
# check_declarations.sh <exports.tsv> <header>...
#
# Passes if the headers together declare exactly the rows of the table: each function once, with the same result and
# the same arguments under the same names, and no other function.
set -eu

here=$(dirname "$0")
table=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# One awk for each header: an unfinished comment in one must not swallow the next.
for header in "$@"; do
    awk -f "$here/declarations.awk" "$header" >> "$work/found.unsorted"
done
LC_ALL=C sort "$work/found.unsorted" > "$work/found"
awk -F '\t' 'NR > 1 && NF >= 3 { print $2 " " $1 "(" $3 ")" }' "$table" |
    sed -e 's/ *\* */* /g' | LC_ALL=C sort > "$work/wanted"

if ! [ -s "$work/wanted" ]; then
    echo "$table: no function in the table" >&2
    exit 1
fi
if ! diff "$work/wanted" "$work/found" > "$work/difference"; then
    echo "headers and table differ ('<' only in the table, '>' only in the headers):" >&2
    grep '^[<>]' "$work/difference" >&2
    exit 1
fi
echo "$(wc -l < "$work/wanted") declarations agree with the table"
