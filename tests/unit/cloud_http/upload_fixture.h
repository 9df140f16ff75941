/* For the tests of the file upload: a plain cloud, and a dump that goes to its address /put. */
#pragma once

#include <filesystem>
#include <functional>

#include "cloud_http/file_upload.h"
#include "cloud_http_fixture.h"

class UploadTest : public CloudHttpTest {
  protected:
    static constexpr const char *kDump = "/tmp/dump.bin";
    static constexpr size_t kTooManySleeps = 100;

    UploadTest() {
        world::write_file(kDump, kContent);
        on_each_sleep([](size_t) {});
    }

    // Does `action` inside every later sleep, and ends what retries without end by mistake.
    void on_each_sleep(const std::function<void(size_t)> &action) {
        on_sleep = [action](size_t count) {
            action(count);
            if (count == kTooManySleeps)
                std::filesystem::remove(kDump);
        };
    }

    int upload(int flag) { return api_TFA_post_FILE(kDump, url.c_str(), flag); }

    // The log of an attempt up to the transfer.
    std::string begin_log(size_t size, int flag) const {
        return "api_TFA_post_FILE 394 filename /tmp/dump.bin uploadUrl " + url + " file size " +
               std::to_string(size) + " flag " + std::to_string(flag) +
               "\ncurl_slist_append(): Content-Type: application/octet-stream\n" + kNoProxyLog;
    }

    const std::string kContent = "five!";
    const std::string kUnlinkLog = "api_TFA_post_FILE 458 unlink /tmp/dump.bin\n\n";
    const std::string kOkLog = "api_TFA_post_FILE 467 curl_easy_perform() OK\n\n";
    const std::string kRetryLog =
        "api_TFA_post_FILE 451 goto retry api_TFA_post_FILE /tmp/dump.bin\n\n";
    const std::string kRefusedLog =
        "api_TFA_post_FILE 439 curl_easy_perform() failed: Couldn't connect to server\n\n";
    const std::string kMissingLog = "api_TFA_post_FILE 383 filename /tmp/dump.bin not found\n";

    std::string url = std::string(kCloud) + "/put";
};
