/*
 * A fake for unit tests that answers from a script and remembers what it was asked.
 *
 *   world::ScriptedServer server;                                  // http://127.0.0.1:8000
 *   server.on("/api/system/cloud_proxy", {json_reply("{...}")});   // the last reply is repeated
 *   server.on("PATCH /api/settings", {status_reply(500), json_reply("{}")});
 *   server.on("*", {fault_reply(Fault::Kind::garbage)});           // whatever has no script
 *   ... run the code under test ...
 *   ASSERT_EQ(server.requests().size(), 2u);
 *   EXPECT_EQ(server.requests()[0].body, "...");
 *
 * With TLS, and a client certificate demanded:
 *
 *   world::ScriptedServer cloud(world::tls_on(443, {"tfa.example.com"}));
 *   world::add_host("tfa.example.com");
 *   world::authority().write_client_files(world::kDeviceDir);      // CRT and KEY
 *
 * Without a script the reply is 404. To have an address that refuses, start no server there.
 */
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "testing/certificates.h"
#include "testing/service.h"

namespace world {

struct ServerSetup {
    uint16_t port = 8000;
    std::string address = "127.0.0.1";
    bool tls = false;
    bool demand_client_certificate = false;
    std::vector<std::string> hosts;                   // names in the server's certificate
    const CertificateAuthority *signed_by = nullptr;  // none: world::authority()
};

ServerSetup tls_on(uint16_t port, std::vector<std::string> hosts,
                   bool demand_client_certificate = true);

class ScriptedServer : private Service {
  public:
    using Answer = std::function<Reply(const Request &request)>;

    // Without a script, `answer` is asked.
    explicit ScriptedServer(const ServerSetup &setup = {}, Answer answer = {});

    // `which`: a path ("/x"), a method and a path ("PUT /x"), or "*". A path is compared without
    // its query. A drop_at_accept works under "*" only, since nothing else is known that early.
    void on(const std::string &which, const std::vector<Reply> &replies);

    // Every request that has ended, also those broken off.
    std::vector<Exchange> requests() const;
    // The same as "METHOD target", then " body" if there is one.
    std::vector<std::string> asked() const;
    void forget_requests() { kept_.take(); }

  private:
    std::string endpoint_of(const Request &request) override;
    Reply own_answer(Request &request, const std::string &, const std::string &) override {
        return answer_ ? answer_(request) : status_reply(404);
    }

    ExchangeRecord kept_{ExchangeRecord::kWholeBody};
    const Answer answer_;
    std::optional<HttpServer> server_;  // last: it calls the functions above from its start on
};

}  // namespace world
