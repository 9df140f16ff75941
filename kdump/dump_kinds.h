// The table of dump kinds: what each run sends, and the fixed numbers its log lines carry.
#ifndef CLOUDAGENT_KDUMP_DUMP_KINDS_H
#define CLOUDAGENT_KDUMP_DUMP_KINDS_H

// When a staging command runs.
enum class Staging { kNone, kBeforeRequest, kAfterRequest };

// The numbers of a file's log lines; 0: there is no such line.
struct FileSites {
    int request_failed = 0;
    int marker_removed = 0;  // after the failed request
    int requested = 0;
    int upload_failed = 0;
    int removed = 0;
    int early = 0;    // a "finish" line before the staging
    int body = 0;     // shows the request body
    int command = 0;  // shows the staging command
};

// One file of a kind. A "%s" in staging_command or json_name stands for the program's second
// argument.
struct DumpFile {
    const char *source = nullptr;  // the step is skipped when it is absent; null: not tested
    Staging staging = Staging::kNone;
    const char *staging_command = nullptr;
    const char *json_name = nullptr;
    const char *uploaded = nullptr;          // null: the text of the staging command
    const char *removed = nullptr;           // on success; null: the same
    const char *named_in_failure = nullptr;  // null: the same
    int flag = 0;                            // of api_TFA_post_FILE
    FileSites sites = {};
    bool requested_names_source = false;
    bool reboots_after_upgrade = false;  // when /tmp/upgrade_finish exists
};

// The numbers of a kind's own log lines; 0: there is no such line.
struct KindSites {
    int announced = 0;
    int busy = 0;
    int marker_removed = 0;
    int marker_kept = 0;  // the marker could not be removed
    int end = 0;
};

struct DumpKind {
    const char *word = nullptr;
    const char *argument = nullptr;  // the second argument this row serves; null: any
    const char *marker = nullptr;
    KindSites sites = {};
    const DumpFile *files[2] = {};  // sent in this order under one marker; null: none
};

// The first row that serves word and argument, or null for an unknown word.
const DumpKind *find_dump_kind(const char *word, const char *argument) noexcept;

#endif
