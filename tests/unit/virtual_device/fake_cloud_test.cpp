// The fake cloud and its local service, asked by another HTTP library than the product's.
#include "testing/fake_cloud.h"

#include <httplib.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "deployment.h"
#include "testing/world_test.h"

namespace {

using nlohmann::json;

const std::string kLocal = "local";
const std::string kTfa = CLOUD_TFA_HOST;
const std::string kStore = world::kStoreHost;
const std::string kTime = world::kTimeHost;
const std::string kUrls = "/dev/tfaapi/kdumps";
const std::string kLed = "/api/system/settings/ledblink";

struct Question {
    std::string method;
    std::string host;  // kLocal: the local service
    std::string target;
    std::string body = "";
    std::string type = "application/json";
    bool with_certificate = true;
};

class FakeCloudTest : public world::WorldTest {
  protected:
    FakeCloudTest() {
        signal(SIGPIPE, SIG_IGN);  // the client library leaves that to its user
        world::name_cloud_hosts();
        world::authority().install();
        world::authority().write_client_files(world::kDeviceDir, "unit");
    }

    static httplib::Result ask(const Question &question) {
        httplib::Request request;
        request.method = question.method;
        request.path = question.target;
        request.body = question.body;
        request.set_header("Content-Type", question.type);
        if (question.host == kLocal) {
            return httplib::Client("http://127.0.0.1:8000").send(request);
        }
        const bool shown = question.with_certificate;
        httplib::SSLClient client(question.host, 443, shown ? "CRT" : "", shown ? "KEY" : "");
        client.set_ca_cert_path("", "/etc/ssl/certs");
        return client.send(request);
    }

    // 0: the connection failed.
    static int status(const Question &question) {
        const httplib::Result reply = ask(question);
        return reply ? reply->status : 0;
    }

    static json payload(const std::string &target) {
        return json::parse(ask({"GET", kLocal, target})->body)["restful_res"];
    }

    world::FakeCloud fake;
};

TEST_F(FakeCloudTest, KeepsWhatIsPutOnceAtAnUploadUrl) {
    const std::string name = json{{"filename", "/tmp/all config.tar"}}.dump();
    const json reply = json::parse(ask({"POST", kTfa, kUrls, name})->body);
    EXPECT_EQ(reply["message"], "OK");
    const std::string url = reply["upload_url"];
    const std::string origin = "https://" + kStore;
    ASSERT_EQ(url.substr(0, origin.size()), origin);
    const std::string body(300000, 'x');
    EXPECT_EQ(status({"PUT", kStore, url.substr(origin.size()), body}), 200);
    EXPECT_EQ(status({"PUT", kStore, url.substr(origin.size()), "other"}), 403);
    const auto stored = fake.cloud.stored();
    ASSERT_EQ(stored.size(), 1u);
    EXPECT_EQ(stored[0].name, "all config.tar");
    EXPECT_EQ(stored[0].sha256, world::Sha256::of(body));
    EXPECT_EQ(world::read_file(stored[0].path), body);
}

TEST_F(FakeCloudTest, RefusesWhatItDoesNotKnow) {
    const std::pair<Question, int> rows[] = {
        {{"PUT", kStore, "/up/1/a.txt?token=0", "x"}, 403},
        {{"GET", kStore, "/up/1/a.txt"}, 405},
        {{"POST", kTfa, kUrls, ""}, 400},
        {{"POST", kTfa, kUrls, "{"}, 400},
        {{"POST", kTfa, kUrls, "[]"}, 400},
        {{"POST", kTfa, kUrls, R"({"filename":""})"}, 400},
        {{"POST", kTfa, kUrls, R"({"filename":"a"})", "text/plain"}, 400},
        {{"GET", kTfa, kUrls}, 405},
        {{"GET", kTfa, "/other"}, 404},
        {{"GET", kLocal, "/api/nothing"}, 404},
        {{"DELETE", kLocal, "/api/system/status"}, 405},
        {{"PATCH", kLocal, "/api/system/status", "{}"}, 405},
        {{"PATCH", kLocal, kLed, ""}, 400},
        {{"PATCH", kLocal, kLed, "{"}, 400},
        {{"PATCH", kLocal, kLed, "{}"}, 400},
        {{"PATCH", kLocal, kLed, R"({"systemLED":1})"}, 400},
        {{"PATCH", kLocal, kLed, R"({"colour":"red"})"}, 400},
    };
    for (const auto &[question, expected] : rows) {
        EXPECT_EQ(status(question), expected)
            << question.method << question.target << question.body;
    }
    EXPECT_EQ(payload(kLed)["systemLED"], "solidLight");
    EXPECT_TRUE(payload("/api/nothing").contains("error"));
}

TEST_F(FakeCloudTest, DemandsTheClientCertificateButForTheTime) {
    EXPECT_EQ(status({"POST", kTfa, kUrls, "{}", "application/json", false}), 0);
    EXPECT_EQ(status({"PUT", kStore, "/up/1/a", "x", "text/plain", false}), 0);
    EXPECT_EQ(status({"GET", kTime, "/time", "", "text/plain", false}), 200);
}

TEST_F(FakeCloudTest, ShowsChangesToLaterGets) {
    const struct {
        std::string target, body, place, value;
    } rows[] = {
        {"/api/system/settings/time", R"({"manualTime":"2024"})", "/timeConfs/manualTime", "2024"},
        {"/api/system/cloud_proxy", R"({"proxyServer":"p"})", "/CloudProxySettings/proxyServer",
         "p"},
        {kLed, R"({"systemLED":"twinkle"})", "/systemLED", "twinkle"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(status({"PATCH", kLocal, row.target, row.body}), 200) << row.target;
        EXPECT_EQ(payload(row.target)[json::json_pointer(row.place)], row.value);
    }
}

TEST_F(FakeCloudTest, FailureLogCountsAndWrites) {
    EXPECT_EQ(payload("/api/cloud_fail_log")["conn_fail_chk"]["createLog"], true);
    EXPECT_EQ(status({"POST", kLocal, "/api/cloud_fail_log"}), 200);
    EXPECT_EQ(status({"POST", kLocal, "/api/cloud_fail_log"}), 200);
    EXPECT_EQ(payload("/api/cloud_fail_log")["conn_fail_chk"]["entries"], 2);
    const std::string log = world::read_file("/mnt/data/iss_config/cloud_conn_fail_log.txt");
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2);
}

}  // namespace
