#include <curl/curl.h>

#include <filesystem>
#include <optional>
#include <vector>

#include "upload_fixture.h"

namespace {

using world::Fault;

const std::vector<unsigned> kThreeSleeps(3, 10);

class UploadRetryTest : public UploadTest {
  protected:
    std::string failed(int flag, size_t size = 5) const {
        return begin_log(size, flag) + kRefusedLog;
    }
    void start_cloud() {
        cloud.emplace(plain_cloud());
        cloud->on("/put", {world::status_reply(200)});
    }
    static world::Reply cut_reply() {
        world::Reply reply = world::status_reply(200, "much");
        reply.fault = {Fault::Kind::truncate, 2};
        return reply;
    }
    static std::string times(int count, const std::string &text) {
        std::string all;
        for (int i = 0; i < count; ++i)
            all += text;
        return all;
    }

    std::optional<world::ScriptedServer> cloud;
};

TEST_F(UploadRetryTest, Flag1GivesUpAfterThreeAttemptsAndSleeps) {
    EXPECT_EQ(upload(1), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(sleeps, kThreeSleeps);
    EXPECT_EQ(console.text_without_stamps(),
              failed(1) + kRetryLog + failed(1) + kRetryLog + failed(1));
    EXPECT_EQ(world::read_file(kDump), kContent);
}

TEST_F(UploadRetryTest, Flag1StartsToCountAnewAtEachCall) {
    EXPECT_EQ(upload(1), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(upload(1), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(sleeps.size(), 6u);
}

TEST_F(UploadRetryTest, Flag1ReturnsTheCodeOfTheLastFailure) {
    start_cloud();
    cloud->on("/put", {world::fault_reply(Fault::Kind::garbage),
                       world::fault_reply(Fault::Kind::drop_after_bytes, 5), cut_reply()});
    EXPECT_EQ(upload(1), CURLE_PARTIAL_FILE);
    EXPECT_EQ(cloud->requests().size(), 3u);
    EXPECT_EQ(sleeps, kThreeSleeps);
}

TEST_F(UploadRetryTest, Flag1StopsAtTheFirstCompletedTransfer) {
    for (const size_t after : {1u, 2u}) {
        world::write_file(kDump, kContent);
        sleeps.clear();
        on_each_sleep([&](size_t count) {
            if (count == after)
                start_cloud();
        });
        console.clear();
        EXPECT_EQ(upload(1), 0);
        EXPECT_EQ(sleeps, std::vector<unsigned>(after, 10));
        EXPECT_EQ(console.text_without_stamps(),
                  times(static_cast<int>(after), failed(1) + kRetryLog) + begin_log(5, 1) +
                      kUnlinkLog + kOkLog);
        EXPECT_EQ(cloud->requests().size(), 1u);
        cloud.reset();
    }
}

class UploadEndlessRetry : public UploadRetryTest, public testing::WithParamInterface<int> {};

TEST_P(UploadEndlessRetry, GoesOnUntilATransferCompletes) {
    const int flag = GetParam();
    constexpr int kFailures = 12;
    on_each_sleep([&](size_t count) {
        if (count == kFailures)
            start_cloud();
    });
    EXPECT_EQ(upload(flag), 0);
    EXPECT_EQ(sleeps, std::vector<unsigned>(kFailures, 10));
    EXPECT_EQ(console.text_without_stamps(), times(kFailures, failed(flag) + kRetryLog) +
                                                 begin_log(5, flag) + kUnlinkLog + kOkLog);
    EXPECT_FALSE(world::exists(kDump));
}

TEST_P(UploadEndlessRetry, EndsWhenTheFileVanishes) {
    const int flag = GetParam();
    on_each_sleep([&](size_t count) {
        if (count == 4)
            std::filesystem::remove(kDump);
    });
    EXPECT_EQ(upload(flag), 1);
    EXPECT_EQ(sleeps, std::vector<unsigned>(4, 10));
    EXPECT_EQ(console.text_without_stamps(), times(4, failed(flag) + kRetryLog) + kMissingLog);
}

TEST_P(UploadEndlessRetry, ANullUrlFailsWithoutEnd) {
    on_each_sleep([](size_t count) {
        if (count == 20)
            std::filesystem::remove(kDump);
    });
    EXPECT_EQ(api_TFA_post_FILE(kDump, nullptr, GetParam()), 1);
    EXPECT_EQ(sleeps.size(), 20u);
    EXPECT_EQ(count_of(console.text_without_stamps(), "uploadUrl (null) file size 5 flag "), 20);
}

INSTANTIATE_TEST_SUITE_P(With, UploadEndlessRetry, testing::Values(2, 3, 10, -1),
                         [](const testing::TestParamInfo<int> &flag) {
                             return flag.param < 0 ? "Negative"
                                                   : "Flag" + std::to_string(flag.param);
                         });

TEST_F(UploadRetryTest, Flag1EndsWhenTheFileVanishes) {
    on_each_sleep([](size_t) { std::filesystem::remove(kDump); });
    EXPECT_EQ(upload(1), 1);
    EXPECT_EQ(console.text_without_stamps(), failed(1) + kRetryLog + kMissingLog);
}

TEST_F(UploadRetryTest, EachAttemptReadsTheFileAnew) {
    on_each_sleep([&](size_t count) {
        world::write_file(kDump, count == 1 ? "now ten by" : "eleven bytes");
        if (count == 2)
            start_cloud();
    });
    EXPECT_EQ(upload(2), 0);
    ASSERT_EQ(cloud->requests().size(), 1u);
    EXPECT_EQ(cloud->requests()[0].body, "eleven bytes");
    EXPECT_EQ(console.text_without_stamps(), failed(2) + kRetryLog + failed(2, 10) + kRetryLog +
                                                 begin_log(12, 2) + kUnlinkLog + kOkLog);
}

TEST_F(UploadRetryTest, EachAttemptIsARequestLikeTheFirst) {
    start_cloud();
    cloud->on("/put", {cut_reply(), cut_reply(), cut_reply(), world::status_reply(200)});
    EXPECT_EQ(upload(2), 0);
    const auto requests = cloud->requests();
    ASSERT_EQ(requests.size(), 4u);
    for (const world::Request &request : requests) {
        EXPECT_EQ(request.method, "PUT");
        EXPECT_EQ(request.body, kContent);
        EXPECT_EQ(count_of_headers(request, "Content-Type"), 1);
    }
    EXPECT_EQ(local_service->requests().size(), 4u) << "the proxy is asked for at each attempt";
}

}  // namespace
