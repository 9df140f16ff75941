#include "held_cloud.h"

#include <chrono>

#include "certificates.h"
#include "config/deployment.h"
#include "private_world.h"

namespace {

constexpr std::chrono::seconds kPatience{20};

}  // namespace

HeldCloud::HeldCloud() {
    world::add_host(CLOUD_TFA_HOST);
    world::authority().write_client_files(world::kDeviceDir);
    local_server_.emplace("127.0.0.1", 8000, local_);
    cloud_server_.emplace("127.0.0.1", 443, *this,
                          world::server_context(world::authority().issue_server({CLOUD_TFA_HOST}),
                                                world::authority(), true));
}

world::Reply HeldCloud::LocalService::answer(world::Request &) {
    return world::json_reply(R"({"restful_res":{"CloudProxySettings":{"enable":false}}})");
}

world::Reply HeldCloud::answer(world::Request &request) {
    std::unique_lock<std::mutex> lock(guard_);
    if (request.method == "PUT") {
        uploads_.push_back(request.body);
        return world::status_reply(200);
    }
    ++asked_;
    changed_.notify_all();
    changed_.wait_for(lock, kPatience, [this] { return !holding_; });
    return world::json_reply(R"({"message":"OK","upload_url":"https://)" CLOUD_TFA_HOST "/put\"}");
}

void HeldCloud::hold() {
    const std::lock_guard<std::mutex> lock(guard_);
    holding_ = true;
    asked_ = 0;
    uploads_.clear();
}

std::size_t HeldCloud::held() {
    std::unique_lock<std::mutex> lock(guard_);
    changed_.wait_for(lock, kPatience, [this] { return asked_ > 0; });
    return asked_;
}

void HeldCloud::go_on() {
    const std::lock_guard<std::mutex> lock(guard_);
    holding_ = false;
    changed_.notify_all();
}

std::size_t HeldCloud::requests_for_urls() {
    const std::lock_guard<std::mutex> lock(guard_);
    return asked_;
}

std::vector<std::string> HeldCloud::uploads() {
    const std::lock_guard<std::mutex> lock(guard_);
    return uploads_;
}
