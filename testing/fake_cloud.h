/* The fake cloud: local service and cloud on their ports, with one record of their requests. */
#pragma once

#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "testing/cloud.h"
#include "testing/local_service.h"

namespace world {

struct FakeCloudSetup {
    Scripts local_script;
    Scripts cloud_script;
    LocalSettings local;
    CloudSettings cloud;
    std::set<std::string> refuse;  // where connections are refused: "local", "tfa", "store", "time"
    std::map<std::string, bool> addresses = {{"127.0.0.1", true}};  // of all; false: silent
    std::string store_address;                                      // if not among these
    bool records_whole_bodies = false;
};

// Names the hosts in /etc/hosts; every other name is unknown at once.
void name_cloud_hosts(const FakeCloudSetup &setup = {});

class FakeCloud {
  public:
    // The local service on port 8000 of 127.0.0.1, the cloud on 443 (TLS) and 80 of its addresses.
    explicit FakeCloud(const FakeCloudSetup &setup = {});

    void set_patience(std::chrono::seconds patience);
    void wait_until_idle();

    ExchangeRecord record;
    LocalService local;
    Cloud cloud;
    const Identity identity;  // of the cloud's hosts

  private:
    std::optional<HttpServer> local_server_;
    std::list<HttpServer> cloud_servers_;
    std::list<SilentPort> silent_;
};

}  // namespace world
