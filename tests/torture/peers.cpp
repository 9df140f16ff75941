#include "peers.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>

#include "certificates.h"
#include "files.h"
#include "http_server.h"
#include "private_world.h"

namespace {

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

class LocalPeer : public world::HttpHandler {
    world::Reply answer(world::Request &request) override {
        const std::string path = request.path();
        if (request.method != "GET") {
            world::write_file(kLocalChange, request.method + " " + path + " " + request.body);
            return world::json_reply("{}");
        }
        return world::json_reply(R"({"restful_res":)" + payload_of(path) + "}");
    }
};

class CloudPeer : public world::HttpHandler {
    world::Admission admit(const std::string &server_name) override {
        return server_name == kCloudHost ? world::Admission::welcome_with_certificate
                                         : world::Admission::welcome;
    }
    world::Reply answer(world::Request &request) override {
        if (request.method == "PUT") {
            world::write_file(kStoredUpload, request.body);
            return world::status_reply(200, "stored");
        }
        if (request.path() == "/time")
            return world::json_reply(R"({"time":"2026-11-20T21:35:07Z"})");
        return world::json_reply(std::string(R"({"message":"OK","upload_url":")") + kUploadUrl +
                                 "\"}");
    }
};

[[noreturn]] void serve(int ready) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    LocalPeer local;
    CloudPeer cloud;
    world::authority().install();
    world::authority().write_client_files(world::kDeviceDir);
    const world::HttpServer local_server("127.0.0.1", 8000, local);
    const world::HttpServer cloud_server(
        "127.0.0.1", 443, cloud,
        world::server_context(world::authority().issue_server({kCloudHost, kTimeHost}),
                              world::authority(), false));
    if (write(ready, "", 1) == 1)
        for (;;)
            pause();
    _exit(1);
}

}  // namespace

void start_peers() {
    std::filesystem::create_directories("/run/world/torture");
    world::add_host(kCloudHost);
    world::add_host(kTimeHost);
    clear_peers();
    int ready[2];
    if (pipe(ready) != 0)
        throw std::runtime_error("no pipe");
    if (fork() == 0)
        serve(ready[1]);
    close(ready[1]);
    char nothing;
    if (read(ready[0], &nothing, 1) != 1)
        throw std::runtime_error("the peers cannot be started");
    close(ready[0]);
}

void clear_peers() {
    for (const std::string &file : {kStoredUpload, kLocalChange, kProxySettings, kNoFailLogs})
        unlink(file.c_str());
}
