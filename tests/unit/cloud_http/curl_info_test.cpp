// Some of the logged values have newer 64-bit forms.
#define CURL_DISABLE_DEPRECATION

#include <curl/curl.h>

#include <vector>

#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_http_fixture.h"

namespace {

struct Line {
    CURLINFO info;
    const char *line;       // for a text "text", a whole number 7 or a measure 1234.56789
    const char *null_line;  // for a null text
};

const std::vector<Line> kLines = {
    {CURLINFO_EFFECTIVE_URL, "CURLINFO_EFFECTIVE_URL text\n", ""},
    {CURLINFO_RESPONSE_CODE, "CURLINFO_RESPONSE_CODE 007\n", nullptr},
    {CURLINFO_HTTP_CONNECTCODE, "CURLINFO_HTTP_CONNECTCODE 007\n", nullptr},
    {CURLINFO_HEADER_SIZE, "CURLINFO_HEADER_SIZE 7\n", nullptr},
    {CURLINFO_REQUEST_SIZE, "CURLINFO_REQUEST_SIZE 7\n", nullptr},
    {CURLINFO_NUM_CONNECTS, "CURLINFO_NUM_CONNECTS7\n", nullptr},
    {CURLINFO_REDIRECT_COUNT, "CURLINFO_REDIRECT_COUNT7\n", nullptr},
    {CURLINFO_REDIRECT_TIME, "CURLINFO_REDIRECT_TIME 1234.568\n", nullptr},
    {CURLINFO_TOTAL_TIME, "CURLINFO_TOTAL_TIME 1234.568\n", nullptr},
    {CURLINFO_NAMELOOKUP_TIME, "CURLINFO_NAMELOOKUP_TIME 1234.568\n", nullptr},
    {CURLINFO_CONNECT_TIME, "CURLINFO_CONNECT_TIME 1234.568\n", nullptr},
    {CURLINFO_APPCONNECT_TIME, "CURLINFO_APPCONNECT_TIME 1234.568\n", nullptr},
    {CURLINFO_PRETRANSFER_TIME, "CURLINFO_PRETRANSFER_TIME 1234.568\n", nullptr},
    {CURLINFO_STARTTRANSFER_TIME, "CURLINFO_STARTTRANSFER_TIME 1234.568\n", nullptr},
    {CURLINFO_SIZE_UPLOAD, "CURLINFO_SIZE_UPLOAD 1235\n", nullptr},
    {CURLINFO_SIZE_DOWNLOAD, "CURLINFO_SIZE_DOWNLOAD 1235\n", nullptr},
    {CURLINFO_SPEED_DOWNLOAD, "CURLINFO_SPEED_DOWNLOAD 1234.568\n", nullptr},
    {CURLINFO_SPEED_UPLOAD, "CURLINFO_SPEED_UPLOAD 1234.568\n", nullptr},
    {CURLINFO_CONTENT_TYPE, "CURLINFO_CONTENT_TYPE text\n", ""},
    {CURLINFO_FTP_ENTRY_PATH, "CURLINFO_FTP_ENTRY_PATH text\n", ""},
    {CURLINFO_REDIRECT_URL, "CURLINFO_REDIRECT_URL text\n", ""},
    {CURLINFO_SSL_VERIFYRESULT, "CURLINFO_SSL_VERIFYRESULT 7\n", nullptr},
    {CURLINFO_PRIMARY_IP, "CURLINFO_PRIMARY_IP text\n", "CURLINFO_PRIMARY_IP (null)\n"},
    {CURLINFO_PRIMARY_PORT, "CURLINFO_PRIMARY_PORT 7\n", nullptr},
    {CURLINFO_LOCAL_IP, "CURLINFO_LOCAL_IP text\n", "CURLINFO_LOCAL_IP (null)\n"},
    {CURLINFO_LOCAL_PORT, "CURLINFO_LOCAL_PORT 7\n", nullptr},
};

CURLcode answer(CURLINFO info, void *value, const char *text = "text") {
    switch (info & CURLINFO_TYPEMASK) {
        case CURLINFO_STRING:
            *static_cast<const char **>(value) = text;
            return CURLE_OK;
        case CURLINFO_LONG:
            *static_cast<long *>(value) = 7;
            return CURLE_OK;
        case CURLINFO_DOUBLE:
            *static_cast<double *>(value) = 1234.56789;
            return CURLE_OK;
        default:
            return CURLE_UNKNOWN_OPTION;
    }
}

class CurlInfoTest : public CloudHttpTest {
  protected:
    ~CurlInfoTest() override { calls::answer<calls::get_info>() = nullptr; }

