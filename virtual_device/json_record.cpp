#include "virtual_device/json_record.h"

#include "virtual_device/expected_text.h"

namespace world {
namespace {

using nlohmann::json;

json of_tree(const FileTree &tree) {
    json files = json::object();
    for (const auto &[path, file] : tree)
        files[path] = {{"size", file.size}, {"sha256", file.sha256}};
    return files;
}

json of_exchange(const Exchange &exchange) {
    json headers = json::array();
    for (const auto &[name, value] : exchange.headers)
        headers.push_back({{"name", name}, {"value", value}});
    return {{"service", exchange.service},
            {"method", exchange.method},
            {"url", exchange.url},
            {"headers", headers},
            {"client_certificate", exchange.client_certificate},
            {"body_size", exchange.body_size},
            {"body_sha256", exchange.body_sha256},
            {"status", exchange.status},
            {"mishap", exchange.mishap},
            {"reply_size", exchange.reply_size},
            {"started", exchange.started},
            {"ended", exchange.ended}};
}

}  // namespace

json json_record(const Scenario &scenario, const Outcome &outcome) {
    json record = {{"scenario", scenario.name},
                   {"proxied", outcome.proxied},
                   {"dns_queries", outcome.dns_queries},
                   {"sleeps", outcome.sleeps},
                   {"reboots", outcome.reboots},
                   {"local_service", outcome.local_state},
                   {"files_before", of_tree(outcome.before)},
                   {"files_after", of_tree(outcome.after)}};
    for (const CommandResult &command : outcome.commands)
        record["commands"].push_back({{"line", command.line},
                                      {"exit_status", command.exit_status},
                                      {"console", command.console},
                                      {"output", command.output},
                                      {"errors", command.errors},
                                      {"peak_kb", command.peak_kb}});
    for (const Exchange &exchange : outcome.exchanges)
        record["requests"].push_back(of_exchange(exchange));
    for (const StoredObject &object : outcome.stored)
        record["stored"].push_back(
            {{"name", object.name}, {"size", object.size}, {"sha256", object.sha256}});
    return record;
}

}  // namespace world
