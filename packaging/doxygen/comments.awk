# Doxygen's input filter: turns the public headers' plain comments into documentation comments.
#
# A comment on lines of its own belongs to every declaration that follows it without an empty line,
# one behind a declaration to that. The first one of a file describes the file. What would be a
# command or a tag to Doxygen is meant as text.

function as_text(comment) {
    gsub(/[\\<>@#%&]/, "\\\\&", comment)
    gsub(/\\&/, "\\&amp;", comment)
    return comment
}

function emit_comment() {
    printf "%s", documentation
}

# The comment that begins in `line`, read to its end.
function read_comment(line, text) {
    text = line
    while (line !~ /\*\//) {
        if ((getline line) <= 0)
            break
        text = text "\n" line
    }
    sub(/^[ \t]*\/\*/, "", text)
    sub(/\*\/.*/, "", text)
    return as_text(text)
}

BEGIN { documentation = "" }

/^[ \t]*\/\* ----/ { next } # a heading between declarations

/^[ \t]*\/\*/ {
    text = read_comment($0)
    if (!has_file_comment) {
        print "/** @file\n" text "*/"
        has_file_comment = 1
        next
    }
    documentation = "/**" text "*/\n"
    emit_comment()
    waits = 1
    next
}

/^[ \t]*$/ {
    documentation = ""
    waits = 0
    print
    next
}

# A declaration behind another one, with the comment of both before them.
documentation != "" && !waits && depth == 0 && !inside { emit_comment() }

{
    line = $0
    if (match(line, /\/\*/)) {
        behind = substr(line, RSTART)
        printf "%s", substr(line, 1, RSTART - 1)
        print "/**<" read_comment(behind) "*/"
        line = substr(line, 1, RSTART - 1)
    } else {
        print line
    }
    waits = 0
    depth += gsub(/{/, "{", line) - gsub(/}/, "}", line)
    inside = line !~ /;[ \t]*$/ && line !~ /}[ \t]*$/ && line !~ /^#/
}
