// The outage from its first call to its second hour.
#include <filesystem>

#include "connection_fail_test.h"

namespace {

class ConnectionFailLog : public ConnectionFailTest {
  protected:
    static constexpr int kStart = 10000;

    static void open_outage(int64_t start = kStart) {
        world::write_file(kTimeFile, std::to_string(start));
    }
};

TEST_F(ConnectionFailLog, FirstCallOnlyOpensTheOutage) {
    set_up_time(9000000);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_EQ(world::read_file(kTimeFile), "8999500");
    EXPECT_EQ(asked(),
              (std::vector<std::string>{"GET /api/cloud_fail_log", "GET /api/system/status"}));
    EXPECT_EQ(flags(), "00");
    EXPECT_EQ(logged(), "");
}

TEST_F(ConnectionFailLog, FirstCallAt300WritesZero) {
    set_up_time(300);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_EQ(world::read_file(kTimeFile), "0");
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

TEST_F(ConnectionFailLog, AfterTheHourOnlyTheHourIsSent) {
    open_outage();
    EXPECT_EQ(requests_at(kStart + 3601), 1);
    EXPECT_EQ(requests_at(kStart + 3700), 0);
    EXPECT_EQ(flags(), "01");
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
    local->on("GET /api/system/status", {world::status_reply(404)});
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

TEST_F(ConnectionFailLog, StopFileStopsEverything) {
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
}

TEST_F(ConnectionFailLog, UnreadableStopFileDoesNotCount) {
    std::filesystem::create_symlink("/tmp/nowhere", kStopFile);
    open_outage();
    EXPECT_EQ(requests_at(kStart + 1801), 1);
}

TEST_F(ConnectionFailLog, LocalServicesNoSuppressesEverything) {
    local->on("GET /api/cloud_fail_log", {world::json_reply(kForbid)});
    set_up_time(9000000);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_FALSE(world::exists(kTimeFile));
    open_outage();
    EXPECT_EQ(requests_at(kStart + 3601), 0);
    EXPECT_EQ(asked(), std::vector<std::string>(2, "GET /api/cloud_fail_log"));
    EXPECT_EQ(flags(), "00");
    EXPECT_EQ(logged(), "");
}

TEST_F(ConnectionFailLog, StringFalseSuppressesNothing) {
    local->on("GET /api/cloud_fail_log",
              {world::json_reply(R"({"restful_res":{"conn_fail_chk":{"createLog":"false"}}})")});
    open_outage();
    EXPECT_EQ(requests_at(kStart + 1801), 1);
}

TEST_F(ConnectionFailLog, UncreatableRecordIsStillZero) {
    std::filesystem::remove_all("/tmp/app/cloud_tmp");
    set_up_time(9000000);
    EXPECT_EQ(api_cloud_fail_log(), 0);
    EXPECT_EQ(logged(), "");
}

}  // namespace
