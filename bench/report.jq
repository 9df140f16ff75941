# What was measured (collect.sh's document, the input of every function here) as ratios with their
# targets and as Markdown tables.

def median: sort | (.[(length - 1) / 2 | floor] + .[length / 2 | floor]) / 2;

# Of two rows of numbers measured in turns: the median of the quotients, pair by pair.
def in_turns($a; $b): [range($a | length) | $a[.] / $b[.]] | median;

def fixed($digits):
    (. * pow(10; $digits) | round | tostring) as $all
    | (if ($all | length) > $digits then $all else ("0" * ($digits + 1 - ($all | length))) + $all end)
    | if $digits == 0 then . else .[:-$digits] + "." + .[-$digits:] end;

def megabytes: . * 1024 / 1e6 | fixed(1);

def row: "| " + join(" | ") + " |\n";
def table($heads): ($heads | row) + ($heads | map("---") | row) + (map(row) | add);

def one_line($times): reduce (.calls[$times] | to_entries[]) as $call (""; . + "\($call.value) \($call.key), ")
    | .[:-2];

# {subject, against, value, most}: measured beside what, the ratio, and the most it may be.
def ratio($subject; $against; $value; $most):
    {subject: $subject, against: $against, value: $value, most: $most};

def whole_run_ratios:
    .rivals as $r
    | def walls($a; $b): in_turns($r[$a].wall_s; $r[$b].wall_s);
    def processor($a; $b): in_turns($r[$a].cpu_s; $r[$b].cpu_s);
    def medians($a; $b; $of): ($r[$a][$of] | median) / ($r[$b][$of] | median);
    [ratio("whole run, wall"; "shell script"; walls("device"; "script"); 0.25),
     ratio("whole run, wall"; "bare libcurl program"; walls("device"; "bare_device"); 1.05),
     ratio("whole run, processor time"; "shell script"; processor("device"; "script"); 0.25),
     ratio("whole run, processor time"; "bare libcurl program"; processor("device"; "bare_device"); 1.05),
     ratio("whole run, wall, shared libraries"; "bare program, distribution's libcurl";
        walls("release"; "bare_system"); 1.05),
     ratio("whole run, system calls"; "bare libcurl program";
        medians("device"; "bare_device"; "system_calls"); 1.05),
     ratio("whole run, instructions"; "bare libcurl program";
        $r.device.instructions / $r.bare_device.instructions; 1.05),
     ratio("first byte"; "bare libcurl program"; in_turns($r.device.first_byte_us;
        $r.bare_device.first_byte_us); null)];

def flatness($peaks): [$peaks[] | median] | max / min;

def upload_ratios:
    .big_upload as $b
    | "`curl -T`, \($b.mebibytes) MiB" as $against
    | [ratio("upload, wall"; $against; in_turns($b.library.wall_s; $b.curl.wall_s); 1.03),
       ratio("upload, processor time"; $against; in_turns($b.library.cpu_s; $b.curl.cpu_s); 1.03),
       ratio("upload, peak memory"; $against;
           ($b.library.peak_kb | median) / ($b.curl.peak_kb | median); 0.5),
       ratio("upload, peak memory, most of all sizes"; "least of all sizes";
           flatness($b.peak_kb_by_mib.library); 1.05)];

# The largest ratio of two operations over a row of arguments.
def worst($a; $b; $arguments): . as $all | [$arguments[] | $all.nanoseconds[$a + .] / $all.nanoseconds[$b + .]] | max;

def json_sizes: [0, 16, 64, 256, 1024, 4096];
def reply_sizes: [1, 4, 16, 64, 256];
def digest_sizes: [64, 256, 1024, 4096, 16384, 65536, 262144, 1048576];

# How the time for each byte grows from one size to a larger one: 1 is linear.
def growth($operation; $small; $large):
    (.nanoseconds[$operation + "\($large)"] / .nanoseconds[$operation + "\($small)"])
        / ($large / $small);

def total_calls($name): [.calls[$name][]] | add;

