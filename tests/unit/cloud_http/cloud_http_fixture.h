/*
 * For the tests of the cloud HTTP client: a local service on 127.0.0.1:8000 that publishes the cloud
 * proxy, console logging on, and the client's variables back at their start values for every test.
 */
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cloud_http/file_upload.h"
#include "cloud_http/upload_url.h"
#include "testing/logged_test.h"
#include "testing/named_row.h"
#include "testing/scripted_server.h"

using world::Fault;
using world::fault_reply;
using world::json_reply;
using world::Reply;
using world::ScriptedServer;
using world::status_reply;

inline constexpr const char *kCloud = "http://127.0.0.1:8080";
inline constexpr const char *kNobody = "http://127.0.0.1:8081/nobody";  // refuses
inline constexpr const char *kDnsFile = "/tmp/curlDNSFile";

// The log of asking for the proxy when there is none.
inline const std::string kNoProxyLog =
    "\n\nc_cloud_proxy_get 27\n\n\n\n\nc_cloud_proxy_get 32 proxy_string \"\"\n\n\n";

class CloudHttpTest : public LoggedTest {
  protected:
    CloudHttpTest();
    ~CloudHttpTest() override;

    // The local service's reply about the proxy, with these members in "CloudProxySettings".
    void publish_proxy(const std::string &members);

    // Upload URLs are asked for there.
    static void ask_at(const std::string &url);
    static void forget_upload_url();

    // A plain HTTP server in the place of the cloud.
    static world::ServerSetup plain(uint16_t port = 8080);

    std::unique_ptr<ScriptedServer> local_service = std::make_unique<ScriptedServer>();
};

// With a dump that goes to the cloud's address /put.
class UploadTest : public CloudHttpTest {
  protected:
    static constexpr const char *kDump = "/tmp/dump.bin";

    UploadTest();

    // Runs `action` inside every later sleep, and ends endless retries after 100.
    void on_each_sleep(const std::function<void(size_t)> &action);

    int upload(int flag) { return api_TFA_post_FILE(kDump, url.c_str(), flag); }

    // Both requests succeed there; the first brings no URL.
    static void answer_both(ScriptedServer &cloud);

    // Both requests fail with that result, and the dump stays.
    void expect_both_to_fail_with(int code);

    // The log of an attempt up to the transfer.
    std::string begin_log(size_t size, int flag) const;

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

// How often `piece` stands in `text`.
int count_of(const std::string &text, const std::string &piece);

// How many headers of that name, in any letter case, a request has.
int count_of_headers(const world::Request &request, const std::string &name);

// A file descriptor of this process replaced by a file for as long as the object lives.
class Redirected {
  public:
    Redirected(int descriptor, const std::string &path, int open_flags);
    ~Redirected();
    Redirected(const Redirected &) = delete;
    Redirected &operator=(const Redirected &) = delete;

  private:
    int descriptor_;
    int saved_;
};
