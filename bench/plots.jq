# The plots of docs/benchmarks/, from collect.sh's document.
include "report";

def colours: ["#1f618d", "#c0392b", "#7d8c8e", "#b7950b", "#6c3483"];

def text($x; $y; $anchor; $words):
    "<text x=\"\($x)\" y=\"\($y)\" text-anchor=\"\($anchor)\">\($words)</text>\n";

def svg($height; $title; $body):
    "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"760\" height=\"\($height)\" viewBox=\"0 0 760 \($height)\""
    + " font-family=\"sans-serif\" font-size=\"12\">\n<rect width=\"760\" height=\"\($height)\" fill=\"white\"/>\n"
    + text(10; 18; "start"; $title) + $body + "</svg>";

# [{name, value}, ...] as horizontal bars.
def bars($title; $digits):
    (map(.value) | max) as $most
    | svg(40 + 24 * length; $title; to_entries | map((30 + 24 * .key) as $top
        | text(290; $top + 13; "end"; .value.name)
        + "<rect x=\"300\" y=\"\($top)\" width=\"\(.value.value / $most * 380 | fixed(1))\" height=\"18\" fill=\"\(
            colours[if .value.name | startswith("kdump") then 0 else 2 end])\"/>\n"
        + text(306 + .value.value / $most * 380 | round; $top + 13; "start"; .value.value | fixed($digits)))
        | add);

def exponents($values): [range($values | min | log10 | floor; ($values | max | log10 | ceil) + 1)];

# [{name, points: [[x, y], ...]}, ...], both axes logarithmic; y decades named as seconds are.
def lines($title; $ticks; $unit):
    . as $series
    | [.[].points[]] as $all
    | ($all | map(.[0] | log10) | [min, max]) as [$left, $right]
    | exponents($all | map(.[1])) as $decades
    | def x: ((log10 - $left) / ($right - $left) * 520 + 70) | fixed(1);
    def y: (250 - (log10 - $decades[0]) / (($decades | last) - $decades[0]) * 210) | fixed(1);
    svg(290; $title;
        ($decades | map(. as $decade | pow(10; .) | y as $y
            | "<line x1=\"70\" x2=\"590\" y1=\"\($y)\" y2=\"\($y)\" stroke=\"#dddddd\"/>\n"
            + text(64; $y; "end"; $unit[$decade | tostring] // "10^\($decade)")) | add)
        + ($ticks | to_entries | map(text(.key | tonumber | x; 270; "middle"; .value)) | add)
        + ([range($series | length)] | map(. as $i | $series[$i] | colours[$i] as $colour
            | "<polyline fill=\"none\" stroke=\"\($colour)\" stroke-width=\"2\" points=\"\(
                .points | map("\(.[0] | x),\(.[1] | y)") | join(" "))\"/>\n"
            + "<rect x=\"605\" y=\"\(36 + 20 * $i)\" width=\"12\" height=\"12\" fill=\"\($colour)\"/>\n"
            + text(622; 46 + 20 * $i; "start"; .name)) | add));

def seconds: {"-9": "1 ns", "-8": "10 ns", "-7": "100 ns", "-6": "1 µs", "-5": "10 µs", "-4": "100 µs", "-3": "1 ms",
    "-2": "10 ms", "-1": "100 ms", "0": "1 s"};

def rival_bars($title; $digits; value):
    .rivals as $rivals
    | [rival_titles | to_entries[] | {name: (.value | gsub("`"; "")), value: ($rivals[.key] | value)}]
    | bars($title; $digits);

# An operation over its arguments: bytes and seconds.
def times($name; $operation; $arguments; $bytes):
    . as $all
    | {name: $name, points: [$arguments[] | [. * $bytes, $all.nanoseconds[$operation + "\(.)"] / 1e9]]};

def growth_plot:
    [times("http_reply_write"; "reply_write/MiB:"; reply_sizes; 1048576),
     times("plain realloc"; "plain_realloc/MiB:"; reply_sizes; 1048576),
     times("JSON layer"; "layer/status/KiB:"; json_sizes[1:]; 1024),
     times("bare cJSON"; "cjson/status/KiB:"; json_sizes[1:]; 1024),
     times("hmac_sha256_hex"; "signer/bytes:"; digest_sizes; 1)]
    | lines("Time by size, processor time"; {"64": "64 B", "1024": "1 KiB", "16384": "16 KiB",
        "262144": "256 KiB", "4194304": "4 MiB", "67108864": "64 MiB"}; seconds);

def memory_plot:
    .big_upload.peak_kb_by_mib as $peaks
    | def points: [to_entries[] | [(.key | tonumber), (.value | median)]] | sort;
    [{name: "api_TFA_post_FILE", points: ($peaks.library | points)},
     {name: "curl -T", points: ($peaks.curl | points)}]
    | lines("Peak memory in KiB by the size of the upload"; [$peaks.library | keys[] | {(.): "\(.) MiB"}] | add;
        {"3": "1,000", "4": "10,000", "5": "100,000"});

def names: ["whole-run", "memory", "upload-memory", "growth"];

def draw($plot):
    if $plot == "whole-run" then rival_bars("Wall time of a whole run, ms"; 1; .wall_s | median * 1000)
    elif $plot == "memory" then rival_bars("Peak memory of a whole run, MB"; 1; .peak_kb | median * 1024 / 1e6)
    elif $plot == "upload-memory" then memory_plot
    else growth_plot end;
