# The checks of script/lint that read files as text.
# shellcheck shell=bash

# Tables may be longer: they read better in one piece. Path patterns.
long_functions=(
    'tests/unit/json_parser/print_test.cpp'  # every rule for printing a number
    'testing/kinds.cpp'                       # every kind of dump
    'tests/faults/syscalls/faulty_calls.cpp' # every system call and its errors
    'tests/faults/memory/*_operations.cpp'     # every public operation
)

# Functions begin and end in the first column, where clang-format puts them.
long_ones() {
    awk '
        FNR == 1 { start = 0 }
        FNR == 301 { print "file " FILENAME " has more than 300 lines" }
        /^[^ \t#}].*\).*\{$/ { start = FNR }
        /^}/ && start {
            if (FNR - start >= 50)
                print "function " FILENAME ":" start " has " FNR - start + 1 " lines"
            start = 0
        }' "$@"
}

check_length() {
    local sources what place rest pattern
    mapfile -t sources < <(files '*.c' '*.cpp' '*.h' && shell_files)
    long_ones "${sources[@]}" | while read -r what place rest; do
        for pattern in "${long_functions[@]}"; do
            # shellcheck disable=SC2053  # a pattern
            [[ $what != function || ${place%:*} != $pattern ]] || continue 2
        done
        printf '%s %s %s\n' "$what" "$place" "$rest"
    done | nothing
}

# Prints the conditions and loops without braces in clang-formatted files.
unbraced_bodies() {
    awk '
        FNR == 1 { open = 0 }
        /\\$/ { next } # a macro
        { line = $0; gsub(/\\./, "", line); gsub(/"[^"]*"|\047[^\047]*\047/, "", line) }
        { sub(/ *\/\/.*/, "", line) }
        line ~ /^ *(} )?else$/ { print FILENAME ":" FNR ":" $0 }
        !open && line ~ /^ *(} else )?(if|for|while) .*\(/ { open = FNR; balance = 0 }
        open {
            balance += gsub(/\(/, "(", line) - gsub(/\)/, ")", line)
            if (balance > 0)
                next
            if (line !~ /[{;]$/)
                print FILENAME ":" open ":" $0
            open = 0
        }' "$@"
}

check_style() {
    local sources
    mapfile -t sources < <(files '*.c' '*.cpp' '*.h' ':!tests' ':!testing' ':!virtual_device')
    unbraced_bodies "${sources[@]}" | nothing
}

check_subjects() {
    { git log -10 --format=%s | grep -vE '^[a-z][a-z_/., ]*: .+[^.]$' || true; } | nothing
}

# Exempt: sucess, in a log line that support knows; messag, a truncated key; statics, kOwn, Nd.
check_spelling() {
    files ':!fuzz/corpus' | xargs codespell --ignore-words-list sucess,messag,statics,kown,nd
}

# Links outside code, pictures included, to files and to anchors: headings, as usual viewers name
# them, and <a id="...">.
check_links() {
    # shellcheck disable=SC2016  # Perl's variables
    files '*.md' | xargs perl -0777 -ne '
        sub without_blocks { $_[0] =~ s/^ *```.*?^ *```$//msgr }
        sub anchors {
            open my $file, "<", $_[0] or return;
            my $text = without_blocks(join "", <$file>);
            my (@anchors, %seen) = $text =~ /<a (?:id|name)="([^"]+)/g;
            for ($text =~ /^#+ +(.*)/mg) {
                my $name = lc s/\]\([^)]*\)//gr =~ s/[^A-Za-z0-9 _-]//gr =~ tr/ /-/r;
                push @anchors, $name . ($seen{$name}++ ? "-" . ($seen{$name} - 1) : "");
            }
            return @anchors;
        }
        my $text = without_blocks($_) =~ s/^    .*//mgr =~ s/`[^`\n]*`/code/gr;
        for ($text =~ /(?|\]\(([^) ]+)|^\[[^]]+\]: *(\S+)|(?:src|srcset|href)="([^"]+))/mg) {
            next if m{^(https?://|mailto:)};
            my ($path, $anchor) = split /#/;
            $path = length $path ? $ARGV =~ s{[^/]*$}{}r . $path : $ARGV;
            if (!-e $path) {
                print "$ARGV: there is no $path\n";
            } elsif (defined $anchor && !grep { $_ eq $anchor } anchors($path)) {
                print "$ARGV: $path has no heading #$anchor\n";
            }
        }' | nothing
}
