// The table of dump kinds: which files a run sends, and the log ids of its lines.
#pragma once

namespace cloudagent {

// The third argument of api_TFA_post_FILE.
enum UploadFlag { kUploadOnce = 0, kUploadThreeTimes = 1, kUploadUntilDone = 2 };

// Options of a file; combined with "|".
enum FileOption : unsigned {
    kNoOptions = 0,
    kMayBeAbsent = 1,          // without the dump the file is skipped
    kCopyFirst = 2,            // the command runs before the URL request, not after it
    kFailureNamesCopy = 4,     // the log line of a failed upload names the copy, not the dump
    kRequestNamesDump = 8,     // the log line of a granted URL request names the dump
    kRebootAfterUpgrade = 16,  // reboots once the dump is sent, if /tmp/upgrade_finish exists
    kSendsCommand = 32         // intentional quirk: the upload takes the command for both paths
};

// The log ids of a file's lines; 0: no such line.
struct FileIds {
    int request_failed = 0;
    int marker_removed = 0;  // after the failed request
    int requested = 0;
    int upload_failed = 0;
    int removed = 0;
    int early = 0;    // a "finish" line before the copy
    int body = 0;     // shows the request body
    int command = 0;  // shows the command
};

// One file. In dump, copy and name, "%s" stands for the program's second argument.
struct DumpFile {
    const char *dump = nullptr;     // removed after its upload
    const char *copy = nullptr;     // uploaded; without a command, the dump itself
    const char *command = nullptr;  // makes the copy: "%s" stands for dump, then copy; null: none
    const char *name = nullptr;     // given in the URL request; null: no file
    UploadFlag flag = kUploadOnce;
    unsigned options = kNoOptions;
    FileIds ids = {};
};

// The log ids of a kind's own lines; 0: no such line.
struct KindIds {
    int announced = 0;
    int busy = 0;
    int marker_removed = 0;
    int end = 0;
    int marker_kept = 0;  // the marker could not be removed
};

struct DumpKind {
    const char *word = nullptr;
    const char *argument = nullptr;  // the program's second argument; null: any
    const char *marker = nullptr;
    KindIds ids = {};
    DumpFile files[2] = {};  // sent in this order under one marker
};

// The first row for word and argument; null for an unknown word.
const DumpKind *find_dump_kind(const char *word, const char *argument) noexcept;

}  // namespace cloudagent
