#include "testing/fake_cloud.h"

#include "deployment.h"
#include "testing/files.h"
#include "testing/private_world.h"

namespace world {
namespace {

// Nothing listens there, so that a connection is refused at once.
constexpr const char *kNowhere = "127.0.0.9";

}  // namespace

void name_cloud_hosts(const FakeCloudSetup &setup) {
    const auto name = [&](const char *part, const char *host, const std::string &other) {
        if (setup.refuse.count(part) || !other.empty())
            return add_host(host, setup.refuse.count(part) ? kNowhere : other);
        for (const auto &[address, answers] : setup.addresses)
            add_host(host, address);
    };
    name("tfa", CLOUD_TFA_HOST, "");
    name("time", kTimeHost, "");
    name("store", kStoreHost, setup.store_address);
    // The resolver's own server never answers; a pinned one can.
    write_file("/etc/resolv.conf",
               std::string("nameserver ") + kNowhere + "\noptions timeout:1 attempts:1\n");
}

FakeCloud::FakeCloud(const FakeCloudSetup &setup)
    : record(setup.records_whole_bodies ? ExchangeRecord::kWholeBody : ExchangeRecord::kBeginning),
      local(record, setup.local_script, setup.local),
      cloud(record, setup.cloud_script, setup.cloud),
      identity(authority().issue_server(cloud.hosts())) {
    for (const auto &[address, answers] : setup.addresses) {
        if (!answers) {
            silent_.emplace_back(address, uint16_t{443});
            continue;
        }
        cloud_servers_.emplace_back(address, uint16_t{443}, cloud,
                                    server_context(identity, authority(), false));
        cloud_servers_.emplace_back(address, uint16_t{80}, cloud);
    }
    if (setup.refuse.count("local") == 0)
        local_server_.emplace("127.0.0.1", uint16_t{8000}, local);
}

void FakeCloud::set_patience(std::chrono::seconds patience) {
    local_server_->set_patience(patience);
    for (HttpServer &server : cloud_servers_)
        server.set_patience(patience);
}

void FakeCloud::wait_until_idle() {
    local_server_->wait_until_idle();
    for (HttpServer &server : cloud_servers_)
        server.wait_until_idle();
}

}  // namespace world
