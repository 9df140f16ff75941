/* virtual_device cloud */
#include <fmt/format.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <stdexcept>

#include "testing/cloud.h"
#include "virtual_device/commands.h"
#include "virtual_device/expected_text.h"

namespace world {
namespace {

constexpr const char *kAddress = "127.0.0.1";

sigset_t ending_signals() {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    return ends;
}

// A device's own certificate is of an authority that is unknown here.
SslContext open_context(const Identity &identity) {
    SslContext context = server_context(identity, authority(), false);
    SSL_CTX_set_cert_verify_callback(
        context.get(), [](X509_STORE_CTX *, void *) { return 1; }, nullptr);
    return context;
}

void show(const Exchange &exchange) {
    const std::string status =
        exchange.status != 0 ? std::to_string(exchange.status) : "not answered";
    fmt::print("\n{} {} -> {}{}\n", exchange.method.empty() ? "connection to" : exchange.method,
               legible(exchange.url), status,
               exchange.mishap.empty() ? "" : ", " + exchange.mishap);
    if (!exchange.client_certificate.empty())
        fmt::print("    client certificate: {}\n", legible(exchange.client_certificate));
    for (const auto &[name, value] : exchange.headers)
        fmt::print("    {}: {}\n", legible(name), legible(value));
    if (exchange.body_size > 0)
        fmt::print("    body: {}\n",
                   describe_bytes(exchange.body_size, exchange.body_sha256, exchange.body, {}));
}

// Shows what has ended since the last call, in order of its beginning.
void show_new(const ExchangeRecord &record, size_t &shown) {
    const std::vector<Exchange> all = record.all();
    for (; shown < all.size() && all[shown].ended > 0; ++shown)
        show(all[shown]);
    std::fflush(stdout);
}

CloudSettings settings_for(const CloudCommandOptions &options, const Scenario &scenario) {
    CloudSettings settings = scenario.cloud_settings;
    settings.store_url = fmt::format("https://localhost:{}", options.port);
    settings.keeps_files = !options.keep.empty();
    settings.folder = options.keep;
    if (settings.keeps_files && std::filesystem::exists(options.keep) &&
        !std::filesystem::is_empty(options.keep))
        throw std::runtime_error(options.keep + " is not empty");
    return settings;
}

}  // namespace

int run_cloud_command(const CloudCommandOptions &options) {
    CommonOptions common;
    common.scenario = options.scenario;
    const Scenario scenario = chosen_scenario(common);
    const sigset_t ends = ending_signals();
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    ExchangeRecord record;
    Cloud cloud(record, scenario.cloud, settings_for(options, scenario));
    const Identity identity = authority().issue_server({"localhost"});
    const HttpServer server(kAddress, options.port, cloud, open_context(identity));
    fmt::print(
        "The cloud is up, and shows each request when it has ended. Ctrl-C ends it.\n"
        "A device reaches it through `ssh -R {0}:{1}:{0} DEVICE`, with this in its\n"
        "/tmp/app/cloud_tmp/KDUMPS_file:\n"
        "    https://localhost:{0}/dev/tfaapi/kdumps\n",
        options.port, kAddress);
    std::fflush(stdout);
    constexpr struct timespec kPause = {0, 100'000'000};
    size_t shown = 0;
    while (sigtimedwait(&ends, nullptr, &kPause) < 0)
        show_new(record, shown);
    show_new(record, shown);
    fmt::print("\n");
    return 0;
}

}  // namespace world
