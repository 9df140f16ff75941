# Ratios with their targets, Markdown tables and data for plots. The input of every function is the
# document that collect.sh prints.

def median: sort | (.[(length - 1) / 2 | floor] + .[length / 2 | floor]) / 2;

# The median quotient of two rows of numbers measured in turns.
def in_turns($a; $b): [range($a | length) | $a[.] / $b[.]] | median;

def fixed($digits):
    (. * pow(10; $digits) | round | tostring) as $all
    | (if ($all | length) > $digits then $all else ("0" * ($digits + 1 - ($all | length))) + $all end)
    | if $digits == 0 then . else .[:-$digits] + "." + .[-$digits:] end;

def megabytes: . * 1024 / 1e6 | fixed(1);

def row: "| " + join(" | ") + " |\n";
def table($heads): ($heads | row) + ($heads | map("---") | row) + (map(row) | add);

def one_line($name): .calls[$name] // {} | to_entries | map("\(.value) \(.key)") | join(", ");

def json_sizes: [0, 16, 64, 256, 1024, 4096];
def reply_sizes: [1, 4, 16, 64, 256];
def digest_sizes: [64, 256, 1024, 4096, 16384, 65536, 262144, 1048576];

# The largest ratio of two operations over several arguments.
def worst($a; $b; $arguments): .nanoseconds as $ns | [$arguments[] | $ns["\($a)\(.)"] / $ns["\($b)\(.)"]] | max;

# Growth of the time per byte from one size to a larger one: 1 is linear.
def growth($operation; $small; $large):
    .nanoseconds["\($operation)\($large)"] / .nanoseconds["\($operation)\($small)"] / ($large / $small);

def total_calls($name): [.calls[$name][]] | add;

# Each with its target: the largest value allowed.
def ratios:
    .rivals as $r
    | .big_upload as $b
    | "`curl -T`, \($b.mebibytes) MiB" as $curl
    | def turns($of; $a; $b): in_turns($r[$a][$of]; $r[$b][$of]);
    def turns($of; $b): turns($of; "device"; $b);
    def json($what): worst("layer/\($what)/KiB:"; "cjson/\($what)/KiB:"; [1024]);
    [["whole run, wall", "shell script", turns("wall_s"; "script"), 0.25],
     ["whole run, wall", "bare libcurl program", turns("wall_s"; "bare_device"), 1.05],
     ["whole run, processor time", "shell script", turns("cpu_s"; "script"), 0.25],
     ["whole run, processor time", "bare libcurl program", turns("cpu_s"; "bare_device"), 1.05],
     ["whole run, wall, shared libraries", "bare program, distribution's libcurl",
         turns("wall_s"; "release"; "bare_system"), 1.05],
     ["whole run, system calls", "bare libcurl program",
         ($r.device.system_calls | median) / ($r.bare_device.system_calls | median), 1.05],
     ["whole run, instructions", "bare libcurl program",
         $r.device.instructions / $r.bare_device.instructions, 1.05],
     ["upload, wall", $curl, in_turns($b.library.wall_s; $b.curl.wall_s), 1.03],
     ["upload, processor time", $curl, in_turns($b.library.cpu_s; $b.curl.cpu_s), 1.03],
     ["upload, peak memory", $curl, ($b.library.peak_kb | median) / ($b.curl.peak_kb | median), 0.5],
     ["upload, peak memory, most of all sizes", "least of all sizes",
         ([$b.peak_kb_by_mib.library[] | median] | max / min), 1.05],
     ["log line, logging off", "empty call", .nanoseconds.log_off / .nanoseconds.empty_call, 2],
     ["JSON, a status reply", "bare cJSON", worst("layer/status/KiB:"; "cjson/status/KiB:"; [0]), 1.5],
     ["JSON, 1 MB of status replies", "bare cJSON", json("status"), 1.5],
     ["JSON, 1 MB of numbers", "bare cJSON", json("numbers"), 1.5],
     ["JSON, 1 MB of texts", "bare cJSON", json("texts"), 1.5],
     ["JSON, growth of the time per byte from 1 to 4 MiB", "bare cJSON's growth",
         growth("layer/status/KiB:"; 1024; 4096) / growth("cjson/status/KiB:"; 1024; 4096), 1.1],
     ["reply in memory, worst of 1 to 256 MiB", "plain realloc",
         worst("reply_write/MiB:"; "plain_realloc/MiB:"; reply_sizes), 1.05],
     ["reply in memory, growth of the time per byte from 64 to 256 MiB", "plain realloc's growth",
         growth("reply_write/MiB:"; 64; 256) / growth("plain_realloc/MiB:"; 64; 256), 1.1],
     ["signature, worst of 64 B to 1 MiB", "OpenSSL's HMAC",
         worst("signer/bytes:"; "openssl_hmac/bytes:"; digest_sizes), 1.05],
     ["state file read, system calls", "fopen, fscanf, fclose",
         total_calls("getter") / total_calls("plain_read"), 1],
     ["state file written, system calls", "fopen, fprintf, fsync, fclose",
         total_calls("setter") / total_calls("plain_write"), 1]]
    | map({subject: .[0], against: .[1], value: .[2], most: .[3]});

