#!/bin/sh
# check_exports.sh <symbols> <exports.tsv> [<host header>]
#
# <symbols> holds the names that a library exports, one a line (list_exports.sh writes it). Passes if they are exactly
# the functions of the table, and those of the host header where one is given.
set -eu

here=$(dirname "$0")
symbols=$1
table=$2
hostHeader=${3:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

complain() {  # complain <what is wrong> <file with the names>
    if [ -s "$2" ]; then
        echo "$1:" >&2
        sed 's/^/  /' "$2" >&2
        failed=1
    fi
}

export LC_ALL=C
sort "$symbols" > "$work/exported"
awk -F '\t' 'NR > 1 && NF >= 3 { print $1 }' "$table" | sort > "$work/table"
: > "$work/host"
if [ -n "$hostHeader" ]; then
    awk -f "$here/declarations.awk" "$hostHeader" | sed -e 's/(.*//' -e 's/.*[ *]//' | sort > "$work/host"
fi

if ! [ -s "$work/table" ]; then
    echo "$table: no function in the table" >&2
    exit 1
fi
uniq -d "$work/exported" > "$work/twice"
complain "exported twice" "$work/twice"
sort "$work/table" "$work/host" > "$work/public"
comm -23 "$work/public" "$work/exported" > "$work/lost"
complain "not exported" "$work/lost"
comm -13 "$work/public" "$work/exported" > "$work/extra"
complain "exported, but no part of the interface" "$work/extra"

[ "$failed" -eq 0 ] || exit 1
echo "$(wc -l < "$work/exported") exports"
