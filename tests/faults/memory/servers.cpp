#include "servers.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <thread>

#include "testing/certificates.h"
#include "testing/files.h"
#include "testing/private_world.h"
#include "testing/scripted_server.h"
#include "testing/spawn.h"

namespace {

constexpr const char *kTimeAddress = "127.0.0.2";  // its server demands no certificate

const std::map<std::string, std::string> kResources = {
    {"/api/system/cloud_proxy", R"({"CloudProxySettings":{"enable":false}})"},
    {"/api/system/status",
     R"({"systemInfo":{"macAddr":"88:dc:96:01:02:03","serialNo":"S1","upTime":86400}})"},
    {"/api/system/settings/time", R"({"timeConfs":{"sntpTimeZone":"UTC"}})"},
    {"/api/system/settings/ledblink", "{}"},
    {"/api/cloud_fail_log", R"({"conn_fail_chk":{"createLog":true}})"},
};

std::string payload_of(const std::string &path) {
    if (path == "/api/system/cloud_proxy" && world::exists(kProxySettings))
        return world::read_file(kProxySettings);
    if (path == "/api/cloud_fail_log" && world::exists(kNoFailLogs))
        return R"({"conn_fail_chk":{"createLog":false}})";
    return kResources.at(path);
}

world::Reply local_answer(const world::Request &request) {
    const std::string path = request.path();
    if (request.method != "GET") {
        world::write_file(kLocalChange, request.method + " " + path + " " + request.body);
        return world::json_reply("{}");
    }
    return world::json_reply(R"({"restful_res":)" + payload_of(path) + "}");
}

world::Reply cloud_answer(const world::Request &request) {
    if (request.method == "PUT") {
        world::write_file(kStoredUpload, request.body);
        return world::status_reply(200, "stored");
    }
    return world::json_reply(std::string(R"({"message":"OK","upload_url":")") + kUploadUrl + "\"}");
}

world::Reply time_answer(const world::Request &) {
    return world::json_reply(R"({"time":"2026-11-20T21:35:07Z"})");
}

int serve(int ready) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    world::authority().install();
    world::authority().write_client_files(world::kDeviceDir);
    world::ServerSetup time_setup =
        world::tls_on(443, {kTimeHost}, /*demand_client_certificate=*/false);
    time_setup.address = kTimeAddress;
    world::ScriptedServer local({}, local_answer);
    world::ScriptedServer cloud(world::tls_on(443, {kCloudHost}), cloud_answer);
    world::ScriptedServer time(time_setup, time_answer);
    if (write(ready, "", 1) != 1)
        return 1;
    for (;;) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
        for (world::ScriptedServer *server : {&local, &cloud, &time})
            server->forget_requests();
    }
}

}  // namespace

void start_servers() {
    std::filesystem::create_directories("/run/world/torture");
    world::add_host(kCloudHost);
    world::add_host(kTimeHost, kTimeAddress);
    reset_servers();
    int ready[2];
    if (pipe(ready) != 0)
        throw std::runtime_error("no pipe");
    world::spawn(world::Command([&] { return serve(ready[1]); })).release();
    close(ready[1]);
    char nothing;
    if (read(ready[0], &nothing, 1) != 1)
        throw std::runtime_error("the servers cannot be started");
    close(ready[0]);
}

void reset_servers() {
    for (const std::string &file : {kStoredUpload, kLocalChange, kProxySettings, kNoFailLogs})
        unlink(file.c_str());
}
