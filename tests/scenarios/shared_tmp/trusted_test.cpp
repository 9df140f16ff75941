// The power of those whom the program trusts: cloud, local service, caller.
#include <curl/curl.h>

#include <algorithm>
#include <sstream>

#include "shared_tmp.h"

namespace {

std::ptrdiff_t count_of(const char *const *texts) {
    std::ptrdiff_t count = 0;
    while (texts[count] != nullptr)
        ++count;
    return count;
}

class Trusted : public SharedTmp {
  protected:
    static world::Outcome run_with_url(const std::string &url) {
        return run("kdump RAM",
                   R"("tfa": [{"json": {"message": "OK", "upload_url": ")" + url + R"("}}])");
    }

    // Puts a shell script in cp's place, in a folder for PATH.
    static void replace_cp(const std::string &script) {
        world::write_file("/run/device/tools/cp", "#!/bin/sh\n" + script);
        std::filesystem::permissions("/run/device/tools/cp", std::filesystem::perms(0755));
    }
};

TEST_F(Trusted, CloudNamesAnyAddressToSendTo) {
    const std::string url = "http://127.0.0.1:8000/api/system/settings/time";
    const auto exchanges = run_with_url(url).exchanges;
    EXPECT_EQ(exchanges.back().method, "PUT");
    EXPECT_EQ(exchanges.back().url, url);
}

// The project's libcurl knows no scheme that would write a file.
TEST_F(Trusted, CloudNamesNoFile) {
    const char *const *schemes = curl_version_info(CURLVERSION_NOW)->protocols;
    if (std::any_of(schemes, schemes + count_of(schemes),
                    [](const char *scheme) { return std::string(scheme) == "file"; })) {
        GTEST_SKIP() << "this libcurl knows file URLs";
    }
    run_with_url("file:///mnt/data/victim");
    EXPECT_EQ(victim(), kVictimContent);
    EXPECT_TRUE(world::exists("/tmp/cloud_dbg.txt"));
}

TEST_F(Trusted, CloudWritesIntoTheLog) {
    const world::Outcome outcome =
        run_with_url(R"(x\n[Mon Nov 16 06:57:51 2026]main 900 segmentrace\u001b[2J)");
    EXPECT_THAT(outcome.commands.front().console,
                testing::HasSubstr("\n[Mon Nov 16 06:57:51 2026]main 900 segmentrace\x1b[2J"));
}

TEST_F(Trusted, LocalServiceNamesTheProxy) {
    const world::Outcome outcome =
        run("kdump RAM", R"("proxy": {"server": "127.0.0.1", "port": 9})");
    EXPECT_THAT(outcome.stored, testing::IsEmpty());
    for (const world::Exchange &exchange : outcome.exchanges) {
        EXPECT_EQ(exchange.url, "http://127.0.0.1:8000/api/system/cloud_proxy");
    }
}

TEST_F(Trusted, CallersArgumentIsShellText) {
    run("kdump CONFIG 'x; echo ran >/mnt/data/victim; true'");
    EXPECT_EQ(victim(), "ran\n");
}

TEST_F(Trusted, CallersPathNamesTheTools) {
    run("PATH=/run/device/tools:$PATH kdump segmentrace", "",
        [] { replace_cp("echo ran >/mnt/data/victim\n"); });
    EXPECT_EQ(victim(), "ran\n");
}

// The tool's environment is the program's.
TEST_F(Trusted, WhatLibrariesAndToolsWouldReadIsForgotten) {
    std::istringstream words(
        "http_proxy https_proxy HTTPS_PROXY all_proxy ALL_PROXY no_proxy NO_PROXY SSLKEYLOGFILE "
        "CARES_HOSTS HOSTALIASES LOCALDOMAIN RES_OPTIONS SSL_CERT_DIR SSL_CERT_FILE CTLOG_FILE "
        "OPENSSL_CONF OPENSSL_CONF_INCLUDE OPENSSL_ENGINES OPENSSL_MODULES RANDFILE "
        "ENV BASH_ENV SHELLOPTS BASHOPTS TAR_OPTIONS TAPE RSH TMPDIR POSIXLY_CORRECT "
        "VERSION_CONTROL SIMPLE_BACKUP_SUFFIX");
    std::string variables;
    for (std::string name; words >> name;) {
        variables += name + "=/mnt/data/set ";
    }
    run("env -i " + variables + "OTHER=stays TZ=UTC0 PATH=/run/device/tools:$PATH " +
            setup().kdump + " segmentrace",
        "", [] { replace_cp("env >/mnt/data/victim\n"); });
    EXPECT_THAT(victim(), testing::HasSubstr("OTHER=stays\n"));
    EXPECT_THAT(victim(), testing::HasSubstr("TZ=UTC0\n"));
    EXPECT_THAT(victim(), testing::Not(testing::HasSubstr("/mnt/data/set")));
}

}  // namespace