    std::string dump(CURL *handle = nullptr) {
        curl_info_dump(handle);
        return logged();
    }
};

TEST_F(CurlInfoTest, LogsEveryValueInOrder) {
    std::string expected;
    std::vector<CURLINFO> in_order;
    for (const Line &line : kLines) {
        expected += line.line;
        in_order.push_back(line.info);
    }
    std::vector<CURLINFO> asked;
    calls::answer<calls::get_info>() = [&](CURL *, CURLINFO info, void *value) {
        asked.push_back(info);
        return answer(info, value);
    };
    EXPECT_EQ(dump(), expected);
    EXPECT_EQ(asked, in_order);
}

TEST_F(CurlInfoTest, LeavesOutAValueThatIsRefused) {
    for (const Line &refused : kLines) {
        std::string expected;
        for (const Line &line : kLines)
            expected += line.info == refused.info ? "" : line.line;
        calls::answer<calls::get_info>() = [&](CURL *, CURLINFO info, void *value) {
            const CURLcode result = answer(info, value);
            return info == refused.info ? CURLE_UNKNOWN_OPTION : result;
        };
        EXPECT_EQ(dump(), expected) << refused.line;
    }
}

TEST_F(CurlInfoTest, LeavesOutMostNullTexts) {
    std::string expected;
    for (const Line &line : kLines)
        expected += line.null_line != nullptr ? line.null_line : line.line;
    calls::answer<calls::get_info>() = [](CURL *, CURLINFO info, void *value) {
        return answer(info, value, nullptr);
    };
    EXPECT_EQ(dump(), expected);
}

TEST_F(CurlInfoTest, DescribesARealTransfer) {
    local_service->on("/a", {json_reply("{\"b\":1}")});
    CURL *const handle = curl_easy_init();
    curl_easy_setopt(handle, CURLOPT_URL, "http://127.0.0.1:8000/a");
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 1L);
    char path[] = "/dev/null";
    HttpReply sink = {HTTP_REPLY_FILE, path, 0};
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, http_reply_write);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &sink);
    EXPECT_EQ(curl_easy_perform(handle), CURLE_OK);
    const std::string log = dump(handle);
    curl_easy_cleanup(handle);
    for (const char *line :
         {"CURLINFO_EFFECTIVE_URL http://127.0.0.1:8000/a\n", "\nCURLINFO_RESPONSE_CODE 200\n",
          "\nCURLINFO_HTTP_CONNECTCODE 000\n", "\nCURLINFO_NUM_CONNECTS1\n",
          "\nCURLINFO_REDIRECT_COUNT0\n", "\nCURLINFO_SIZE_DOWNLOAD 7\n",
          "\nCURLINFO_CONTENT_TYPE application/json\n", "\nCURLINFO_PRIMARY_IP 127.0.0.1\n",
          "\nCURLINFO_PRIMARY_PORT 8000\n", "\nCURLINFO_LOCAL_IP 127.0.0.1\n"}) {
        EXPECT_EQ(count_of("\n" + log, line), 1) << line;
    }
    EXPECT_EQ(count_of(log, "CURLINFO_FTP_ENTRY_PATH"), 0);
    EXPECT_EQ(count_of(log, "CURLINFO_REDIRECT_URL"), 0);
}

TEST_F(CurlInfoTest, IsSilentWithLoggingOff) {
    g_console_debug = 0;
    calls::answer<calls::get_info>() = [](CURL *, CURLINFO info, void *value) {
        return answer(info, value);
    };
    EXPECT_EQ(dump(), "");
}

}  // namespace
