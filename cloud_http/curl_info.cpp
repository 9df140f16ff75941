// Some of these values have newer 64-bit forms; the log shows the classic ones.
#define CURL_DISABLE_DEPRECATION

#include "cloud_http/curl_http.h"
#include "log/log.h"

namespace {

enum class Kind { kLong, kDouble, kText, kTextIfAny };

struct InfoLine {
    CURLINFO info;
    Kind kind;
    const char *format;
};

constexpr InfoLine kInfoLines[] = {
    {CURLINFO_EFFECTIVE_URL, Kind::kTextIfAny, "CURLINFO_EFFECTIVE_URL %s\n"},
    {CURLINFO_RESPONSE_CODE, Kind::kLong, "CURLINFO_RESPONSE_CODE %03ld\n"},
    {CURLINFO_HTTP_CONNECTCODE, Kind::kLong, "CURLINFO_HTTP_CONNECTCODE %03ld\n"},
    {CURLINFO_HEADER_SIZE, Kind::kLong, "CURLINFO_HEADER_SIZE %ld\n"},
    {CURLINFO_REQUEST_SIZE, Kind::kLong, "CURLINFO_REQUEST_SIZE %ld\n"},
    {CURLINFO_NUM_CONNECTS, Kind::kLong, "CURLINFO_NUM_CONNECTS%ld\n"},
    {CURLINFO_REDIRECT_COUNT, Kind::kLong, "CURLINFO_REDIRECT_COUNT%ld\n"},
    {CURLINFO_REDIRECT_TIME, Kind::kDouble, "CURLINFO_REDIRECT_TIME %.3f\n"},
    {CURLINFO_TOTAL_TIME, Kind::kDouble, "CURLINFO_TOTAL_TIME %.3f\n"},
    {CURLINFO_NAMELOOKUP_TIME, Kind::kDouble, "CURLINFO_NAMELOOKUP_TIME %.3f\n"},
    {CURLINFO_CONNECT_TIME, Kind::kDouble, "CURLINFO_CONNECT_TIME %.3f\n"},
    {CURLINFO_APPCONNECT_TIME, Kind::kDouble, "CURLINFO_APPCONNECT_TIME %.3f\n"},
    {CURLINFO_PRETRANSFER_TIME, Kind::kDouble, "CURLINFO_PRETRANSFER_TIME %.3f\n"},
    {CURLINFO_STARTTRANSFER_TIME, Kind::kDouble, "CURLINFO_STARTTRANSFER_TIME %.3f\n"},
    {CURLINFO_SIZE_UPLOAD, Kind::kDouble, "CURLINFO_SIZE_UPLOAD %.0f\n"},
    {CURLINFO_SIZE_DOWNLOAD, Kind::kDouble, "CURLINFO_SIZE_DOWNLOAD %.0f\n"},
    {CURLINFO_SPEED_DOWNLOAD, Kind::kDouble, "CURLINFO_SPEED_DOWNLOAD %.3f\n"},
    {CURLINFO_SPEED_UPLOAD, Kind::kDouble, "CURLINFO_SPEED_UPLOAD %.3f\n"},
    {CURLINFO_CONTENT_TYPE, Kind::kTextIfAny, "CURLINFO_CONTENT_TYPE %s\n"},
    {CURLINFO_FTP_ENTRY_PATH, Kind::kTextIfAny, "CURLINFO_FTP_ENTRY_PATH %s\n"},
    {CURLINFO_REDIRECT_URL, Kind::kTextIfAny, "CURLINFO_REDIRECT_URL %s\n"},
    {CURLINFO_SSL_VERIFYRESULT, Kind::kLong, "CURLINFO_SSL_VERIFYRESULT %ld\n"},
    {CURLINFO_PRIMARY_IP, Kind::kText, "CURLINFO_PRIMARY_IP %s\n"},
    {CURLINFO_PRIMARY_PORT, Kind::kLong, "CURLINFO_PRIMARY_PORT %ld\n"},
    {CURLINFO_LOCAL_IP, Kind::kText, "CURLINFO_LOCAL_IP %s\n"},
    {CURLINFO_LOCAL_PORT, Kind::kLong, "CURLINFO_LOCAL_PORT %ld\n"},
};

template <class Value>
bool query(CURL *handle, CURLINFO info, Value *value) noexcept {
    return curl_easy_getinfo(handle, info, value) == CURLE_OK;
}

void log_line(CURL *handle, const InfoLine &line) noexcept {
    long number = 0;
    double measure = 0.0;
    const char *text = nullptr;
    switch (line.kind) {
        case Kind::kLong:
            if (query(handle, line.info, &number)) {
                cloud_log(line.format, number);
            }
            break;
        case Kind::kDouble:
            if (query(handle, line.info, &measure)) {
                cloud_log(line.format, measure);
            }
            break;
        case Kind::kText:
        case Kind::kTextIfAny:
            if (query(handle, line.info, &text) && (text != nullptr || line.kind == Kind::kText)) {
                cloud_log(line.format, text);
            }
            break;
    }
}

}  // namespace

void curl_post_transfer_hook(CURL * /*handle*/) noexcept {}

void curl_info_dump(CURL *handle) noexcept {
    for (const InfoLine &line : kInfoLines) {
        log_line(handle, line);
    }
}
