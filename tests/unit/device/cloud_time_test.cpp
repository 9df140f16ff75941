// The cloud's time over plain HTTP and TLS.
#include "cloud_time_test.h"

#include <chrono>

namespace {

world::ServerSetup on_port(uint16_t port) {
    world::ServerSetup setup;
    setup.port = port;
    return setup;
}

const std::string kAsked = "url: http://time.test/time\n<statistics>\n";

class CloudTime : public CloudTimeTest {
  protected:
    // One call with the cloud answering that; what was logged.
    std::string ask(const world::Reply &reply) {
        cloud.on("GET /time", {reply});
        EXPECT_EQ(api_get_time("http", kHost), -1);
        return logged();
    }

    static std::string logged_reply(const std::string &text) {
        return kAsked + ("\n\n api_get_time json (" + std::to_string(text.size() + 1)) +
               " bytes):\n" + text + "\n";
    }

    world::ScriptedServer cloud{on_port(80)};
};

TEST_F(CloudTime, ReachesTheDevicesClockWithoutItsLastCharacter) {
    const std::string reply = time_reply("2024-05-01T08:00:00Z");
    EXPECT_EQ(ask(json_reply(reply)), logged_reply(reply));
    EXPECT_EQ(asked(),
              (std::vector<std::string>{
                  "GET /api/system/settings/time",
                  R"(PATCH /api/system/settings/time {"manualTime":"2024-05-01T08:00:00"})"}));
    EXPECT_EQ(cloud.asked(), std::vector<std::string>{"GET /time"});
    EXPECT_EQ(cloud.requests().at(0).header("Host"), "time.test");
}

TEST_F(CloudTime, BodiesOfTimesOfEachLength) {
    const auto time_of = [](size_t length) {
        return std::string("0123456789").append(140, 't').substr(0, length);
    };
    const std::string start = R"({"manualTime":")";
    const struct {
        size_t length;
        std::string body;
    } rows[] = {
        {0, start + "\"}"},
        {1, start + "\"}"},
        {2, start + "0\"}"},
        {20, start + time_of(19) + "\"}"},
        {83, start + time_of(82) + "\"}"},
        {84, start + time_of(83) + "\""},
        {85, start + time_of(84)},
        {86, start + time_of(84)},
        {99, start + time_of(84)},
        {100, start + time_of(84)},
        {101, start + time_of(84)},
        {150, start + time_of(84)},
    };
    std::vector<std::string> expected;
    for (const auto &row : rows) {
        EXPECT_LE(row.body.size(), 99u);
        ask(json_reply(time_reply(time_of(row.length))));
        expected.push_back(row.body);
    }
    EXPECT_EQ(times_set(), expected);
}

TEST_F(CloudTime, SpecialCharactersAreTakenAsTheyAre) {
    ask(json_reply(R"({"time":"%s%n\"x"})"));
    EXPECT_EQ(times_set(), std::vector<std::string>{R"({"manualTime":"%s%n""})"});
}

TEST_F(CloudTime, ZoneIsNotAppended) {
    set_zone(R"({"sntpTimeZone":""})");
    ask(json_reply(time_reply("12Z")));
    EXPECT_EQ(times_set(), std::vector<std::string>{R"({"manualTime":"12"})"});
}

TEST_F(CloudTime, IsNotAskedForWithoutAScheme) {
    EXPECT_EQ(api_get_time(nullptr, kHost), -1);
    EXPECT_EQ(logged(), "url: (null)://time.test/time\n<statistics>\ncurl error (3) \n");
    EXPECT_TRUE(cloud.requests().empty());
    EXPECT_TRUE(asked().empty());
}

TEST_F(CloudTime, OnlyStatus200IsAccepted) {
    const std::string body = time_reply("12Z");
    const struct {
        world::Reply reply;
        const char *error;
    } rows[] = {
        {status_reply(201, body), "curl error (0) \n"},
        {status_reply(204), "curl error (0) \n"},
        {world::redirect_reply("http://time.test/other", 301), "curl error (0) \n"},
        {world::redirect_reply("http://time.test/other", 302), "curl error (0) \n"},
        {status_reply(304), "curl error (0) \n"},
        {status_reply(400, body), "curl error (22) The requested URL returned error: 400\n"},
        {status_reply(404, body), "curl error (22) The requested URL returned error: 404\n"},
        {status_reply(503, body), "curl error (22) The requested URL returned error: 503\n"},
        {world::fault_reply(world::Fault::Kind::drop_after_headers),
         "curl error (52) Empty reply from server\n"},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(ask(row.reply), kAsked + row.error) << row.reply.status;
    }
    EXPECT_EQ(cloud.requests().size(), std::size(rows)) << "redirects are not followed";
    EXPECT_TRUE(asked().empty());
}

TEST_F(CloudTime, TextOfABrokenTransferIsNotUsed) {
    world::Reply reply = json_reply(time_reply("12Z") + std::string(100, ' '));
    reply.fault = {world::Fault::Kind::truncate, 20};
    EXPECT_NE(ask(reply).find("curl error (18) "), std::string::npos);
    EXPECT_TRUE(asked().empty());
}

TEST_F(CloudTime, StatisticsComeBeforeTheErrorLine) {
    cloud.on("GET /time", {status_reply(204)});
    api_get_time("http", kHost);
    const std::string lines = LoggedTest::logged();
    const size_t status = lines.find("CURLINFO_RESPONSE_CODE 204\n");
    EXPECT_LT(lines.find("CURLINFO_EFFECTIVE_URL http://time.test/time\n"), status);
    EXPECT_NE(lines.find("curl error (0) \n", status), std::string::npos);
}

