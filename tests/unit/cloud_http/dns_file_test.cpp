#include <cstring>

#include "cloud_http_fixture.h"

namespace {

struct Line : NamedRow {
    std::string content;
    std::string read;
};

class DnsFileLine : public CloudHttpTest, public testing::WithParamInterface<Line> {};

TEST_P(DnsFileLine, IsCutAt63Characters) {
    world::write_file(kDnsFile, GetParam().content);
    std::memset(g_curl_dns_server, 'x', sizeof g_curl_dns_server - 1);
    EXPECT_EQ(ReadCurlDnsFile(), 0);
    EXPECT_EQ(g_curl_dns_server, GetParam().read);
    EXPECT_EQ(logged(), "");
}

const std::string k62(62, 'a');
const std::string k63(63, 'a');

INSTANTIATE_TEST_SUITE_P(
    Of, DnsFileLine,
    testing::Values(Line{"OneAddress", "127.0.0.1", "127.0.0.1"},
                    Line{"NewlineKept", "127.0.0.1\n", "127.0.0.1\n"},
                    Line{"FirstLineOnly", "10.0.0.1\n10.0.0.2\n", "10.0.0.1\n"},
                    Line{"EmptyLine", "\n10.0.0.2\n", "\n"},
                    Line{"ListWithBlanks", "10.0.0.1, 10.0.0.2", "10.0.0.1, 10.0.0.2"},
                    Line{"Characters62AndNewline", k62 + "\n", k62 + "\n"},
                    Line{"Characters63", k63, k63}, Line{"Characters63AndNewline", k63 + "\n", k63},
                    Line{"Characters64", k63 + "b", k63},
                    Line{"Characters100000", std::string(100000, 'a'), k63},
                    Line{"NulAtTheStart", std::string("\0b", 2), ""}),
    RowName());

class DnsFileTest : public CloudHttpTest {};

TEST_F(DnsFileTest, AMissingOrEmptyFileLeavesTheText) {
    std::strcpy(g_curl_dns_server, "kept");
    EXPECT_EQ(ReadCurlDnsFile(), -1);
    EXPECT_EQ(ReadCurlDnsFile(), -1);
    const std::string line = "\n\nReadCurlDnsFile 103 : get Curl info DNS server failed\n\n";
    EXPECT_EQ(logged(), line + line) << "at every call";
    world::write_file(kDnsFile, "");
    EXPECT_EQ(ReadCurlDnsFile(), -1);
    EXPECT_EQ(logged(), "");
    EXPECT_STREQ(g_curl_dns_server, "kept");
}

TEST_F(DnsFileTest, ReadsAnewWhenCalledDirectly) {
    for (const char *server : {"10.0.0.1", "10.0.0.2"}) {
        world::write_file(kDnsFile, server);
        EXPECT_EQ(ReadCurlDnsFile(), 0);
        EXPECT_STREQ(g_curl_dns_server, server);
    }
}

}  // namespace
