#include "testing/fake_cloud.h"

#include "deployment.h"
#include "testing/files.h"
#include "testing/private_world.h"

namespace world {
namespace {

constexpr const char *kLoopback = "127.0.0.1";
// Nothing listens there, so that a connection is refused at once.
constexpr const char *kNowhere = "127.0.0.9";

}  // namespace

void name_cloud_hosts(const FakeCloudSetup &setup) {
    const auto name = [&](const char *part, const char *host, const std::string &address) {
        add_host(host, setup.refuse.count(part) ? kNowhere : address);
    };
    name("tfa", CLOUD_TFA_HOST, kLoopback);
    name("time", kTimeHost, kLoopback);
    name("store", kStoreHost, setup.store_address);
    // The resolver's own server never answers; a pinned one can.
    write_file("/etc/resolv.conf",
               std::string("nameserver ") + kNowhere + "\noptions timeout:1 attempts:1\n");
}

FakeCloud::FakeCloud(const FakeCloudSetup &setup)
    : record(setup.records_whole_bodies ? ExchangeRecord::kWholeBody : ExchangeRecord::kBeginning),
      local(record, setup.local_script, setup.local),
      cloud(record, setup.cloud_script, setup.cloud),
      identity(authority().issue_server(cloud.hosts())),
      cloud_server_(kLoopback, 443, cloud, server_context(identity, authority(), false)),
      plain_server_(kLoopback, 80, cloud) {
    if (setup.refuse.count("local") == 0)
        local_server_.emplace(kLoopback, uint16_t{8000}, local);
}

void FakeCloud::set_patience(std::chrono::seconds patience) {
    local_server_->set_patience(patience);
    cloud_server_.set_patience(patience);
}

void FakeCloud::wait_until_idle() {
    local_server_->wait_until_idle();
    cloud_server_.wait_until_idle();
}

}  // namespace world
