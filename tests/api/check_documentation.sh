#!/bin/sh
# check_documentation.sh <header>...
#
# Passes if each exported function stands right below a comment that tells its errors and its threads (\errors,
# \threads). Arguments and results are checked where the manual is built.
set -eu

awk '
    FNR == 1 { comment = ""; inComment = 0 }
    /^\/\*\*/ { comment = ""; inComment = 1 }
    inComment {
        comment = comment $0 "\n"
        if (/\*\//) inComment = 0
        next
    }
    /^TAVRA_API / {
        functions++
        if (comment !~ /\\errors [^ ]/ || comment !~ /\\threads [^ ]/) {
            print FILENAME ":" FNR ": errors or threads not told: " $0
            failed = 1
        }
    }
    { comment = "" }
    END {
        if (functions == 0) print "no function found"
        exit failed || functions == 0
    }' "$@" >&2