def operation_ratios:
    [ratio("log line, logging off"; "empty call"; .nanoseconds.log_off / .nanoseconds.empty_call; 2),
     ratio("JSON, a status reply"; "bare cJSON"; worst("layer/status/KiB:"; "cjson/status/KiB:"; ["0"]); 1.5),
     ratio("JSON, 1 MB of status replies"; "bare cJSON";
         worst("layer/status/KiB:"; "cjson/status/KiB:"; ["1024"]); 1.5),
     ratio("JSON, 1 MB of numbers"; "bare cJSON";
         worst("layer/numbers/KiB:"; "cjson/numbers/KiB:"; ["1024"]); 1.5),
     ratio("JSON, 1 MB of texts"; "bare cJSON";
         worst("layer/texts/KiB:"; "cjson/texts/KiB:"; ["1024"]); 1.5),
     ratio("JSON, growth of the time a byte from 1 to 4 MiB"; "bare cJSON's growth";
         growth("layer/status/KiB:"; 1024; 4096) / growth("cjson/status/KiB:"; 1024; 4096); 1.1),
     ratio("reply in memory, worst of 1 to 256 MiB"; "plain realloc";
         worst("reply_write/MiB:"; "plain_realloc/MiB:"; reply_sizes | map(tostring)); 1.05),
     ratio("reply in memory, growth of the time a byte from 64 to 256 MiB"; "plain realloc's growth";
         growth("reply_write/MiB:"; 64; 256) / growth("plain_realloc/MiB:"; 64; 256); 1.1),
     ratio("signature, worst of 64 B to 1 MiB"; "OpenSSL's HMAC";
         worst("signer/bytes:"; "openssl_hmac/bytes:"; digest_sizes | map(tostring)); 1.05),
     ratio("state file read, system calls"; "fopen, fscanf, fclose";
         total_calls("getter") / total_calls("plain_read"); 1),
     ratio("state file written, system calls"; "fopen, fprintf, fclose";
         total_calls("setter") / total_calls("plain_write"); 1)];

def ratios: whole_run_ratios + upload_ratios + operation_ratios;

def glance:
    ratios | map([.subject, .against, (.value | fixed(2))] + if .most == null then ["", ""] else
        ["≤ \(.most)", if .value <= .most then "met" else "**short**" end] end)
    | table(["measured", "beside", "ratio", "target", ""]);

def rival_titles:
    {device: "`kdump` of preset `device`", bare_device: "bare program on the same static libcurl",
     release: "`kdump` of preset `release`, shared libraries",
     bare_system: "bare program on the distribution's libcurl", script: "shell script, curl and jq"};

def whole_run:
    .rivals as $rivals
    | [rival_titles | to_entries[] | .value as $title | $rivals[.key]
        | [$title, (.wall_s | median * 1000 | fixed(1)), (.cpu_s | median * 1000 | fixed(1)),
           (.first_byte_us | median / 1000 | fixed(1)), (.peak_kb | median | megabytes),
           (.disk_kb | megabytes), (.system_calls | median | fixed(0)),
           (.instructions / 1e6 | fixed(1))]]
    | table(["", "wall, ms", "processor, ms", "first byte, ms", "peak memory, MB",
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

# One line an argument: what it is called, both operations, their quotient.
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
           if $all.calls[$name] then ($all | one_line($name)) else "" end]]
    | table(["", "ns", "system calls"]);

def log: operations({empty_call: "empty call", log_off: "line, logging off",
    open_write_close: "open, write and close alone", time_conversion: "time and its conversion alone",
    log_to_console: "line to the console", log_to_file: "line to the file"});

def state: operations({plain_read: "fopen, fscanf, fclose", getter: "`api_omcloud_seqno_get`",
    plain_write: "fopen, fprintf, fclose", setter: "`api_omcloud_seqno_set`"});

def machine:
    .machine | "\(.processor), \(.cores) cores; \(.system), \(.kernel); load averages at the end \(.load).\n"
    + "Versions: \([.versions | to_entries[] | "\(.key) \(.value)"] | join(", ")).\n";

# Every part of docs/benchmarks.md that is made here, by the name in its markers.
def parts: {glance: glance, whole_run: whole_run, uploads: uploads, json: json, replies: replies,
    digests: digests, log: log, state: state, machine: machine};

# The document of docs/benchmarks.json.
def with_ratios: . + {ratios: ratios};

# Puts the parts between their markers in a document.
def fill($document):
    parts as $parts
    | reduce ($parts | keys[]) as $name ($document;
        "<!-- figures: \($name) -->\n" as $begin
        | "<!-- end -->" as $close
        | split($begin) as [$before, $behind]
        | if $behind == null then error("no place for \($name)") else . end
        | $before + $begin + "\n" + $parts[$name] + "\n" + $close + ($behind | split($close)[1:] | join($close)));
