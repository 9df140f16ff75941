#include <curl/curl.h>

#include <filesystem>
#include <optional>

#include "cloud_http_fixture.h"

namespace {

const std::vector<unsigned> kThreeSleeps(3, 10);

class UploadRetryTest : public UploadTest {
  protected:
    std::string failed(int flag, size_t size = 5) const {
        return begin_log(size, flag) + kRefusedLog;
    }
    std::string failed_and_retried(int flag, size_t count) const {
        std::string all;
        for (size_t i = 0; i < count; ++i) {
            all += failed(flag) + kRetryLog;
        }
        return all;
    }
    std::string succeeded(int flag, size_t size = 5) const {
        return begin_log(size, flag) + kUnlinkLog + kOkLog;
    }
    void start_cloud() {
        cloud.emplace(plain());
        answer_both(*cloud);
    }
    static Reply cut_reply() {
        Reply reply = status_reply(200, "much");
        reply.fault = {Fault::Kind::truncate, 2};
        return reply;
    }

    std::optional<ScriptedServer> cloud;
};

TEST_F(UploadRetryTest, Flag1GivesUpAfterThreeAttemptsAndSleepsAtEachCall) {
    for (size_t call = 1; call <= 2; ++call) {
        EXPECT_EQ(upload(1), CURLE_COULDNT_CONNECT);
        EXPECT_EQ(sleeps, std::vector<unsigned>(3 * call, 10));
        EXPECT_EQ(logged(), failed_and_retried(1, 2) + failed(1));
    }
    EXPECT_EQ(world::read_file(kDump), kContent);
}

TEST_F(UploadRetryTest, Flag1ReturnsTheCodeOfTheLastFailure) {
    start_cloud();
    cloud->on("PUT /put", {fault_reply(Fault::Kind::garbage),
                           fault_reply(Fault::Kind::drop_after_bytes, 5), cut_reply()});
    EXPECT_EQ(upload(1), CURLE_PARTIAL_FILE);
    EXPECT_EQ(cloud->requests().size(), 3u);
    EXPECT_EQ(sleeps, kThreeSleeps);
}

TEST_F(UploadRetryTest, Flag1StopsAtTheFirstCompletedTransfer) {
    for (const size_t after : {1u, 2u}) {
        world::write_file(kDump, kContent);
        sleeps.clear();
        on_each_sleep([&](size_t count) {
            if (count == after) {
                start_cloud();
            }
        });
        EXPECT_EQ(upload(1), 0);
        EXPECT_EQ(sleeps, std::vector<unsigned>(after, 10));
        EXPECT_EQ(logged(), failed_and_retried(1, after) + succeeded(1));
        EXPECT_EQ(cloud->requests().size(), 1u);
        cloud.reset();
    }
}

class UploadEndlessRetry : public UploadRetryTest, public testing::WithParamInterface<int> {};

TEST_P(UploadEndlessRetry, GoesOnUntilATransferCompletes) {
    constexpr size_t kFailures = 12;
    on_each_sleep([&](size_t count) {
        if (count == kFailures) {
            start_cloud();
        }
    });
    EXPECT_EQ(upload(GetParam()), 0);
    EXPECT_EQ(sleeps, std::vector<unsigned>(kFailures, 10));
    EXPECT_EQ(logged(), failed_and_retried(GetParam(), kFailures) + succeeded(GetParam()));
    EXPECT_FALSE(world::exists(kDump));
}

TEST_P(UploadEndlessRetry, EndsWhenTheFileVanishes) {
    on_each_sleep([&](size_t count) {
        if (count == 4) {
            std::filesystem::remove(kDump);
        }
    });
    EXPECT_EQ(upload(GetParam()), 1);
    EXPECT_EQ(sleeps, std::vector<unsigned>(4, 10));
    EXPECT_EQ(logged(), failed_and_retried(GetParam(), 4) + kMissingLog);
}

TEST_P(UploadEndlessRetry, ANullUrlFailsWithoutEnd) {
    EXPECT_EQ(api_TFA_post_FILE(kDump, nullptr, GetParam()), 1);
    EXPECT_EQ(sleeps.size(), 100u) << "the fixture removes the file then";
    EXPECT_EQ(count_of(logged(), "uploadUrl (null) file size 5 flag "), 100);
}

INSTANTIATE_TEST_SUITE_P(With, UploadEndlessRetry, testing::Values(2, 3, 10, -1),
                         [](const testing::TestParamInfo<int> &flag) {
                             return flag.param < 0 ? "Negative"
                                                   : "Flag" + std::to_string(flag.param);
                         });

TEST_F(UploadRetryTest, Flag1EndsWhenTheFileVanishes) {
    on_each_sleep([](size_t) { std::filesystem::remove(kDump); });
    EXPECT_EQ(upload(1), 1);
    EXPECT_EQ(logged(), failed_and_retried(1, 1) + kMissingLog);
}

TEST_F(UploadRetryTest, EachAttemptReadsTheFileAnew) {
    on_each_sleep([&](size_t count) {
        world::write_file(kDump, count == 1 ? "now ten by" : "eleven bytes");
        if (count == 2) {
            start_cloud();
        }
    });
    EXPECT_EQ(upload(2), 0);
    EXPECT_EQ(cloud->asked(), std::vector<std::string>{"PUT /put eleven bytes"});
    EXPECT_EQ(logged(), failed(2) + kRetryLog + failed(2, 10) + kRetryLog + succeeded(2, 12));
}

TEST_F(UploadRetryTest, EachAttemptIsARequestLikeTheFirst) {
    start_cloud();
    cloud->on("PUT /put", {cut_reply(), cut_reply(), cut_reply(), status_reply(200)});
    EXPECT_EQ(upload(2), 0);
    EXPECT_EQ(cloud->asked(), std::vector<std::string>(4, "PUT /put five!"));
    for (const world::Request &request : cloud->requests()) {
        EXPECT_EQ(count_of_headers(request, "Content-Type"), 1);
    }
    EXPECT_EQ(local_service->requests().size(), 4u) << "the proxy is asked for at each attempt";
}

}  // namespace
