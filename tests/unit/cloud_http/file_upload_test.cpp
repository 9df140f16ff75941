#include <curl/curl.h>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

#include "cloud_http_fixture.h"

namespace {

using testing::EndsWith;

class FileUploadTest : public UploadTest {
  protected:
    FileUploadTest() { cloud.on("/put", {status_reply(200, "stored")}); }

    ScriptedServer cloud{plain()};
};

TEST_F(FileUploadTest, PutsTheFileAndRemovesIt) {
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(cloud.asked(), std::vector<std::string>{"PUT /put five!"});
    const auto request = cloud.requests().at(0);
    EXPECT_EQ(request.header("Content-Length"), "5");
    EXPECT_EQ(request.header("Content-Type"), "application/octet-stream");
    EXPECT_EQ(count_of_headers(request, "Content-Type"), 1);
    EXPECT_FALSE(world::exists(kDump));
    EXPECT_EQ(logged(), begin_log(5, 0) + kUnlinkLog + kOkLog);
    EXPECT_TRUE(sleeps.empty());
}

TEST_F(FileUploadTest, PutsAnEmptyFile) {
    world::write_file(kDump, "");
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(cloud.asked(), std::vector<std::string>{"PUT /put"});
    EXPECT_EQ(cloud.requests().at(0).header("Content-Length"), "0");
    EXPECT_FALSE(world::exists(kDump));
    EXPECT_EQ(logged(), begin_log(0, 0) + kUnlinkLog + kOkLog);
}

TEST_F(FileUploadTest, EveryByteArrives) {
    std::string content;
    for (uint32_t i = 0, state = 1; i < 700001; ++i, state = state * 1664525 + 1013904223) {
        content += static_cast<char>(state >> 24);
    }
    world::write_file(kDump, content);
    EXPECT_EQ(upload(2), 0);
    EXPECT_TRUE(cloud.requests().at(0).body == content);
    EXPECT_THAT(logged(), testing::StartsWith(begin_log(700001, 2)));
}

class FileUploadStatus : public FileUploadTest, public testing::WithParamInterface<int> {};

TEST_P(FileUploadStatus, OtherThan200IsReturnedAndTheFileRemoved) {
    const int status = GetParam();
    cloud.on("/put", {status_reply(status, "no")});
    for (const int flag : {0, 1, 2}) {
        world::write_file(kDump, kContent);
        EXPECT_EQ(upload(flag), status);
        EXPECT_FALSE(world::exists(kDump));
        EXPECT_EQ(logged(), begin_log(5, flag) + kUnlinkLog + "api_TFA_post_FILE 462 HTTP error " +
                                std::to_string(status) + "\n\n");
    }
    EXPECT_EQ(cloud.requests().size(), 3u);
    EXPECT_TRUE(sleeps.empty());
}

INSTANTIATE_TEST_SUITE_P(Is, FileUploadStatus, testing::Values(201, 204, 304, 403, 404, 500, 503),
                         testing::PrintToStringParamName());

TEST_F(FileUploadTest, FollowsARedirectWithTheWholeBody) {
    cloud.on("/put", {world::redirect_reply("/other", 307)});
    cloud.on("/other", {status_reply(200)});
    EXPECT_EQ(upload(0), 0);
    EXPECT_EQ(cloud.asked().at(1), "PUT /other five!");
}

TEST_F(FileUploadTest, AMissingFileIsAnError) {
    std::filesystem::remove(kDump);
    for (const int flag : {0, 1, 2}) {
        EXPECT_EQ(upload(flag), 1);
        EXPECT_EQ(logged(), kMissingLog);
    }
    EXPECT_TRUE(cloud.requests().empty());
    EXPECT_TRUE(local_service->requests().empty());
    EXPECT_TRUE(sleeps.empty());
}

TEST_F(FileUploadTest, AFailedRemovalChangesNothing) {
    constexpr const char *kNotRemovable = "/proc/version";
    EXPECT_EQ(api_TFA_post_FILE(kNotRemovable, url.c_str(), 0), 0);
    EXPECT_THAT(logged(), EndsWith(kNoProxyLog + kOkLog));
    cloud.on("/put", {status_reply(500)});
    EXPECT_EQ(api_TFA_post_FILE(kNotRemovable, url.c_str(), 0), 500);
    EXPECT_THAT(logged(), EndsWith(kNoProxyLog + "api_TFA_post_FILE 462 HTTP error 500\n\n"));
}

TEST_F(FileUploadTest, ARefusedOrBrokenUploadKeepsTheFile) {
    cloud.on("/put", {fault_reply(Fault::Kind::drop_after_bytes, 2)});
    EXPECT_NE(upload(0), 0);
    EXPECT_EQ(cloud.requests().size(), 1u);
    console.clear();
    url = kNobody;
    EXPECT_EQ(upload(0), CURLE_COULDNT_CONNECT);
    EXPECT_EQ(logged(), begin_log(5, 0) + kRefusedLog);
    EXPECT_EQ(world::read_file(kDump), kContent);
    EXPECT_TRUE(sleeps.empty());
}

TEST_F(FileUploadTest, ANullUrlIsATransferThatFails) {
    EXPECT_EQ(api_TFA_post_FILE(kDump, nullptr, 0), CURLE_URL_MALFORMAT);
    url = "(null)";
    EXPECT_EQ(logged(), begin_log(5, 0) + "api_TFA_post_FILE 439 curl_easy_perform() failed: " +
                            curl_easy_strerror(CURLE_URL_MALFORMAT) + "\n\n");
    EXPECT_EQ(world::read_file(kDump), kContent);
}

struct Size : NamedRow {
    off_t size;
    const char *logged;
};

class FileUploadSize : public FileUploadTest, public testing::WithParamInterface<Size> {};

// Sparse files that are never sent, since nobody listens.
TEST_P(FileUploadSize, IsLoggedWith32Bits) {
    ASSERT_EQ(truncate(kDump, GetParam().size), 0);
    url = kNobody;
    EXPECT_EQ(upload(0), CURLE_COULDNT_CONNECT);
    EXPECT_THAT(logged(),
                testing::HasSubstr(" file size " + std::string(GetParam().logged) + " flag 0\n"));
}

constexpr off_t kGiB = off_t{1} << 30;
INSTANTIATE_TEST_SUITE_P(Of, FileUploadSize,
                         testing::Values(Size{"LastPositive", 2 * kGiB - 1, "2147483647"},
                                         Size{"FirstNegative", 2 * kGiB, "-2147483648"},
                                         Size{"ThreeGiB", 3 * kGiB, "-1073741824"},
                                         Size{"FourGiBAndFive", 4 * kGiB + 5, "5"}),
                         RowName());

// A sparse file of which nothing but the headers is taken.
TEST_F(FileUploadTest, DeclaresASizeBeyond4GiB) {
    ASSERT_EQ(truncate(kDump, 5 * kGiB), 0);
    cloud.on("/put", {fault_reply(Fault::Kind::drop_after_headers)});
    EXPECT_NE(upload(0), 0);
    EXPECT_EQ(cloud.requests().at(0).header("Content-Length"), "5368709120");
    EXPECT_TRUE(world::exists(kDump));
}

TEST_F(FileUploadTest, TracesTheTransferOnStandardError) {
    {
        const Redirected errors(2, "/tmp/errors", O_WRONLY | O_CREAT);
        upload(0);
    }
    const std::string trace = world::read_file("/tmp/errors");
    EXPECT_EQ(count_of(trace, "> PUT /put HTTP/1.1"), 1);
    EXPECT_EQ(count_of(trace, "< HTTP/1.1 200 OK"), 1);
    EXPECT_EQ(count_of(trace, "cloud_proxy"), 0) << "only the upload is traced";
}

}  // namespace
