# Prints every declaration that headers mark TAVRA_API, one a line, blanks normalised: "result name(arguments)".
#
# Comments are dropped first; the headers have no string literal and no macro that could look like one.
{ text = text $0 "\n" }

END {
    while ((start = index(text, "/*")) > 0) {
        rest = substr(text, start + 2)
        end = index(rest, "*/")
        if (end == 0) {
            print "a comment has no end" > "/dev/stderr"
            exit 2
        }
        code = code substr(text, 1, start - 1) " "
        text = substr(rest, end + 2)
    }
    code = code text

    lines = split(code, line, "\n")
    code = ""
    for (i = 1; i <= lines; i++) {
        if (line[i] !~ /^[ \t]*#/) code = code " " line[i]
    }

    pieces = split(code, piece, ";")
    for (i = 1; i <= pieces; i++) {
        if (piece[i] !~ /TAVRA_API/) {
            # A prototype without the export mark would be invisible to this list.
            if (piece[i] ~ /Tavra(Host)?_[A-Za-z0-9_]*[ \t]*\(/) {
                print "not marked TAVRA_API:" piece[i] > "/dev/stderr"
                exit 2
            }
            continue
        }
        declaration = piece[i]
        sub(/.*TAVRA_API/, "", declaration)
        gsub(/[ \t\r]+/, " ", declaration)
        gsub(/ ?\( ?/, "(", declaration)
        gsub(/ ?\) ?/, ")", declaration)
        gsub(/ ?, ?/, ", ", declaration)
        gsub(/ ?\* ?/, "* ", declaration)
        sub(/^ /, "", declaration)
        sub(/ $/, "", declaration)
        print declaration
    }
}
