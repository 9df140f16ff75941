// The log of connection failures: the outage, its record, and the local service's permission.
#include <filesystem>

#include "device/connection_fail_log.h"
#include "device_test.h"

namespace {

constexpr const char *kTimeFile = "/tmp/app/cloud_tmp/conn_fail_log_time.txt";
constexpr int kStart = 10000;

class ConnectionFailTest : public DeviceTest {
  protected:
    ConnectionFailTest() {
        set_flags(0);
        publish("cloud_fail_log", R"({"conn_fail_chk":{"createLog":true}})");
        local->on("POST /api/cloud_fail_log", {json_reply("{}")});
    }

    static void open_outage(int64_t start = kStart) {
        world::write_file(kTimeFile, std::to_string(start));
    }

    void set_up_time(int64_t seconds) { set_status(R"("upTime":)" + std::to_string(seconds)); }

    // One call at that up-time: the requests for a log that it makes.
    int requests_at(int64_t up_time) {
        set_up_time(up_time);
        const int before = log_requests();
        EXPECT_EQ(api_cloud_fail_log(), 0);
        return log_requests() - before;
    }

    // Requests for a log so far; each has an empty body.
    int log_requests() {
        int count = 0;
        for (const world::Request &request : local->requests()) {
            if (request.method == "POST") {
                ++count;
                EXPECT_EQ(request.target, "/api/cloud_fail_log");
                EXPECT_EQ(request.header("Content-Length"), "0");
                EXPECT_EQ(request.body_size, 0u);
            }
        }
        return count;
    }

    static void set_flags(uint32_t value) {
        conn_fail_logged_30m = value;
        conn_fail_logged_60m = value;
    }

