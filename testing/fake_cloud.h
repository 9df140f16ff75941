/* The fake cloud: local service and cloud on their ports, with one record of their requests. */
#pragma once

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
    std::string store_address = "127.0.0.1";
    bool records_whole_bodies = false;
};

// Names the hosts in /etc/hosts; every other name is unknown at once.
void name_cloud_hosts(const FakeCloudSetup &setup = {});

class FakeCloud {
  public:
    // On 127.0.0.1: the local service on port 8000, the cloud on 443 (TLS) and 80.
    explicit FakeCloud(const FakeCloudSetup &setup = {});

    void set_patience(std::chrono::seconds patience);
    void wait_until_idle();

    ExchangeRecord record;
    LocalService local;
    Cloud cloud;
    const Identity identity;  // of the cloud's hosts

  private:
    std::optional<HttpServer> local_server_;
    HttpServer cloud_server_;
    HttpServer plain_server_;
};

}  // namespace world
