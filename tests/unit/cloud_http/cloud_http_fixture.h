/*
 * For the tests of the cloud HTTP client: the world of world_test.h with a local service on
 * 127.0.0.1:8000 that publishes the cloud proxy, console logging on, and the process-wide variables
 * of the client back at their start values for every test.
 */
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>

#include "testing/named_row.h"
#include "testing/scripted_server.h"
#include "testing/world_test.h"

class CloudHttpTest : public world::WorldTest {
  protected:
    CloudHttpTest();
    ~CloudHttpTest() override;

    // The local service's reply about the proxy, with these members in "CloudProxySettings".
    void publish_proxy(const std::string &members);

    // From now on nothing answers on 127.0.0.1:8000.
    void stop_local_service() { local_service.reset(); }

    // A plain HTTP server on 127.0.0.1:8080, in the place of the cloud.
    static world::ServerSetup plain_cloud();

    std::unique_ptr<world::ScriptedServer> local_service;
};

inline constexpr const char *kCloud = "http://127.0.0.1:8080";
inline constexpr const char *kNobody = "http://127.0.0.1:8081/nobody";  // refuses

// The log of asking for the proxy when there is none.
inline constexpr const char *kNoProxyLog =
    "\n\nc_cloud_proxy_get 27\n\n\n\n\nc_cloud_proxy_get 32 proxy_string \"\"\n\n\n";

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
