#include "covering_mount.h"
#include "device/system_status.h"
#include "testing/logged_test.h"

namespace {

class Memory : public LoggedTest {
  protected:
    // The figures taken from a report of that content, added to `before`.
    static std::string probe(const std::string &report, MemInfo info = {}) {
        world::write_file("/tmp/meminfo", report);
        const CoveringMount cover("/tmp/meminfo", "/proc/meminfo");
        EXPECT_EQ(sn_get_mem_info(&info), 1);
        return text(info);
    }

    static std::string text(const MemInfo &info) {
        return std::to_string(info.total_kb) + " " + std::to_string(info.used_kb) + " " +
               std::to_string(info.buffers_cached_kb);
    }
};

TEST_F(Memory, AddsEveryKindOfCache) {
    EXPECT_EQ(probe("MemTotal:         124000 kB\n"
                    "MemFree:           24000 kB\n"
                    "MemAvailable:      64000 kB\n"
                    "Buffers:            1000 kB\n"
                    "Cached:            20000 kB\n"
                    "SwapCached:          300 kB\n"
                    "Active:            50000 kB\n"
                    "SwapTotal:          7777 kB\n"
                    "SwapFree:           6666 kB\n"),
              "124000 100000 21300");
}

TEST_F(Memory, ReportsInOtherShapes) {
    const struct {
        const char *what;
        std::string report;
        MemInfo before;
        std::string figures;
    } rows[] = {
        {"third counter not zeroed",
         "MemTotal: 9 kB\nMemFree: 4 kB\nBuffers: 1 kB\n",
         {1, 2, 70},
         "9 5 71"},
        {"free ahead of total", "MemFree: 4 kB\nMemTotal: 9 kB\n", {100, 0, 0}, "9 96 0"},
        {"free ahead of total, record zeroed", "MemFree: 4 kB\n", {}, "0 4294967292 0"},
        {"empty", "", {1, 2, 3}, "1 2 3"},
        {"no digit", "MemTotal: kB\nMemFree:\nBuffers: \nCached:\n5\n", {8, 8, 8}, "0 0 8"},
        {"no digit and no line end", "MemTotal:", {8, 8, 8}, "0 8 8"},
        {"digits behind other characters", "MemTotal: about 12kB 34\n", {}, "12 0 0"},
        {"label anywhere in the line", "7 xMemTotal:12\n", {}, "12 0 0"},
        {"first label counts", "Cached: 1 Buffers: 2 MemFree: 3 MemTotal: 9\n", {}, "9 0 0"},
        {"free before buffers", "Buffers: 1 MemFree: 3\n", {9, 0, 0}, "9 6 0"},
        {"buffers before cached", "Cached: 1 Buffers: 2\n", {}, "0 0 2"},
        {"largest", "MemTotal: 4294967295 kB\n", {}, "4294967295 0 0"},
        {"sum wraps", "Cached: 4294967295 kB\n", {0, 0, 2}, "0 0 1"},
        {"letter case", "memtotal: 1\nCACHED: 1\n", {}, "0 0 0"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(probe(row.report, row.before), row.figures) << row.what;
    }
}

TEST_F(Memory, LongLinesAreReadInPiecesOf255) {
    EXPECT_EQ(probe(std::string(255, 'x') + "Cached: 7 kB\n"), "0 0 7");
    EXPECT_EQ(probe(std::string(252, 'x') + "Cached: 7 kB\n"), "0 0 0");
    EXPECT_EQ(probe(std::string(247, 'x') + "Cached: 7 kB\n"), "0 0 0") << "digit in the next";
    EXPECT_EQ(probe(std::string(246, 'x') + "Cached: 7 kB\n"), "0 0 7") << "digit in the same";
    EXPECT_EQ(probe("MemTotal: 3\n" + std::string(70000, 'x')), "3 0 0");
}

TEST_F(Memory, ReadsTheKernelsOwnReport) {
    MemInfo info = {};
    EXPECT_EQ(sn_get_mem_info(&info), 1);
    EXPECT_GT(info.total_kb, info.used_kb);
    EXPECT_GT(info.used_kb, 0u);
    EXPECT_EQ(logged(), "");
}

TEST_F(Memory, MissingReportIsLoggedAndTheRecordUntouched) {
    make_unopenable_file("/tmp/meminfo");
    const CoveringMount cover("/tmp/meminfo", "/proc/meminfo");
    MemInfo info = {1, 2, 3};
    EXPECT_EQ(sn_get_mem_info(&info), 0);
    EXPECT_EQ(text(info), "1 2 3");
    EXPECT_EQ(logged(), "/proc/meminfo can not be opened\n");
}

TEST_F(Memory, NullRecordIsAccepted) { EXPECT_EQ(sn_get_mem_info(nullptr), 1); }

}  // namespace