    static std::string flags() {
        return std::to_string(conn_fail_logged_30m) + std::to_string(conn_fail_logged_60m);
    }
};

class ConnectionFailLog : public ConnectionFailTest {};

TEST_F(ConnectionFailLog, FirstCallOnlyOpensTheOutage) {
    set_up_time(9000000);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_EQ(world::read_file(kTimeFile), "8999500");
    EXPECT_EQ(asked(),
              (std::vector<std::string>{"GET /api/cloud_fail_log", "GET /api/system/status"}));
    EXPECT_EQ(flags(), "00");
    EXPECT_EQ(logged(), "");
}

TEST_F(ConnectionFailLog, LaterCallsLogTheUpTimeAndAskInOrder) {
    open_outage();
    set_up_time(kStart + 1801);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_EQ(logged(), "api_cloud_fail_log 1819 current_check_time = 11801\n");
    EXPECT_EQ(asked(),
              (std::vector<std::string>{"GET /api/cloud_fail_log", "GET /api/system/status",
                                        "POST /api/cloud_fail_log"}));
    EXPECT_EQ(world::read_file(kTimeFile), std::to_string(kStart)) << "the start stays";
}

TEST_F(ConnectionFailLog, LimitsAreExact) {
    const struct {
        int elapsed, requests;
        const char *flags;
    } rows[] = {
        {-10000, 0, "00"}, {0, 0, "00"},    {1800, 0, "00"},   {1801, 1, "10"},
        {3600, 1, "10"},   {3601, 1, "01"}, {100000, 1, "01"},
    };
    for (const auto &row : rows) {
        api_conn_fail_log_time_set(0);
        open_outage();
        EXPECT_EQ(requests_at(kStart + row.elapsed), row.requests) << row.elapsed;
        EXPECT_EQ(flags(), row.flags) << row.elapsed;
    }
}

TEST_F(ConnectionFailLog, EachRequestGoesOutOnce) {
    open_outage();
    const struct {
        int elapsed, requests;
    } calls[] = {{1700, 0}, {1801, 1}, {1802, 0}, {3600, 0}, {3601, 1}, {3602, 0}, {90000, 0}};
    for (const auto &call : calls) {
        EXPECT_EQ(requests_at(kStart + call.elapsed), call.requests) << call.elapsed;
    }
    EXPECT_EQ(flags(), "11");
}

TEST_F(ConnectionFailLog, WholeOutageCountsFrom500BeforeTheFirstCall) {
    EXPECT_EQ(requests_at(20000), 0);
    EXPECT_EQ(requests_at(20000 + 1300), 0);
    EXPECT_EQ(requests_at(20000 + 1301), 1);
    EXPECT_EQ(requests_at(20000 + 3100), 0);
    EXPECT_EQ(requests_at(20000 + 3101), 1);
}

TEST_F(ConnectionFailLog, ClearingStartsOver) {
    open_outage();
    EXPECT_EQ(requests_at(kStart + 3601), 1);
    EXPECT_EQ(requests_at(kStart + 3602), 0);
    EXPECT_EQ(flags(), "01") << "after the hour only the hour is sent";
    api_conn_fail_log_time_set(0);
    EXPECT_EQ(requests_at(kStart + 3602), 0) << "opens the outage";
    EXPECT_EQ(requests_at(kStart + 3602 + 1301), 1);
    EXPECT_EQ(requests_at(kStart + 3602 + 3101), 1);
}

TEST_F(ConnectionFailLog, RestartedAgentResumesFromTheFile) {
    open_outage();
    EXPECT_EQ(requests_at(kStart + 1900), 1);
    conn_fail_logged_30m = 0;  // as in a new process
    EXPECT_EQ(requests_at(kStart + 1901), 1);
    EXPECT_EQ(requests_at(kStart + 1902), 0);
}

TEST_F(ConnectionFailLog, FailedRequestIsNotRepeated) {
    open_outage();
    local->on("POST /api/cloud_fail_log",
              {world::fault_reply(world::Fault::Kind::drop_after_headers)});
    EXPECT_EQ(requests_at(kStart + 1801), 1);
    EXPECT_EQ(flags(), "10");
    EXPECT_EQ(logged(),
              "api_cloud_fail_log 1819 current_check_time = 11801\n"
              "\ncurl_http 1318 : method POST fail error 52\n\n");
    EXPECT_EQ(requests_at(kStart + 1802), 0);
    EXPECT_EQ(requests_at(kStart + 3601), 1);
    EXPECT_EQ(flags(), "11");
    EXPECT_EQ(requests_at(kStart + 3602), 0);
}

TEST_F(ConnectionFailLog, UnreadableUpTimeSendsNothing) {
    open_outage();
    set_status("");
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_EQ(logged(), "api_cloud_fail_log 1819 current_check_time = -1\n");
    local->on("GET /api/system/status", {status_reply(404)});
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_EQ(logged(),
              "\n\nsn_get_sys_up_time 1590 (null)\n\n\n"
              "api_cloud_fail_log 1819 current_check_time = -2\n");
    EXPECT_EQ(log_requests(), 0);
}

TEST_F(ConnectionFailLog, ElapsedTimeDoesNotWrap) {
    open_outage(-2147483647);
    EXPECT_EQ(requests_at(2147483647), 1);
    EXPECT_EQ(flags(), "01");
}

TEST_F(ConnectionFailLog, OnlyAReadableStopFileStopsEverything) {
    constexpr const char *kStopFile = "/mnt/data/iss_config/cloud_conn_fail_log.stop";
    world::write_file(kStopFile, "");
    set_up_time(9000000);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_FALSE(world::exists(kTimeFile));
    open_outage();
    EXPECT_EQ(requests_at(kStart + 90000), 0);
    EXPECT_TRUE(asked().empty());
    EXPECT_EQ(logged(), "");
    std::filesystem::remove(kStopFile);
    EXPECT_EQ(requests_at(kStart + 90000), 1);
    std::filesystem::create_symlink("/tmp/nowhere", kStopFile);
    EXPECT_EQ(requests_at(kStart + 1801), 1) << "it leads nowhere";
}

TEST_F(ConnectionFailLog, LocalServicesNoSuppressesEverything) {
    publish("cloud_fail_log", R"({"conn_fail_chk":{"createLog":false}})");
    set_up_time(9000000);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_FALSE(world::exists(kTimeFile));
    open_outage();
    EXPECT_EQ(requests_at(kStart + 3601), 0);
    EXPECT_EQ(asked(), std::vector<std::string>(2, "GET /api/cloud_fail_log"));
    EXPECT_EQ(flags(), "00");
    EXPECT_EQ(logged(), "");
}

TEST_F(ConnectionFailLog, UncreatableRecordIsStillZero) {
    std::filesystem::remove_all("/tmp/app/cloud_tmp");
    set_up_time(9000000);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_EQ(logged(), "");
}

class OutageRecord : public ConnectionFailTest {};

TEST_F(OutageRecord, HoldsTheUpTimeLess500) {
    const std::pair<const char *, const char *> rows[] = {
        {R"("upTime":300)", "0"},    {R"("upTime":500)", "0"},
        {R"("upTime":501)", "1"},    {R"("upTime":4000)", "3500"},
        {R"("upTime":0)", "0"},      {R"("upTime":-9)", "0"},
        {R"("upTime":"4000")", "0"}, {"", "0"},
    };
    for (const auto &[members, content] : rows) {
        set_status(members);
        EXPECT_EQ(api_conn_fail_log_time_set(1), 0);
        EXPECT_EQ(world::read_file(kTimeFile), content) << members;
    }
    EXPECT_EQ(logged(), "");
    local.reset();
    world::write_file(kTimeFile, "a longer old content");
    EXPECT_EQ(api_conn_fail_log_time_set(1), 0);
    EXPECT_EQ(world::read_file(kTimeFile), "0") << "without a local service";
}

TEST_F(OutageRecord, AnyValueButZeroOpensItAndLeavesTheFlags) {
    set_flags(1);
    set_up_time(1500);
    for (const uint32_t start : {1u, 2u, 77777u, 0xFFFFFFFFu}) {
        EXPECT_EQ(api_conn_fail_log_time_set(start), 0);
        EXPECT_EQ(world::read_file(kTimeFile), "1000") << start;
    }
    EXPECT_EQ(flags(), "11");
}

TEST_F(OutageRecord, UncreatableFileFailsBeforeTheUpTimeIsAsked) {
    std::filesystem::create_directory(kTimeFile);
    EXPECT_EQ(api_conn_fail_log_time_set(1), -1);
    EXPECT_TRUE(asked().empty());
}

TEST_F(OutageRecord, ZeroClearsFileAndFlags) {
    world::write_file(kTimeFile, "1000");
    for (int call = 1; call <= 2; ++call) {
        set_flags(1);
        EXPECT_EQ(api_conn_fail_log_time_set(0), 0);
        EXPECT_FALSE(world::exists(kTimeFile));
        EXPECT_EQ(flags(), "00");
    }
    EXPECT_TRUE(asked().empty());
}

TEST_F(OutageRecord, IsReadBack) {
    const std::pair<const char *, int32_t> rows[] = {{"1000", 1000},     {"0", 0},      {"-5", -5},
                                                     {" \n42 7", 42},    {"12abc", 12}, {"", 1234},
                                                     {"no number", 1234}};
    int32_t value = 1234;
    EXPECT_EQ(api_conn_fail_log_time_get(&value), -1) << "without a record";
    EXPECT_EQ(value, 1234);
    for (const auto &[content, expected] : rows) {
        world::write_file(kTimeFile, content);
        value = 1234;
        EXPECT_EQ(api_conn_fail_log_time_get(&value), 0) << content;
        EXPECT_EQ(value, expected) << content;
    }
    EXPECT_EQ(api_conn_fail_log_time_get(nullptr), 0);
}

class FailLogCheck : public ConnectionFailTest {};

TEST_F(FailLogCheck, OnlyAnExplicitFalseForbids) {
    const std::pair<std::string, int> rows[] = {
        {R"("createLog":true)", 0},
        {R"("createLog":false)", -1},
        {R"("createLog":"false")", 0},
        {R"("createLog":0)", 0},
        {R"("createLog":null)", 0},
        {R"("createLog":{})", 0},
        {"", 0},
        {R"("CREATELOG":false)", -1},
        {R"("createLog":true,"createLog":false)", 0},
    };
    for (const auto &[members, result] : rows) {
        publish("cloud_fail_log", R"({"conn_fail_chk":{)" + members + "}}");
        EXPECT_EQ(api_cloud_fail_log_check(), result) << members;
        EXPECT_EQ(logged(), "") << members;
    }
    EXPECT_EQ(asked()[0], "GET /api/cloud_fail_log");
}

TEST_F(FailLogCheck, EveryDoubtAllows) {
    local->on("GET /api/cloud_fail_log", {json_reply(R"({"conn_fail_chk":{"createLog":false}})")});
    EXPECT_EQ(api_cloud_fail_log_check(), 0) << "outside the envelope";
    EXPECT_EQ(logged(), "\n1769 : restful_res not exist\n\n");
    for_each_unusable_reply("cloud_fail_log", 1769, [&](const std::string &lines) {
        EXPECT_EQ(api_cloud_fail_log_check(), 0);
        EXPECT_EQ(logged(), lines);
    });
}

}  // namespace
