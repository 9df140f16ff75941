// The outage record and the local service's say, each by itself.
#include <filesystem>

#include "connection_fail_test.h"

namespace {

class OutageRecord : public ConnectionFailTest {};

TEST_F(OutageRecord, HoldsTheUpTimeLess500) {
    const struct {
        const char *members, *content;
    } rows[] = {
        {R"("upTime":300)", "0"},    {R"("upTime":500)", "0"},
        {R"("upTime":501)", "1"},    {R"("upTime":4000)", "3500"},
        {R"("upTime":0)", "0"},      {R"("upTime":-9)", "0"},
        {R"("upTime":"4000")", "0"}, {"", "0"},
    };
    for (const auto &row : rows) {
        set_status(row.members);
        EXPECT_EQ(api_conn_fail_log_time_set(1), 0);
        EXPECT_EQ(world::read_file(kTimeFile), row.content) << row.members;
    }
    EXPECT_EQ(logged(), "");
}

TEST_F(OutageRecord, AnyValueButZeroOpensIt) {
    for (const uint32_t start : {1u, 2u, 77777u, 0xFFFFFFFFu}) {
        set_up_time(1500);
        EXPECT_EQ(api_conn_fail_log_time_set(start), 0);
        EXPECT_EQ(world::read_file(kTimeFile), "1000") << start;
    }
}

TEST_F(OutageRecord, UnreadableUpTimeGivesZero) {
    local.reset();
    world::write_file(kTimeFile, "a longer old content");
    EXPECT_EQ(api_conn_fail_log_time_set(1), 0);
    EXPECT_EQ(world::read_file(kTimeFile), "0");
}

TEST_F(OutageRecord, OpeningLeavesTheFlags) {
    conn_fail_logged_30m = 1;
    conn_fail_logged_60m = 1;
    set_up_time(1500);
    api_conn_fail_log_time_set(1);
    EXPECT_EQ(flags(), "11");
}

TEST_F(OutageRecord, UncreatableFileFailsBeforeTheUpTimeIsAsked) {
    std::filesystem::create_directory(kTimeFile);
    EXPECT_EQ(api_conn_fail_log_time_set(1), -1);
    EXPECT_TRUE(asked().empty());
}

TEST_F(OutageRecord, ZeroClearsFileAndFlags) {
    for (const bool there : {true, false}) {
        if (there) {
            world::write_file(kTimeFile, "1000");
        }
        conn_fail_logged_30m = 1;
        conn_fail_logged_60m = 1;
        EXPECT_EQ(api_conn_fail_log_time_set(0), 0);
        EXPECT_FALSE(world::exists(kTimeFile));
        EXPECT_EQ(flags(), "00");
    }
    EXPECT_TRUE(asked().empty());
}

TEST_F(OutageRecord, IsReadBack) {
    const struct {
        const char *content;
        int32_t value;
    } rows[] = {{"1000", 1000}, {"0", 0},   {"-5", -5},         {" \n42 7", 42},
                {"12abc", 12},  {"", 1234}, {"no number", 1234}};
    for (const auto &row : rows) {
        world::write_file(kTimeFile, row.content);
        int32_t value = 1234;
        EXPECT_EQ(api_conn_fail_log_time_get(&value), 0) << row.content;
        EXPECT_EQ(value, row.value) << row.content;
    }
    EXPECT_EQ(api_conn_fail_log_time_get(nullptr), 0);
}

TEST_F(OutageRecord, MissingRecordIsAFailure) {
    int32_t value = 1234;
    EXPECT_EQ(api_conn_fail_log_time_get(&value), -1);
    EXPECT_EQ(value, 1234);
}

class FailLogCheck : public ConnectionFailTest {};

TEST_F(FailLogCheck, OnlyAnExplicitFalseForbids) {
    const struct {
        const char *members;
        int result;
    } rows[] = {
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
    for (const auto &row : rows) {
        local->on("GET /api/cloud_fail_log",
                  {world::json_reply(std::string(R"({"restful_res":{"conn_fail_chk":{)") +
                                     row.members + "}}}")});
        EXPECT_EQ(api_cloud_fail_log_check(), row.result) << row.members;
        EXPECT_EQ(logged(), "") << row.members;
    }
    EXPECT_EQ(asked()[0], "GET /api/cloud_fail_log");
}

TEST_F(FailLogCheck, EveryDoubtAllows) {
    for (const UnusableReply &row : unusable_replies(1769)) {
        local->on("GET /api/cloud_fail_log", {row.reply});
        EXPECT_EQ(api_cloud_fail_log_check(), 0) << row.what;
        EXPECT_EQ(logged(), row.logged) << row.what;
    }
    local->on("GET /api/cloud_fail_log",
              {world::json_reply(R"({"conn_fail_chk":{"createLog":false}})")});
    EXPECT_EQ(api_cloud_fail_log_check(), 0) << "outside the envelope";
    local.reset();
    EXPECT_EQ(api_cloud_fail_log_check(), 0) << "down";
}

}  // namespace
