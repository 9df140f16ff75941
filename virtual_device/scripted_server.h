/*
 * A server for unit tests that answers from a script and remembers what it was asked.
 *
 *   world::ScriptedServer server;                                  // http://127.0.0.1:8000
 *   server.on("/api/system/cloud_proxy", {json_reply("{...}")});   // every method; the last reply
 *                                                                  // of a list is repeated
 *   server.on("PATCH /api/settings", {status_reply(500), json_reply("{}")});
 *   server.on("*", {fault_reply(Fault::Kind::garbage)});           // whatever has no script
 *   ... run the code under test ...
 *   ASSERT_EQ(server.requests().size(), 2u);
 *   EXPECT_EQ(server.requests()[0].body, "...");
 *
 *   world::ScriptedServer cloud(world::tls_on(443, {"tfa.example.com"}));   // TLS, demands a
 * client world::add_host("tfa.example.com");                                     // certificate:
 *   world::authority().write_client_files(world::kDeviceDir);               // CRT and KEY
 *
 * What has no script gets 404. To have an address that refuses, start no server there.
 */
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "certificates.h"
#include "http_message.h"
#include "http_server.h"

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

class ScriptedServer : private HttpHandler {
  public:
    explicit ScriptedServer(const ServerSetup &setup = {});

    // `which`: a path ("/x"), a method and a path ("PUT /x"), or "*". A path is compared without
    // its query. A drop_at_accept works under "*" only, since nothing else is known that early.
    void on(const std::string &which, std::vector<Reply> replies);

    // Every request so far, in the order they ended, broken-off ones included.
    std::vector<Request> requests();

  private:
    struct Script {
        std::vector<Reply> replies;
        size_t next = 0;
        const Reply &peek() const { return replies[next]; }
        void advance() { next += next + 1 < replies.size(); }
    };

    Admission admit(const std::string &server_name) override;
    Fault begin(Request &request) override;
    Reply answer(Request &request) override;
    void broken_off(Request &request) override;
    Script *script_for(const Request &request);

    std::mutex guard_;
    std::map<std::string, Script> scripts_;
    std::vector<Request> requests_;
    std::optional<HttpServer> server_;  // last: it calls the functions above from its start on
};

}  // namespace world