def glance:
    ratios | map([.subject, .against, (.value | fixed(2)), "≤ \(.most)",
        if .value <= .most then "met" else "**short**" end])
    | table(["measured", "against", "ratio", "target", ""]);

def rival_titles:
    {device: "`kdump` of preset `device`", bare_device: "bare program on the same static libcurl",
     release: "`kdump` of preset `release`, shared libraries",
     bare_system: "bare program on the distribution's libcurl", script: "shell script, curl and jq"};

def whole_run:
    .rivals as $rivals
    | [rival_titles | to_entries[] | .value as $title | $rivals[.key]
        | [$title, (.wall_s | median * 1000 | fixed(1)), (.cpu_s | median * 1000 | fixed(1)),
           (.peak_kb | median | megabytes), (.disk_kb | megabytes), (.system_calls | median | fixed(0)),
           (.instructions / 1e6 | fixed(1))]]
    | table(["", "wall, ms", "processor, ms", "peak memory, MB",
        "on disk without libc, MB", "system calls", "million instructions"]);

def uploads:
    .big_upload as $b
    | ([["`api_TFA_post_FILE`", "library"], ["`curl -T`", "curl"]] | map(. as [$title, $who] | $b[$who]
        | [$title, (.wall_s | median | fixed(3)), (.cpu_s | median | fixed(3)),
           (.peak_kb | median | fixed(0))])
        | table(["\($b.mebibytes) MiB", "wall, s", "processor, s", "peak memory, KiB"]))
    + "\n"
    + ([["`api_TFA_post_FILE`", "library"], ["`curl -T`", "curl"]] | map(. as [$title, $who]
        | $b.peak_kb_by_mib[$who] | [$title] + [to_entries | sort_by(.key | tonumber)[] | .value | median | fixed(0)])
        | table(["peak memory in KiB by size"]
            + ($b.peak_kb_by_mib.library | keys | sort_by(tonumber) | map(. + " MiB"))));

def microseconds($name): .nanoseconds[$name] / 1000 | if . < 10 then fixed(2) else fixed(0) end;

# One line per argument: its title, both operations, their quotient.
def beside($a; $b; $head; $titles):
    . as $all
    | [$titles | to_entries[] | .key as $key | [.value, ($all | microseconds($a + $key)),
        ($all | microseconds($b + $key)), ($all | worst($a; $b; [$key]) | fixed(2))]]
    | table($head + ["ratio"]);

def sized($sizes; $unit): [$sizes[] | {("\(.)"): "\(.) \($unit)"}] | add;