TEST_F(CloudTime, UnreachableCloudIsLogged) {
    EXPECT_EQ(api_get_time("http", "127.0.0.1:81"), -1);
    const std::string lines = logged();
    EXPECT_EQ(lines.find("url: http://127.0.0.1:81/time\n<statistics>\ncurl error (7) Failed"), 0u)
        << lines;
    EXPECT_TRUE(asked().empty());
}

TEST_F(CloudTime, EmptyReplyIsLogged) {
    EXPECT_EQ(ask(status_reply(200)), kAsked + "empty reply from time API ?!\n");
    EXPECT_TRUE(asked().empty());
}

TEST_F(CloudTime, RepliesWithoutATimeEndSilently) {
    for (const char *text : {"down", "[]", "{}", R"({"time":1234})", R"({"time":null})",
                             R"({"time":{"time":"12Z"}})", R"({"restful_res":{"time":"12Z"}})"}) {
        EXPECT_EQ(ask(json_reply(text)), logged_reply(text));
    }
    EXPECT_TRUE(asked().empty());
}

TEST_F(CloudTime, UnreadableSettingsAreLeftAlone) {
    const std::string reply = time_reply("12Z");
    for (const char *settings : {"{}", R"({"sntpTimeZone":8})", R"({"sntpTimeZone":null})"}) {
        set_zone(settings);
        EXPECT_EQ(ask(json_reply(reply)), logged_reply(reply)) << settings;
    }
    EXPECT_TRUE(times_set().empty());
    for_each_unusable_reply("system/settings/time", 1423, [&](const std::string &lines) {
        EXPECT_EQ(ask(json_reply(reply)), logged_reply(reply) + lines);
        EXPECT_TRUE(!local || times_set().empty());
    });
}

TEST_F(CloudTime, OutcomeOfTheSettingIsNotExamined) {
    const std::string reply = time_reply("12Z");
    for (const world::Reply &outcome :
         {status_reply(500, "no"), status_reply(204), json_reply("{}")}) {
        local->on("PATCH /api/system/settings/time", {outcome});
        EXPECT_EQ(ask(json_reply(reply)), logged_reply(reply));
    }
    EXPECT_EQ(times_set().size(), 3u);
}

TEST_F(CloudTime, UrlIsCutAt255) {
    const std::string start = "http://127.0.0.1:80/";
    for (const size_t length : {234u, 235u, 236u, 300u, 5000u}) {
        const std::string path(length - std::string("/time").size(), 'p');
        const std::string expected = (start + path + "/time").substr(0, 255);
        EXPECT_EQ(api_get_time("http", ("127.0.0.1:80/" + path).c_str()), -1);
        const std::string lines = logged();
        EXPECT_EQ(lines.substr(0, lines.find('\n')), "url: " + expected) << length;
        EXPECT_EQ(cloud.requests().back().target, expected.substr(start.size() - 1)) << length;
    }
}

TEST_F(CloudTime, WorksTheSameWithoutALog) {
    g_console_debug = 0;
    EXPECT_EQ(ask(json_reply(time_reply("12Z"))), "");
    EXPECT_EQ(times_set().size(), 1u);
}

// Over TLS the server is verified against /etc/ssl/certs/.
class CloudTimeTls : public CloudTimeTest {
  protected:
    // Some builds of libcurl need a bundle; this one verifies nothing that is used here.
    CloudTimeTls() {
        world::write_file("/etc/ssl/certs/ca-certificates.crt",
                          world::CertificateAuthority("bundle").identity().certificate_pem());
    }

    // One call to a cloud whose certificate, for that host, was issued by that authority.
    std::string ask(const world::CertificateAuthority &issuer, const char *certified_host = kHost) {
        world::ServerSetup setup = world::tls_on(443, {certified_host}, false);
        setup.signed_by = &issuer;
        world::ScriptedServer cloud(setup);
        cloud.on("GET /time", {json_reply(time_reply("12Z"))});
        EXPECT_EQ(api_get_time("https", kHost), -1);
        requests_ = cloud.requests().size();
        return logged();
    }

    static std::string refusal(const std::string &lines) {
        const std::string start = "url: https://time.test/time\n<statistics>\ncurl error (60) SSL";
        return lines.compare(0, start.size(), start) == 0 ? "refused" : lines;
    }

    size_t requests_ = 0;
};

TEST_F(CloudTimeTls, TrustedServerSetsTheClock) {
    world::authority().install();
    EXPECT_THAT(ask(world::authority()), testing::EndsWith("\n{\"time\":\"12Z\"}\n"));
    EXPECT_EQ(times_set(), std::vector<std::string>{R"({"manualTime":"12"})"});
}

TEST_F(CloudTimeTls, AnotherAuthorityIsRefusedUntilItIsInstalled) {
    const world::CertificateAuthority stranger("stranger");
    world::authority().install();
    EXPECT_EQ(refusal(ask(stranger)), "refused");
    EXPECT_EQ(requests_, 0u);
    EXPECT_TRUE(asked().empty());
    stranger.install();
    ask(stranger);
    EXPECT_EQ(times_set().size(), 1u);
}

TEST_F(CloudTimeTls, NobodyIsTrustedWithoutAnAuthorityOrTheHostsCertificate) {
    EXPECT_EQ(refusal(ask(world::authority())), "refused");
    world::authority().install();
    EXPECT_EQ(refusal(ask(world::authority(), "other.test")), "refused");
    EXPECT_TRUE(asked().empty());
}

}  // namespace
