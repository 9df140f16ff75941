// The local service and its replies for the tests of the device services.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "testing/logged_test.h"
#include "testing/scripted_server.h"

class DeviceTest : public LoggedTest {
  protected:
    // Every request that the local service has got: "METHOD target", then " body" if it has one.
    std::vector<std::string> asked() { return local->asked(); }

    // Its system status holds these members.
    void set_status(const std::string &members) {
        local->on("GET /api/system/status",
                  {world::json_reply(R"({"restful_res":{"systemInfo":{)" + members + "}}}")});
    }

    std::optional<world::ScriptedServer> local{std::in_place};
};

// A resource of the local service that cannot be used, and what its reader logs.
struct UnusableReply {
    const char *what;
    world::Reply reply;
    std::string logged;
};

// site: the number under which the reader reports a missing envelope.
inline std::vector<UnusableReply> unusable_replies(int site) {
    const std::string no_envelope = "\n" + std::to_string(site) + " : restful_res not exist\n\n";
    return {
        {"cut off", world::fault_reply(world::Fault::Kind::drop_after_headers),
         "\ncurl_http 1318 : method GET fail error 52\n\n"},
        {"empty", world::status_reply(200), ""},
        {"not JSON", world::json_reply("down for maintenance"), ""},
        {"no envelope", world::json_reply(R"({"systemInfo":{}})"), no_envelope},
        {"empty envelope", world::json_reply(R"({"restful_res":{}})"), ""},
    };
}
