#!/bin/sh
# checks_test.sh: the interface checks have to fail where they should. Small tables and headers, one fault each.
set -u

here=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

expect() {  # expect <pass|fail> <what> <command>...
    wanted=$1
    what=$2
    shift 2
    if "$@" > "$work/output" 2>&1; then got=pass; else got=fail; fi
    if [ "$got" != "$wanted" ]; then
        echo "FAILED: $what: expected to $wanted" >&2
        sed 's/^/  /' "$work/output" >&2
        failures=$((failures + 1))
    fi
}

declared() { expect "$1" "$2" sh "$here/check_declarations.sh" "$work/table" "$work/header.h"; }
exported() { expect "$1" "$2" sh "$here/check_exports.sh" "$work/symbols" "$work/table" "$work/host.h"; }

printf 'name\tresult\targuments\nTavra_A\tTavraBool\tTavraHandle handle, uint16_t* x, const void* y\nTavra_B\tvoid\tvoid\n' > "$work/table"
printf '/* heads */\nTAVRA_API int TavraHost_Fd(void* receiver);\n' > "$work/host.h"

a='/** Sets; not */ TAVRA_API TavraBool Tavra_A(TavraHandle handle, uint16_t *x,\n    const void* y);\n'
b='TAVRA_API void Tavra_B(void);\n'
printf "$a$b" > "$work/header.h"
declared pass 'the same declarations, broken and spaced in another way'
printf "$a" > "$work/header.h"
declared fail 'a row without declaration'
printf "$a$b$b" > "$work/header.h"
declared fail 'a declaration given twice'
printf "$a${b}TAVRA_API void Tavra_C(void);\n" > "$work/header.h"
declared fail 'a declaration that is no row'
printf "$a${b}void Tavra_C(void);\n" > "$work/header.h"
declared fail 'a declaration without the export mark'
printf "$a${b}/* never closed\n" > "$work/header.h"
declared fail 'a comment without end'
printf 'TAVRA_API TavraBool Tavra_A(TavraHandle handle, uint32_t* x, const void* y);\n%b' "$b" > "$work/header.h"
declared fail 'another argument type'
printf 'TAVRA_API TavraBool Tavra_A(TavraHandle handle, uint16_t* z, const void* y);\n%b' "$b" > "$work/header.h"
declared fail 'another argument name'
printf 'TAVRA_API uint32_t Tavra_A(TavraHandle handle, uint16_t* x, const void* y);\n%b' "$b" > "$work/header.h"
declared fail 'another result'

documented() { expect "$1" "$2" sh "$here/check_documentation.sh" "$work/header.h"; }
told='/** Acts.\n *  \\errors none\n *  \\threads any\n */\n'
printf '%b%b' "$told" "$b" > "$work/header.h"
documented pass 'errors and threads told'
printf '%b%b%b' "$told" "$b" "$b" > "$work/header.h"
documented fail 'a function without a comment of its own'
printf '/** Acts.\n *  \\errors none\n */\n%b' "$b" > "$work/header.h"
documented fail 'threads not told'
printf '/* nothing here */\n' > "$work/header.h"
documented fail 'no function at all'

printf 'Tavra_B\nTavraHost_Fd\nTavra_A\n' > "$work/symbols"
exported pass 'everything exported'
printf 'Tavra_A\nTavraHost_Fd\n' > "$work/symbols"
exported fail 'a function missing'
printf 'Tavra_A\nTavra_B\n' > "$work/symbols"
exported fail 'a host function missing'
printf 'Tavra_A\nTavra_B\nTavra_B\nTavraHost_Fd\n' > "$work/symbols"
exported fail 'a function exported twice'
printf 'Tavra_A\nTavra_B\nTavraHost_Fd\nhelper\n' > "$work/symbols"
exported fail 'a name beside the interface'
printf 'Tavra_A\nTavra_B\nTavraHost_Fd\nTavra_C\n' > "$work/symbols"
exported fail 'a Tavra_ name beside the interface'

[ "$failures" -eq 0 ] || exit 1
echo 'the checks find every fault'
