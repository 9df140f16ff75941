#include "kdump/dump_kinds.h"

#include <cstring>

#define ISS_CONFIG "/mnt/data/iss_config"
#define CURRENT_CONFIG ISS_CONFIG "/current_config"
#define MARKER(job) "/tmp/kdump_process_" job

namespace cloudagent {
namespace {

constexpr const char *kAny = nullptr;
constexpr const char *kNoCommand = nullptr;

template <class... Fields>
constexpr DumpFile file(Fields... fields) noexcept {
    return {fields...};
}

template <class... Files>
constexpr DumpKind kind(const char *word, const char *argument, const char *marker, KindIds ids,
                        Files... files) noexcept {
    return {word, argument, marker, ids, {files...}};
}

constexpr DumpKind kDumpKinds[] = {
    kind("segmentrace", kAny, MARKER("segmentrace"), {900, 903, 944, 946},
         file(ISS_CONFIG "/segmentrace.txt", "/tmp/segmentrace.txt", "cp %s %s", "segmentrace.txt",
              kUploadUntilDone, kMayBeAbsent | kCopyFirst, FileIds{916, 919, 931, 934, 939})),
    kind("dblock", kAny, MARKER("dblocktrace"), {981, 984, 1061, 1063},
         file(ISS_CONFIG "/dblock.txt", "/tmp/dblock.txt", "cp %s %s", "dblock.txt",
              kUploadUntilDone, kMayBeAbsent | kCopyFirst, FileIds{997, 1000, 1012, 1015, 1021}),
         file(ISS_CONFIG "/dblock_backup.txt", "/tmp/dblock_backup.txt", "cp %s %s",
              "dblock_backup.txt", kUploadUntilDone, kMayBeAbsent | kCopyFirst,
              FileIds{1033, 1036, 1048, 1051, 1056})),
    kind("upgradefailstate", kAny, MARKER("upgradefail_state"), {1070, 1073, 0, 0, 1112},
         file("/tmp/upgrade_fail_state_upload.txt", "/tmp/upgrade_fail_state_upload.txt",
              kNoCommand, "/tmp/upgrade_fail_state_upload.txt", kUploadUntilDone,
              kMayBeAbsent | kRequestNamesDump, FileIds{1084, 1087, 1099, 1102, 1107})),
    kind("connfaillog", kAny, MARKER("conn_fail_log"), {1120, 1123, 1165, 1167},
         file(ISS_CONFIG "/cloud_conn_fail_log.txt", "/tmp/cloud_conn_fail_log.txt", "cp %s %s",
              "cloud_conn_fail_log.txt", kUploadUntilDone, kMayBeAbsent | kCopyFirst,
              FileIds{1136, 1139, 1151, 1154, 1159})),
    kind("debugRamLog", kAny, MARKER("debug_info"), {1174, 1177, 1221, 1223},
         file("/tmp/debug_info.txt", "/tmp/debug_info.txt", kNoCommand, "/tmp/debug_info.txt",
              kUploadUntilDone, kMayBeAbsent | kRebootAfterUpgrade,
              FileIds{1189, 1192, 1204, 1207, 1212})),
    kind("watchdog", kAny, MARKER("watchdog"), {1230, 1233, 1275, 1277},
         file(CURRENT_CONFIG "/cloud_watchdog.log", "/tmp/cloud_watchdog.log", "cp -f %s %s",
              "/tmp/cloud_watchdog.log", kUploadUntilDone,
              kMayBeAbsent | kCopyFirst | kFailureNamesCopy,
              FileIds{1247, 1250, 1262, 1265, 1270, /*early=*/1239})),
    kind("RAM", "-f", MARKER("dbg_upload"), {1284, 1287, 1393, 1395},
         file("/tmp/cloud_dbg.txt", "/tmp/cloud_ram_dbg.txt", "cp -f %s %s", "cloud_ram_dbg.txt",
              kUploadThreeTimes, kFailureNamesCopy, FileIds{1297, 1300, 1312, 1319, 1324})),
    kind("RAM", kAny, MARKER("dbg_upload"), {1284, 1287, 1393, 1395},
         file("/tmp/cloud_dbg.txt", "/tmp/cloud_ram_dbg.txt", "cp -f %s %s", "cloud_ram_dbg.txt",
              kUploadOnce, kFailureNamesCopy, FileIds{1297, 1300, 1312, 1331, 1336})),
    kind("FLASH", "-f", MARKER("dbg_upload"), {1284, 1287, 1393, 1395},
         file(CURRENT_CONFIG "/cloud_dbg.txt", "/tmp/cloud_flash_dbg.txt", "cp -f %s %s",
              "cloud_flash_dbg.txt", kUploadThreeTimes, kFailureNamesCopy,
              FileIds{1347, 1350, 1362, 1369, 1374})),
    kind("FLASH", kAny, MARKER("dbg_upload"), {1284, 1287, 1393, 1395},
         file(CURRENT_CONFIG "/cloud_dbg.txt", "/tmp/cloud_flash_dbg.txt", "cp -f %s %s",
              "cloud_flash_dbg.txt", kUploadOnce, kFailureNamesCopy,
              FileIds{1347, 1350, 1362, 1381, 1386})),
    kind("CONFIG", "ALL", MARKER("all_config"), {1400, 1403, 1486, 1488},
         file("/tmp/all_config.tar.bz2", "/tmp/all_config.tar.bz2", "tar cvf %s " CURRENT_CONFIG,
              "/tmp/all_config.tar.bz2", kUploadOnce, kNoOptions,
              FileIds{1414, 1417, 1429, 1435, 1440, 0, /*body=*/1409, /*command=*/1431})),
    kind("CONFIG", "", MARKER("all_config"), {1400, 1403, 1486, 1488}),
    kind("CONFIG", kAny, MARKER("all_config"), {1400, 1403, 1486, 1488},
         file(CURRENT_CONFIG "/%s", "/tmp/%s", "cp -f %s %s", "%s", kUploadOnce, kSendsCommand,
              FileIds{1454, 1457, 1469, 1474, 1479, 0, /*body=*/1449})),
};

}  // namespace

const DumpKind *find_dump_kind(const char *word, const char *argument) noexcept {
    for (const DumpKind &kind : kDumpKinds) {
        const bool serves = kind.argument == kAny || std::strcmp(argument, kind.argument) == 0;
        if (serves && std::strcmp(word, kind.word) == 0) {
            return &kind;
        }
    }
    return nullptr;
}

}  // namespace cloudagent
