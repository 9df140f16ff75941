/*
 * The cloud on 127.0.0.1:443, all of it over TLS, and its time service on port 80 too:
 *
 *   POST https://TFA_HOST/dev/tfaapi/kdumps      {"filename": "..."} -> {"message": "OK",
 *                                                "upload_url": "..."}; demands a client certificate
 *   PUT  https://STORE_HOST/up/N/NAME?token=...  the one-time upload URL; 403 when it is unknown,
 *                                                already used or expired
 *   GET  https://TIME_HOST/time                  {"time": "2026-..."}
 *
 * Uploads go to a folder, a file each, unless the settings say otherwise.
 */
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "testing/service.h"

namespace world {

inline constexpr const char *kStoreDir = "/run/world/store";
inline constexpr const char *kStoreHost = "uploads.example.com";
inline constexpr const char *kTimeHost = "time.example.com";

// Holds replies back while it is closed.
class Gate {
  public:
    void close();
    void open();
    // Waits for the first reply that is held; false when none comes for long.
    bool wait_for_arrival();
    // Called with a reply at hand: returns when the gate is open, or after long.
    void pass();

  private:
    std::mutex guard_;
    std::condition_variable changed_;
    bool closed_ = false;
    bool arrived_ = false;
};

struct CloudSettings {
    std::vector<std::string> tfa_hosts;  // of the TFA service, beside the built-in one
    std::chrono::seconds url_lifetime{300};
    std::chrono::seconds outage{0};  // from the start: connections are cut
    std::string clock;               // the time service's reply; empty: the machine's time
    bool keeps_files = true;         // false: uploads are only in the record
    std::string folder = kStoreDir;  // where they are kept
    std::string store_url = std::string("https://") + kStoreHost;  // beginning of upload URLs
    // Gives the path and query of an upload URL by its number and object; empty: the cloud's own.
    std::function<std::string(size_t, const std::string &)> signer;
    Gate *gate = nullptr;             // for the replies that hand out upload URLs
    std::function<void()> on_stored;  // called for each upload that is kept, before its reply
};

// One upload that the cloud keeps.
struct StoredObject {
    std::string name;
    uint64_t size = 0;
    std::string sha256;
    std::string path;  // where its bytes lie in the private world
};

class Cloud : public Service {
  public:
    Cloud(ExchangeRecord &record, Scripts scripts, CloudSettings settings);

    std::vector<StoredObject> stored();
    // Forgets uploads and upload URLs.
    void forget();
    // The host names in the cloud's certificate.
    std::vector<std::string> hosts() const;

  protected:
    Admission admit(const std::string &server_name) override;
    std::string endpoint_of(const Request &request) override;
    std::string origin_of(const Request &request) override;
    Reply own_answer(Request &request, const std::string &endpoint,
                     const std::string &digest) override;
    std::function<void(std::string_view)> keeper(const Request &request,
                                                 const std::string &endpoint) override;

  private:
    struct UploadUrl {
        std::string object;
        std::chrono::steady_clock::time_point expires;
        bool used = false;
    };

    Reply hand_out_url(const Request &request);
    Reply take_upload(const Request &request, const std::string &digest);
    Reply tell_time(const Request &request) const;
    std::string place_of(const Request &request) const;

    bool is_out(const std::string &part, const std::string &url);

    CloudSettings settings_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::mutex guard_;
    std::map<std::string, UploadUrl> urls_;  // by target
    size_t urls_given_ = 0;
    std::vector<StoredObject> stored_;
};

}  // namespace world
