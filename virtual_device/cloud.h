/*
 * The cloud on 127.0.0.1:443, all of it over TLS, and its time service on port 80 too:
 *
 *   POST https://TFA_HOST/dev/tfaapi/kdumps      {"filename": "..."} -> {"message": "OK",
 *                                                "upload_url": "..."}; demands a client certificate
 *   PUT  https://STORE_HOST/up/N/NAME?token=...  the one-time upload URL; 403 when it is unknown,
 *                                                already used or expired
 *   GET  https://TIME_HOST/time                  {"time": "2026-..."}
 *
 * What is PUT is kept in kStoreDir, one file an object.
 */
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "service.h"

namespace world {

inline constexpr const char *kStoreDir = "/run/world/store";
inline constexpr const char *kStoreHost = "uploads.example.com";
inline constexpr const char *kTimeHost = "time.example.com";

struct CloudSettings {
    std::vector<std::string> tfa_hosts;  // every name under which the TFA service is reached
    std::chrono::seconds url_lifetime{300};
    std::chrono::seconds outage{0};  // from the start: connections are cut
    std::string clock;               // what the time service says; empty: the time it is
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

    const CloudSettings settings_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::mutex guard_;
    std::map<std::string, UploadUrl> urls_;  // by target
    std::vector<StoredObject> stored_;
};

}  // namespace world
