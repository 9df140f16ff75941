// The system status: up-time, MAC address and memory.
#include "device/system_status.h"

#include <cstring>

#include "covering_mount.h"
#include "device_test.h"
#include "state/device_identity.h"

namespace {

class UpTime : public DeviceTest {
  protected:
    void expect_result(int32_t expected) {
        int32_t up_time = 12345;
        EXPECT_EQ(sn_get_sys_up_time(&up_time), 0);
        EXPECT_EQ(up_time, expected);
    }
};

TEST_F(UpTime, IsTheNumberOrMinusOne) {
    const std::pair<const char *, int32_t> rows[] = {
        {R"("upTime":1234)", 1234},
        {R"("upTime":0)", 0},
        {R"("upTime":-7)", -7},
        {R"("upTime":80.9)", 80},
        {R"("upTime":2147483647)", 2147483647},
        {"", -1},
        {R"("upTime":"1234")", -1},
        {R"("upTime":true)", -1},
        {R"("upTime":null)", -1},
        {R"("upTime":{"upTime":5})", -1},
    };
    for (const auto &[members, up_time] : rows) {
        SCOPED_TRACE(members);
        set_status(members);
        expect_result(up_time);
    }
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(asked()[0], "GET /api/system/status");
    EXPECT_EQ(sn_get_sys_up_time(nullptr), 0);
}

TEST_F(UpTime, UnusableStatusIsMinusTwoAndLogged) {
    for_each_unusable_reply("system/status", 1588, [&](const std::string &lines) {
        expect_result(-2);
        EXPECT_EQ(logged(), lines + "\n\nsn_get_sys_up_time 1590 (null)\n\n\n");
    });
}

class MacAddress : public DeviceTest {
  protected:
    MacAddress() { fill('#'); }
    ~MacAddress() override { fill('\0'); }

    static void fill(char byte) {
        std::memset(sys_mac_addr, byte, sizeof sys_mac_addr);
        std::memset(sys_mac_addr_compact, byte, sizeof sys_mac_addr_compact);
    }

    static std::string whole(const char (&buffer)[32]) { return std::string(buffer, 32); }
    static std::string padded(const std::string &text) {
        return text + std::string(32 - text.size(), '\0');
    }
};

TEST_F(MacAddress, FillsBothTextsToTheirLastByte) {
    const std::string longest(31, 'a');
    const struct {
        std::string reported, plain, compact;
    } rows[] = {
        {"88:dc:96:01:02:03", "88:dc:96:01:02:03", "88dc96010203"},
        {"aa::bb", "aa::bb", "aabb"},
        {"::aa:", "::aa:", "aa"},
        {":", ":", ""},
        {"", "", ""},
        {"88-dc-96-01-02-03", "88-dc-96-01-02-03", "88-dc-96-01-02-03"},
        {"88DC96010203", "88DC96010203", "88DC96010203"},
        {"%s%n:%d", "%s%n:%d", "%s%n%d"},
        {longest, longest, longest},
        {longest + "b", longest, longest},
        {longest + std::string(300, 'b'), longest, longest},
    };
    for (const auto &row : rows) {
        fill('#');
        set_status(R"("macAddr":")" + row.reported + "\"");
        EXPECT_EQ(sn_get_mac_addr(), 0) << row.reported;
        EXPECT_EQ(whole(sys_mac_addr), padded(row.plain));
        EXPECT_EQ(whole(sys_mac_addr_compact), padded(row.compact));
    }
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(asked()[0], "GET /api/system/status");
}

TEST_F(MacAddress, OverlongAddressWithColonsIsCutInEachText) {
    std::string reported;
    for (int pair = 10; pair < 30; ++pair) {
        reported += std::to_string(pair) + ":";
    }
    set_status(R"("macAddr":")" + reported + "\"");
    EXPECT_EQ(sn_get_mac_addr(), 0);
    EXPECT_EQ(whole(sys_mac_addr), padded(reported.substr(0, 31)));
    EXPECT_EQ(std::strlen(sys_mac_addr_compact), strnlen(sys_mac_addr_compact, 31));
    EXPECT_EQ(std::string(sys_mac_addr_compact).substr(0, 20), "10111213141516171819");
}

TEST_F(MacAddress, UnusableStatusLeavesBothTextsAsTheyWere) {
    for (const char *members : {"", R"("macAddr":123)", R"("macAddr":null)"}) {
        set_status(members);
        EXPECT_EQ(sn_get_mac_addr(), -1) << members;
        EXPECT_EQ(logged(), "") << members;
    }
    for_each_unusable_reply("system/status", 1455, [&](const std::string &lines) {
        EXPECT_EQ(sn_get_mac_addr(), -1);
        EXPECT_EQ(logged(), lines);
    });
    EXPECT_EQ(whole(sys_mac_addr), std::string(32, '#'));
    EXPECT_EQ(whole(sys_mac_addr_compact), std::string(32, '#'));
}

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
        {"decimal", "MemTotal: 010 kB\nCached: 0x10 kB\n", {}, "10 0 0"},
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
    EXPECT_EQ(sn_get_mem_info(nullptr), 1) << "without a record";
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

}  // namespace
