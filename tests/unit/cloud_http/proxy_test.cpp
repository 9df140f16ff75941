#include "cloud_http/proxy.h"

#include "cloud_http_fixture.h"
#include "testing/guarded.h"

namespace {

const std::string kAsked = "\n\nc_cloud_proxy_get 27\n\n\n";
const std::string kFailed = "\n\nc_cloud_proxy_get 23\n\n\n";
const std::string kNotChanged = "\n\nc_cloud_proxy_get 57 Proxy Server not change\n\n\n";
const std::string kSwitchedOff = "\n\nc_cloud_proxy_get 32 proxy_string \"\"\n\n\n";
const std::string kNoServer =
    "\n\nc_cloud_proxy_get 41 sizeof(proxy_string) 4 proxy_string \"\"\n\n\n";
const std::string kNoEnvelope = "\n21 : restful_res not exist\n\n";

std::string changed_to(const std::string &text) {
    return "\n\nc_cloud_proxy_get 60 Proxy Server change to \"" + text + "\"\n\n\n";
}

class ProxyTest : public CloudHttpTest {
  protected:
    ProxyTest() {
        buffer.set("old.host:1");
        before = buffer.first(160);
    }

    // The whole caller's buffer after a call with that result.
    std::string get(int result) {
        EXPECT_EQ(c_cloud_proxy_get(buffer.data()), result);
        EXPECT_TRUE(buffer.untouched_from(160));
        return buffer.first(160);
    }

    void publish_reply(const std::string &reply) {
        local_service->on("GET /api/system/cloud_proxy", {status_reply(200, reply)});
    }

