#include "virtual_device/scenario.h"

#include <algorithm>
#include <filesystem>

#include "testing/files.h"
#include "testing/shown_folders.h"
#include "testing/swift.h"
#include "virtual_device/scenario_fields.h"

namespace world {
namespace {

using nlohmann::json;

std::set<std::string> fault_names() {
    std::set<std::string> names;
    for (const Fault::Kind kind : all_faults())
        names.insert(fault_name(kind));
    return names;
}

Fault read_fault(const std::string &name, uint64_t amount, const std::string &where) {
    for (const Fault::Kind kind : all_faults()) {
        const bool counts = kind == Fault::Kind::drop_after_bytes || kind == Fault::Kind::trickle ||
                            kind == Fault::Kind::truncate;
        if (name != fault_name(kind))
            continue;
        if (!counts && amount > 0)
            complain(where, "\"bytes\" means nothing with \"" + name + "\"");
        return {kind, amount};
    }
    complain(where, "\"" + name + "\" is no fault; allowed are " + one_of(fault_names()));
}

// "ok", a fault's name, a status, or an object with the details.
std::vector<ScriptedReply> read_reply(const json &value, const std::string &where) {
    if (value.is_string() && value == "ok")
        return {ScriptedReply{}};
    if (value.is_string())
        return {ScriptedReply{std::nullopt, read_fault(value.get<std::string>(), 0, where)}};
    if (value.is_number_integer())
        return {ScriptedReply{status_reply(value.get<int>()), {}}};
    if (!value.is_object())
        complain(where, "must be \"ok\", a status, a fault or an object");
    Fields fields(value, where);
    ScriptedReply reply;
    const bool fixed = value.contains("status") || value.contains("body") || value.contains("json");
    Reply own = status_reply(static_cast<int>(fields.number("status", 200, 100, 599)));
    fields.with("body", [&](const json &body, const std::string &place) {
        own.body = text_value(body, place);
    });
    fields.with("json", [&](const json &body, const std::string &) {
        own.body = body.dump();
        own.headers.emplace_back("Content-Type", "application/json");
    });
    fields.with_object("headers", [&](Fields &headers) {
        for (const auto &[name, text] : headers.object().items())
            own.headers.emplace_back(name, text_value(text, headers.where() + ": " + name));
    });
    const long amount = fields.number("bytes", 0, 0, 1L << 40);
    const std::string fault = fields.text("fault");
    if (!fault.empty())
        reply.fault = read_fault(fault, static_cast<uint64_t>(amount), where);
    if (fixed)
        reply.fixed = own;
    const long times = fields.number("times", 1, 1, 1000);
    fields.finish();
    return std::vector<ScriptedReply>(static_cast<size_t>(times), reply);
}

std::vector<ScriptedReply> read_replies(const json &list, const std::string &where) {
    if (!list.is_array() || list.empty())
        complain(where, "must be a list of replies");
    std::vector<ScriptedReply> replies;
    for (const json &entry : list)
        for (const ScriptedReply &reply : read_reply(entry, where))
            replies.push_back(reply);
    return replies;
}

void read_local(Fields &fields, Scenario &scenario) {
    for (const auto &[endpoint, list] : fields.object().items()) {
        const std::string where = fields.where() + ": " + endpoint;
        const size_t blank = endpoint.find(" /");
        if (endpoint != "*" && (blank == std::string::npos || blank == 0))
            complain(where, "must be a method and a path (\"GET /api/system/status\") or \"*\"");
        scenario.local[endpoint] = read_replies(list, where);
    }
}

std::map<std::string, std::string> read_texts(const json &object, const std::string &where) {
    Fields fields(object, where);
    std::map<std::string, std::string> texts;
    for (const auto &[name, value] : object.items())
        texts[name] = fields.text(name);
    return texts;
}

void read_files(Fields &fields, Scenario &scenario) {
    for (const auto &[path, value] : fields.object().items()) {
        if (path.compare(0, 5, "/tmp/") != 0 && path.compare(0, 5, "/mnt/") != 0 &&
            path.compare(0, 5, "/etc/") != 0)
            complain(fields.where() + ": " + path, "must be a path under /tmp, /mnt or /etc");
        if (value.is_null())
            scenario.files[path] = std::nullopt;
        else
            scenario.files[path] = text_value(value, fields.where() + ": " + path);
    }
}

void read_device(Fields &fields, Scenario &scenario) {
    fields.with_object("files", [&](Fields &files) { read_files(files, scenario); });
    fields.with("environment", [&](const json &value, const std::string &where) {
        scenario.environment = read_texts(value, where);
    });
    fields.with_object("proxy", [&](Fields &proxy) {
        const bool enable = proxy.flag("enable", true);
        const std::string server = proxy.text("server", "127.0.0.1");
        scenario.proxy_address = proxy.text("listens", "127.0.0.1");
        const long port = proxy.number("port", 3128, 0, 65535);
        proxy.with("answers", [&](const json &list, const std::string &where) {
            scenario.proxy_replies = read_replies(list, where);
        });
        proxy.finish();
        scenario.local_settings.proxy = {
            {"enable", enable}, {"proxyServer", server}, {"proxyServerPort", port}};
    });
    scenario.local_settings.up_time = fields.number("up_time", 86400, 0, 1L << 31);
    scenario.local_settings.create_log = fields.flag("create_log", true);
    scenario.identity = fields.flag("identity", true);
    scenario.unordered = fields.flag("unordered", false);
    scenario.verifying = fields.flag("verifying", false);
    scenario.stop_after_sleeps = static_cast<int>(fields.number("stop_after_sleeps", 0, 0, 1000));
    const std::string sleep = fields.text("sleep", "recorded");
    if (sleep != "recorded" && sleep != "real")
        complain(fields.where() + ": sleep", "must be \"recorded\" or \"real\"");
    scenario.real_sleep = sleep == "real";
}

void read_surroundings(Fields &fields, Scenario &scenario) {
    fields.with_object("local", [&](Fields &local) { read_local(local, scenario); });
    for (const char *endpoint : {"tfa", "store", "time"})
        fields.with(endpoint, [&](const json &list, const std::string &where) {
            scenario.cloud[endpoint] = read_replies(list, where);
        });
    scenario.cloud_settings.clock = fields.text("clock");
    scenario.cloud_settings.url_lifetime =
        std::chrono::seconds(fields.number("url_lifetime", 300, 0, 86400));
    fields.with_object("addresses", [&](Fields &addresses) {
        scenario.addresses.clear();
        for (const auto &[address, value] : addresses.object().items())
            scenario.addresses[address] = addresses.flag(address, true);
    });
    scenario.refuse = fields.choices("refuse", {"local", "tfa", "store", "time"});
    scenario.daemons =
        fields.choices("daemons", {"tinyproxy", "nginx", "squid", "squid-with-password", "swift"});
    fields.choices("signatures", kSignatures);
    fields.with("signatures", [&](const json &list, const std::string &) {
        scenario.signatures = list.get<std::vector<std::string>>();
    });
    fields.with("dns", [&](const json &value, const std::string &where) {
        scenario.dns = read_texts(value, where);
    });
}

}  // namespace

const std::set<std::string> kVerdicts = {"bad-arguments", "busy",         "delivered", "no-url",
                                         "not-found",     "nothing",      "partly",    "refused",
                                         "unfinished",    "upload-failed"};

Scenario read_scenario(const std::string &name, const std::string &file, const std::string &text) {
    json document;
    try {
        document = json::parse(text);
    } catch (const json::parse_error &error) {
        complain(file, error.what());
    }
    Scenario scenario;
    scenario.name = name;
    Fields fields(document, file);
    scenario.about = fields.text("about");
    scenario.note = fields.text("note");
    fields.with("run", [&](const json &lines, const std::string &where) {
        if (!lines.is_array())
            complain(where, "must be a list of shell command lines");
        for (const json &line : lines)
            scenario.run.push_back(text_value(line, where));
    });
    read_device(fields, scenario);
    read_surroundings(fields, scenario);
    fields.choices("verdicts", kVerdicts);  // of the log reader, whose test compares them
    fields.finish();
    if (scenario.about.empty())
        complain(file, "\"about\" is missing: one line that says what can be seen here");
    return scenario;
}

std::string scenario_folder() { return inside(VIRTUAL_DEVICE_SCENARIOS); }

Scenario load_scenario(const std::string &name_or_file) {
    const bool is_file = name_or_file.find('/') != std::string::npos ||
                         std::filesystem::path(name_or_file).extension() == ".json";
    const std::string file =
        is_file ? name_or_file : scenario_folder() + "/" + name_or_file + ".json";
    if (!exists(file))
        complain(name_or_file, "there is no such scenario; `virtual_device scenarios` lists them");
    return read_scenario(std::filesystem::path(file).stem().string(), file, read_file(file));
}

std::vector<std::string> shipped_scenarios() {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(scenario_folder()))
        if (entry.path().extension() == ".json")
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace world
