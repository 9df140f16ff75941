#include "kdump/dump_kinds.h"

#include <cstring>

#define ISS_CONFIG "/mnt/data/iss_config"
#define CURRENT_CONFIG ISS_CONFIG "/current_config"
#define MARKER(job) "/tmp/kdump_process_" job

#define UPGRADE_FAIL_STATE "/tmp/upgrade_fail_state_upload.txt"
#define DEBUG_INFO "/tmp/debug_info.txt"
#define WATCHDOG_LOG CURRENT_CONFIG "/cloud_watchdog.log"
#define STAGED_WATCHDOG_LOG "/tmp/cloud_watchdog.log"
#define ALL_CONFIG "/tmp/all_config.tar.bz2"

// The usual shapes of a file's fields up to its flag.
// A trace that is copied to /tmp under its own name; with the upload the trace itself goes.
#define COPIED_TRACE(source, name)                                                           \
    source, Staging::kBeforeRequest, "cp " source " /tmp/" name, name, "/tmp/" name, source, \
        source, kUploadUntilDone
// A file that is sent from where it lies.
#define SENT_IN_PLACE(path) path, Staging::kNone, nullptr, path, path, path, path, kUploadUntilDone
// A log that is copied only once there is a URL to send it to.
#define LATE_COPY(source, name)                                                                 \
    nullptr, Staging::kAfterRequest, "cp -f " source " /tmp/" name, name, "/tmp/" name, source, \
        "/tmp/" name
#define RAM_LOG LATE_COPY("/tmp/cloud_dbg.txt", "cloud_ram_dbg.txt")
#define FLASH_LOG LATE_COPY(CURRENT_CONFIG "/cloud_dbg.txt", "cloud_flash_dbg.txt")

namespace {

constexpr int kUploadOnce = 0;
constexpr int kUploadThreeTimes = 1;
constexpr int kUploadUntilDone = 2;

constexpr DumpFile segmentrace = {COPIED_TRACE(ISS_CONFIG "/segmentrace.txt", "segmentrace.txt"),
                                  {916, 919, 931, 934, 939}};

constexpr DumpFile dblock = {COPIED_TRACE(ISS_CONFIG "/dblock.txt", "dblock.txt"),
                             {997, 1000, 1012, 1015, 1021}};

constexpr DumpFile dblock_backup = {
    COPIED_TRACE(ISS_CONFIG "/dblock_backup.txt", "dblock_backup.txt"),
    {1033, 1036, 1048, 1051, 1056}};

constexpr DumpFile upgrade_fail_state = {SENT_IN_PLACE(UPGRADE_FAIL_STATE),
                                         {1084, 1087, 1099, 1102, 1107},
                                         /*requested_names_source=*/true};

constexpr DumpFile conn_fail_log = {
    COPIED_TRACE(ISS_CONFIG "/cloud_conn_fail_log.txt", "cloud_conn_fail_log.txt"),
    {1136, 1139, 1151, 1154, 1159}};

constexpr DumpFile debug_info = {SENT_IN_PLACE(DEBUG_INFO),
                                 {1189, 1192, 1204, 1207, 1212},
                                 /*requested_names_source=*/false,
                                 /*reboots_after_upgrade=*/true};

constexpr DumpFile watchdog_log = {
    WATCHDOG_LOG,        Staging::kBeforeRequest, "cp -f " WATCHDOG_LOG " " STAGED_WATCHDOG_LOG,
    STAGED_WATCHDOG_LOG, STAGED_WATCHDOG_LOG,     WATCHDOG_LOG,
    STAGED_WATCHDOG_LOG, kUploadUntilDone,        {1247, 1250, 1262, 1265, 1270, /*early=*/1239}};

constexpr DumpFile ram_log_forced = {RAM_LOG, kUploadThreeTimes, {1297, 1300, 1312, 1319, 1324}};
constexpr DumpFile ram_log_plain = {RAM_LOG, kUploadOnce, {1297, 1300, 1312, 1331, 1336}};
constexpr DumpFile flash_log_forced = {
    FLASH_LOG, kUploadThreeTimes, {1347, 1350, 1362, 1369, 1374}};
constexpr DumpFile flash_log_plain = {FLASH_LOG, kUploadOnce, {1347, 1350, 1362, 1381, 1386}};

constexpr DumpFile all_config = {
    nullptr,
    Staging::kAfterRequest,
    "tar cvf " ALL_CONFIG " " CURRENT_CONFIG,
    ALL_CONFIG,
    ALL_CONFIG,
    ALL_CONFIG,
    ALL_CONFIG,
    kUploadOnce,
    {1414, 1417, 1429, 1435, 1440, /*early=*/0, /*body=*/1409, /*command=*/1431}};

// The upload is handed the text of the copy command, not the copy: nothing is sent, the copy stays.
constexpr DumpFile one_config = {nullptr,
                                 Staging::kAfterRequest,
                                 "cp -f " CURRENT_CONFIG "/%s /tmp/%s",
                                 "%s",
                                 nullptr,
                                 nullptr,
                                 nullptr,
                                 kUploadOnce,
                                 {1454, 1457, 1469, 1474, 1479, /*early=*/0, /*body=*/1449}};

constexpr KindSites kDebugLogSites = {1284, 1287, 1393, 0, 1395};
constexpr KindSites kConfigSites = {1400, 1403, 1486, 0, 1488};

constexpr DumpKind kDumpKinds[] = {
    {"segmentrace", nullptr, MARKER("segmentrace"), {900, 903, 944, 0, 946}, {&segmentrace}},
    {"dblock",
     nullptr,
     MARKER("dblocktrace"),
     {981, 984, 1061, 0, 1063},
     {&dblock, &dblock_backup}},
    {"upgradefailstate",
     nullptr,
     MARKER("upgradefail_state"),
     {1070, 1073, 0, /*marker_kept=*/1112, 0},
     {&upgrade_fail_state}},
    {"connfaillog",
     nullptr,
     MARKER("conn_fail_log"),
     {1120, 1123, 1165, 0, 1167},
     {&conn_fail_log}},
    {"debugRamLog", nullptr, MARKER("debug_info"), {1174, 1177, 1221, 0, 1223}, {&debug_info}},
    {"watchdog", nullptr, MARKER("watchdog"), {1230, 1233, 1275, 0, 1277}, {&watchdog_log}},
    {"RAM", "-f", MARKER("dbg_upload"), kDebugLogSites, {&ram_log_forced}},
    {"RAM", nullptr, MARKER("dbg_upload"), kDebugLogSites, {&ram_log_plain}},
    {"FLASH", "-f", MARKER("dbg_upload"), kDebugLogSites, {&flash_log_forced}},
    {"FLASH", nullptr, MARKER("dbg_upload"), kDebugLogSites, {&flash_log_plain}},
    {"CONFIG", "ALL", MARKER("all_config"), kConfigSites, {&all_config}},
    {"CONFIG", "", MARKER("all_config"), kConfigSites, {}},
    {"CONFIG", nullptr, MARKER("all_config"), kConfigSites, {&one_config}},
};

bool serves(const DumpKind &kind, const char *word, const char *argument) noexcept {
    return std::strcmp(word, kind.word) == 0 &&
           (kind.argument == nullptr || std::strcmp(argument, kind.argument) == 0);
}

}  // namespace

const DumpKind *find_dump_kind(const char *word, const char *argument) noexcept {
    for (const DumpKind &kind : kDumpKinds) {
        if (serves(kind, word, argument)) {
            return &kind;
        }
    }
    return nullptr;
}