def json: beside("layer/"; "cjson/"; ["parse and print", "the layer, µs", "bare cJSON, µs"];
    {"status/KiB:0": "a status reply"}
    + ([json_sizes[1:][] | {("status/KiB:\(.)"): "\(.) KiB of status replies"}] | add)
    + {"numbers/KiB:1024": "1024 KiB of numbers", "texts/KiB:1024": "1024 KiB of texts of 200 bytes"});

def replies: beside("reply_write/MiB:"; "plain_realloc/MiB:";
    ["64 KiB at a time up to", "`http_reply_write`, µs", "plain realloc, µs"]; sized(reply_sizes; "MiB"));

def digests: beside("signer/bytes:"; "openssl_hmac/bytes:";
    ["message", "`hmac_sha256_hex`, µs", "OpenSSL's `HMAC`, µs"]; sized(digest_sizes; "bytes"));

def operations($rows):
    . as $all
    | [$rows | to_entries[] | .key as $name
        | [.value, ($all.nanoseconds[$name] | if . < 100 then fixed(2) else fixed(0) end),
           ($all | one_line($name))]]
    | table(["", "ns", "system calls"]);

def log: operations({empty_call: "empty call", log_off: "line, logging off",
    open_write_close: "open, write and close alone", time_conversion: "time and its conversion alone",
    log_to_console: "line to the console", log_to_file: "line to the file"});

def state: operations({plain_read: "fopen, fscanf, fclose", getter: "`api_omcloud_seqno_get`",
    plain_write: "fopen, fprintf, fsync, fclose", setter: "`api_omcloud_seqno_set`"});

def machine:
    .machine | "\(.processor), \(.cores) cores; \(.system), \(.kernel); load averages at the end \(.load).\n"
    + "Versions: \([.versions | to_entries[] | "\(.key) \(.value)"] | join(", ")).\n";

# The generated parts of docs/benchmarks.md, by the names in their markers.
def parts: {glance: glance, whole_run: whole_run, uploads: uploads, json: json, replies: replies,
    digests: digests, log: log, state: state, machine: machine};

# The tables that plots.gp draws: bars without heads, then curves, two empty lines between them.
def plot_data:
    . as $all
    | def bars(value): [rival_titles | to_entries[]
        | "\"\(.value | gsub("`"; ""))\"\t\($all.rivals[.key] | value)\n"] | add;
    def curve($name; points): "\"\($name)\"\n" + ([points | "\(.[0])\t\(.[1])\n"] | add);
    def peaks($who): .big_upload.peak_kb_by_mib[$who] | to_entries | sort_by(.key | tonumber)[]
        | [.key, (.value | median)];
    def times($operation; $sizes; $bytes): $sizes[]
        | [. * $bytes, $all.nanoseconds[$operation + "\(.)"] / 1e9];
    [bars(.wall_s | median * 1000), bars(.peak_kb | median * 1024 / 1e6),
     curve("api_TFA_post_FILE"; peaks("library")), curve("curl -T"; peaks("curl")),
     curve("http_reply_write"; times("reply_write/MiB:"; reply_sizes; 1048576)),
     curve("plain realloc"; times("plain_realloc/MiB:"; reply_sizes; 1048576)),
     curve("JSON layer"; times("layer/status/KiB:"; json_sizes[1:]; 1024)),
     curve("bare cJSON"; times("cjson/status/KiB:"; json_sizes[1:]; 1024)),
     curve("hmac_sha256_hex"; times("signer/bytes:"; digest_sizes; 1))]
    | join("\n\n");

# The content of docs/benchmarks.json.
def with_ratios: . + {ratios: ratios};

# The document with the parts between their markers.
def fill($document):
    parts as $parts
    | reduce ($parts | keys[]) as $name ($document;
        "<!-- figures: \($name) -->\n" as $begin
        | "<!-- end -->" as $close
        | split($begin) as [$before, $behind]
        | if $behind == null then error("no place for \($name)") else . end
        | $before + $begin + "\n" + $parts[$name] + "\n" + $close + ($behind | split($close)[1:] | join($close)));
