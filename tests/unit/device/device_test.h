// The local service and its replies for the tests of the device services.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "testing/logged_test.h"
#include "testing/scripted_server.h"

using world::json_reply;
using world::status_reply;

class DeviceTest : public LoggedTest {
  protected:
    // Every request that the local service has got: "METHOD target", then " body" if it has one.
    std::vector<std::string> asked() { return local->asked(); }

    // A GET of the resource, "system/status" or another, brings this payload.
    void publish(const std::string &resource, const std::string &payload) {
        local->on("GET /api/" + resource, {json_reply(R"({"restful_res":)" + payload + "}")});
    }

    // Its system status holds these members.
    void set_status(const std::string &members) {
        publish("system/status", R"({"systemInfo":{)" + members + "}}");
    }

    // Calls `check` for each reply of the resource that its reader cannot use, last for none at all,
    // with the lines that the reader logs. log_id: of a missing envelope.
    void for_each_unusable_reply(const std::string &resource, int log_id,
                                 const std::function<void(const std::string &lines)> &check) {
        const std::string failed = "\ncurl_http 1318 : method GET fail error ";
        const struct {
            const char *what;
            world::Reply reply;
            std::string lines;
        } rows[] = {
            {"cut off", world::fault_reply(world::Fault::Kind::drop_after_headers),
             failed + "52\n\n"},
            {"empty", status_reply(200), ""},
            {"not JSON", json_reply("down for maintenance"), ""},
            {"no envelope", json_reply(R"({"systemInfo":{}})"),
             "\n" + std::to_string(log_id) + " : restful_res not exist\n\n"},
            {"empty envelope", json_reply(R"({"restful_res":{}})"), ""},
        };
        for (const auto &row : rows) {
            SCOPED_TRACE(row.what);
            local->on("GET /api/" + resource, {row.reply});
            check(row.lines);
        }
        SCOPED_TRACE("no local service");
        local.reset();
        check(failed + "7\n\n");
        local.emplace();
    }

    std::optional<world::ScriptedServer> local{std::in_place};
};
