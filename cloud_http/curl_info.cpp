// The log shows some values in a form that libcurl deprecates in favour of 64-bit integers.
#define CURL_DISABLE_DEPRECATION

#include "cloud_http/curl_http.h"
#include "log/log.h"

namespace {

struct InfoLine {
    CURLINFO info;
    const char *format;
};

constexpr InfoLine kInfoLines[] = {
    {CURLINFO_EFFECTIVE_URL, "CURLINFO_EFFECTIVE_URL %s\n"},
    {CURLINFO_RESPONSE_CODE, "CURLINFO_RESPONSE_CODE %03ld\n"},
    {CURLINFO_HTTP_CONNECTCODE, "CURLINFO_HTTP_CONNECTCODE %03ld\n"},
    {CURLINFO_HEADER_SIZE, "CURLINFO_HEADER_SIZE %ld\n"},
    {CURLINFO_REQUEST_SIZE, "CURLINFO_REQUEST_SIZE %ld\n"},
    {CURLINFO_NUM_CONNECTS, "CURLINFO_NUM_CONNECTS%ld\n"},
    {CURLINFO_REDIRECT_COUNT, "CURLINFO_REDIRECT_COUNT%ld\n"},
    {CURLINFO_REDIRECT_TIME, "CURLINFO_REDIRECT_TIME %.3f\n"},
    {CURLINFO_TOTAL_TIME, "CURLINFO_TOTAL_TIME %.3f\n"},
    {CURLINFO_NAMELOOKUP_TIME, "CURLINFO_NAMELOOKUP_TIME %.3f\n"},
    {CURLINFO_CONNECT_TIME, "CURLINFO_CONNECT_TIME %.3f\n"},
    {CURLINFO_APPCONNECT_TIME, "CURLINFO_APPCONNECT_TIME %.3f\n"},
    {CURLINFO_PRETRANSFER_TIME, "CURLINFO_PRETRANSFER_TIME %.3f\n"},
    {CURLINFO_STARTTRANSFER_TIME, "CURLINFO_STARTTRANSFER_TIME %.3f\n"},
    {CURLINFO_SIZE_UPLOAD, "CURLINFO_SIZE_UPLOAD %.0f\n"},
    {CURLINFO_SIZE_DOWNLOAD, "CURLINFO_SIZE_DOWNLOAD %.0f\n"},
    {CURLINFO_SPEED_DOWNLOAD, "CURLINFO_SPEED_DOWNLOAD %.3f\n"},
    {CURLINFO_SPEED_UPLOAD, "CURLINFO_SPEED_UPLOAD %.3f\n"},
    {CURLINFO_CONTENT_TYPE, "CURLINFO_CONTENT_TYPE %s\n"},
    {CURLINFO_FTP_ENTRY_PATH, "CURLINFO_FTP_ENTRY_PATH %s\n"},
    {CURLINFO_REDIRECT_URL, "CURLINFO_REDIRECT_URL %s\n"},
    {CURLINFO_SSL_VERIFYRESULT, "CURLINFO_SSL_VERIFYRESULT %ld\n"},
    {CURLINFO_PRIMARY_IP, "CURLINFO_PRIMARY_IP %s\n"},
    {CURLINFO_PRIMARY_PORT, "CURLINFO_PRIMARY_PORT %ld\n"},
    {CURLINFO_LOCAL_IP, "CURLINFO_LOCAL_IP %s\n"},
    {CURLINFO_LOCAL_PORT, "CURLINFO_LOCAL_PORT %ld\n"},
};

void log_line(CURL *handle, const InfoLine &line) noexcept {
    long number = 0;
    double measure = 0.0;
    const char *text = nullptr;
    const int kind = static_cast<int>(line.info) & CURLINFO_TYPEMASK;
    if (kind == CURLINFO_LONG && curl_easy_getinfo(handle, line.info, &number) == CURLE_OK) {
        cloud_log(line.format, number);
    }
    if (kind == CURLINFO_DOUBLE && curl_easy_getinfo(handle, line.info, &measure) == CURLE_OK) {
        cloud_log(line.format, measure);
    }
    if (kind == CURLINFO_STRING && curl_easy_getinfo(handle, line.info, &text) == CURLE_OK &&
        (text != nullptr || line.info == CURLINFO_PRIMARY_IP || line.info == CURLINFO_LOCAL_IP)) {
        cloud_log(line.format, text);
    }
}

}  // namespace

void curl_post_transfer_hook(CURL * /*handle*/) noexcept {}

void curl_info_dump(CURL *handle) noexcept {
    for (const InfoLine &line : kInfoLines) {
        log_line(handle, line);
    }
}