    Guarded<160> buffer;
    std::string before;
};

const bool g_empty_at_start = g_proxy_server[0] == '\0';  // read before the first test

TEST_F(ProxyTest, HasRoomFor160BytesAndIsEmptyAtStart) {
    EXPECT_EQ(sizeof g_proxy_server, 160u);
    EXPECT_TRUE(g_empty_at_start);
}

TEST_F(ProxyTest, AsksTheLocalServiceOncePerCall) {
    c_cloud_proxy_get(buffer.data());
    c_cloud_proxy_get(buffer.data());
    EXPECT_EQ(local_service->asked(), std::vector<std::string>(2, "GET /api/system/cloud_proxy"));
    EXPECT_EQ(local_service->requests().at(0).header("Host"), "127.0.0.1:8000");
}

struct Text : NamedRow {
    const char *members;
    std::string text;
};

class ProxyText : public ProxyTest, public testing::WithParamInterface<Text> {};

TEST_P(ProxyText, IsBuiltOnceAndThenKnown) {
    publish_proxy(GetParam().members);
    for (const std::string &line : {changed_to(GetParam().text), kNotChanged}) {
        get(0);
        EXPECT_EQ(buffer.data(), GetParam().text);
        EXPECT_EQ(logged(), kAsked + line);
    }
}

#define SERVER R"("enable":true,"proxyServer":"10.1.1.1")"
INSTANTIATE_TEST_SUITE_P(
    From, ProxyText,
    testing::Values(
        Text{"ServerAndPort", SERVER R"(,"proxyServerPort":3128)", "10.1.1.1:3128"},
        Text{"PortZero", SERVER R"(,"proxyServerPort":0)", "10.1.1.1:80"},
        Text{"PortMissing", SERVER, "10.1.1.1:80"},
        Text{"PortAsText", SERVER R"(,"proxyServerPort":"3128")", "10.1.1.1:80"},
        Text{"PortTrue", SERVER R"(,"proxyServerPort":true)", "10.1.1.1:80"},
        Text{"PortNull", SERVER R"(,"proxyServerPort":null)", "10.1.1.1:80"},
        Text{"PortWithFraction", SERVER R"(,"proxyServerPort":3128.9)", "10.1.1.1:3128"},
        Text{"PortBelowOne", SERVER R"(,"proxyServerPort":0.5)", "10.1.1.1:80"},
        Text{"PortNegative", SERVER R"(,"proxyServerPort":-1)", "10.1.1.1:4294967295"},
        Text{"PortAbove65535", SERVER R"(,"proxyServerPort":70000)", "10.1.1.1:70000"},
        Text{"ServerMissing", R"("enable":true)", ":80"},
        Text{"ServerMissingWithPort", R"("enable":true,"proxyServerPort":8080)", ":8080"},
        Text{"ServerAsNumber", R"("enable":true,"proxyServer":5,"proxyServerPort":81)", ":81"},
        Text{"ServerNull", R"("enable":true,"proxyServer":null)", ":80"},
        Text{"ServerNoneInCapitals", R"("enable":true,"proxyServer":"None")", "None:80"},
        Text{"ServerBeginningWithNone", R"("enable":true,"proxyServer":"none1")", "none1:80"},
        Text{"ServerWithPercent", R"("enable":true,"proxyServer":"%s%n")", "%s%n:80"},
        Text{"KeysInOtherCase", R"("ENABLE":true,"PROXYSERVER":"h","PROXYSERVERPORT":9)", "h:9"}),
    RowName());

struct Refusal : NamedRow {
    const char *members;
    size_t cleared;  // bytes from the start of the buffer; the others stay
    std::string log;
};

class ProxyRefusal : public ProxyTest, public testing::WithParamInterface<Refusal> {};

TEST_P(ProxyRefusal, ClearsAsMuchAsItsCase) {
    publish_proxy(GetParam().members);
    const size_t cleared = GetParam().cleared;
    EXPECT_EQ(get(-1), std::string(cleared, '\0') + before.substr(cleared));
    EXPECT_EQ(logged(), kAsked + GetParam().log);
}

INSTANTIATE_TEST_SUITE_P(
    When, ProxyRefusal,
    testing::Values(
        Refusal{"SwitchedOff", R"("enable":false,"proxyServer":"h")", 160, kSwitchedOff},
        Refusal{"ServerNone", R"("enable":true,"proxyServer":"none")", 4, kNoServer},
        Refusal{"ServerNoneWithPort",
                R"("enable":true,"proxyServer":"none","proxyServerPort":3128)", 4, kNoServer},
        Refusal{"ServerEmpty", R"("enable":true,"proxyServer":"")", 4, kNoServer},
        Refusal{"EnableAsText", R"("enable":"true","proxyServer":"h")", 0, ""},
        Refusal{"EnableAsNumber", R"("enable":1,"proxyServer":"h")", 0, ""},
        Refusal{"EnableNull", R"("enable":null,"proxyServer":"h")", 0, ""},
        Refusal{"EnableMissing", R"("proxyServer":"h")", 0, ""}),
    RowName());

struct Unreadable : NamedRow {
    std::string reply;
    std::string log;
};

class ProxyUnreadable : public ProxyTest, public testing::WithParamInterface<Unreadable> {};

TEST_P(ProxyUnreadable, LeavesTheBufferAlone) {
    publish_reply(GetParam().reply);
    EXPECT_EQ(get(-1), before);
    EXPECT_EQ(logged(), GetParam().log + kFailed);
}

INSTANTIATE_TEST_SUITE_P(
    When, ProxyUnreadable,
    testing::Values(
        Unreadable{"Empty", "", ""}, Unreadable{"NotJson", "<html>", ""},
        Unreadable{"CutShort", R"({"restful_res":{"CloudProxySettings":)", ""},
        Unreadable{"DeeplyNested", std::string(100000, '['), ""},
        Unreadable{"NoEnvelope", R"({"CloudProxySettings":{"enable":true}})", kNoEnvelope},
        Unreadable{"EnvelopeInAnArray", R"([{"restful_res":{}}])", kNoEnvelope},
        Unreadable{"JustANumber", "1", kNoEnvelope}, Unreadable{"JustNull", "null", kNoEnvelope},
        Unreadable{"EnvelopeAsText", R"({"restful_res":"CloudProxySettings"})", ""},
        Unreadable{"EnvelopeAsArray", R"({"restful_res":[{"CloudProxySettings":{}}]})", ""},
        Unreadable{"NoSettings", R"({"restful_res":{"Other":{"enable":true}}})", ""}),
    RowName());

TEST_F(ProxyTest, SettingsOfAnotherKindHoldNoEnable) {
    for (const std::string settings : {"null", "[]", "5", "\"enable\"", "[true]"}) {
        publish_reply(R"({"restful_res":{"CloudProxySettings":)" + settings + "}}");
        EXPECT_EQ(get(-1), before) << settings;
        EXPECT_EQ(logged(), kAsked) << settings;
    }
}

TEST_F(ProxyTest, UnreachableServiceLeavesTheBufferAlone) {
    local_service.reset();
    EXPECT_EQ(get(-1), before);
    EXPECT_EQ(logged(), "\ncurl_http 1318 : method GET fail error 7\n\n" + kFailed);
}

TEST_F(ProxyTest, ReadsTheBodyOfAnErrorStatusToo) {
    local_service->on(
        "GET /api/system/cloud_proxy",
        {status_reply(500, R"({"restful_res":{"CloudProxySettings":{)" SERVER "}}}")});
    get(0);
    EXPECT_STREQ(buffer.data(), "10.1.1.1:80");
}

TEST_F(ProxyTest, ForgetsAndFindsTheServerAgain) {
    for (const char *members : {R"("enable":false)", R"("enable":true,"proxyServer":"none")"}) {
        publish_proxy(SERVER);
        get(0);
        publish_proxy(members);
        get(-1);
        EXPECT_STREQ(buffer.data(), "");
        publish_proxy(SERVER);
        console.clear();
        get(0);
        EXPECT_EQ(logged(), kAsked + changed_to("10.1.1.1:80"));
    }
}

TEST_F(ProxyTest, CutsWhatIsLongerThanTheBuffer) {
    for (const size_t length : {151u, 155u, 156u, 157u, 158u, 159u, 160u, 161u, 5000u}) {
        const std::string server(length, 's');
        const std::string cut = (server + ":3128").substr(0, 159);
        publish_proxy(R"("enable":true,"proxyServerPort":3128,"proxyServer":")" + server + "\"");
        buffer.set("old.host:1");
        get(0);
        EXPECT_EQ(buffer.data(), cut) << length;
        get(0);
        EXPECT_EQ(logged(), kAsked + changed_to(cut) + kAsked + kNotChanged) << length;
    }
}

TEST_F(ProxyTest, WorksWithLoggingOff) {
    g_console_debug = 0;
    publish_proxy(SERVER);
    EXPECT_EQ(c_cloud_proxy_get(g_proxy_server), 0);
    EXPECT_STREQ(g_proxy_server, "10.1.1.1:80");
    EXPECT_EQ(logged(), "");
}

}  // namespace
