# A table of docs/log-reference.md from docs/log-lines.json: the lines of group $part, or, where $part
# is "kind" or "file", the log ids of the lines that come once for each of those.
def row: "| " + join(" | ") + " |";
def table: .[0], (.[0] | map("---")), .[1:][] | row;
def first_of_each: reduce .[] as $one ([]; if index([$one]) then . else . + [$one] end);

def ids:
    (map(.name) | first_of_each) as $names
    | (map(.numbers | keys_unsorted) | max_by(length)) as $keys
    | [["", $names[]]] + [$keys[] as $key
        | [$key] + [$names[] as $name | [.[] | select(.name == $name).numbers[$key] // empty][0] // "" | tostring]]
    | table;

def lines:
    [[if any(.name) then "Line" else "Log id" end, "Function", "Text", "When", "Meaning", "Next"]]
    + map([.name // .number // "" | tostring] + [.function, "`" + (.text | tojson[1:-1]) + "`"]
        + [.when + (if .value then " (`\(.value)`)" else "" end)]
        + [.meaning, if .next == "" then "None." else .next end])
    | table;

.lines | if $part | IN("kind", "file") then map(select(.per == $part)) | ids
    else map(select(.group == $part)) | lines end
