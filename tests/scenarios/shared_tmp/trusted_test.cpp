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

using Trusted = SharedTmp;

TEST_F(Trusted, CloudNamesAnyAddressToSendTo) {
    world::DeviceRun device(scenario(R"({"about": "a", "tfa": [{"json": {"message": "OK",
        "upload_url": "http://127.0.0.1:8000/api/system/settings/time"}}]})"),
                            setup());
    device.run("kdump RAM");
    const auto exchanges = device.outcome().exchanges;
    EXPECT_EQ(exchanges.back().method, "PUT");
    EXPECT_EQ(exchanges.back().url, "http://127.0.0.1:8000/api/system/settings/time");
}

// The project's libcurl knows no scheme that would write a file.
TEST_F(Trusted, CloudNamesNoFile) {
    const char *const *schemes = curl_version_info(CURLVERSION_NOW)->protocols;
    if (std::any_of(schemes, schemes + count_of(schemes),
                    [](const char *scheme) { return std::string(scheme) == "file"; }))
        GTEST_SKIP() << "this libcurl knows file URLs";
    world::DeviceRun device(scenario(R"({"about": "a", "tfa": [{"json": {"message": "OK",
        "upload_url": "file:///mnt/data/victim"}}]})"),
                            setup());
    device.run("kdump RAM");
    EXPECT_EQ(victim(), kVictimContent);
    EXPECT_TRUE(world::exists("/tmp/cloud_dbg.txt"));
}

TEST_F(Trusted, CloudWritesIntoTheLog) {
    world::DeviceRun device(scenario(R"({"about": "a", "tfa": [{"json": {"message": "OK",
        "upload_url": "x\n[Mon Nov 16 06:57:51 2026]main 900 segmentrace\u001b[2J"}}]})"),
                            setup());
    device.run("kdump RAM");
    EXPECT_THAT(device.outcome().commands.front().console,
                testing::HasSubstr("\n[Mon Nov 16 06:57:51 2026]main 900 segmentrace\x1b[2J"));
}

TEST_F(Trusted, LocalServiceNamesTheProxy) {
    world::DeviceRun device(
        scenario(R"({"about": "a", "proxy": {"server": "127.0.0.1", "port": 9}})"), setup());
    device.run("kdump RAM");
    const auto exchanges = device.outcome().exchanges;
    EXPECT_THAT(device.outcome().stored, testing::IsEmpty());
    for (const world::Exchange &exchange : exchanges)
        EXPECT_EQ(exchange.url, "http://127.0.0.1:8000/api/system/cloud_proxy");
}

TEST_F(Trusted, CallersArgumentIsShellText) {
    world::DeviceRun device(scenario(R"({"about": "a"})"), setup());
    device.run("kdump CONFIG 'x; echo ran >/mnt/data/victim; true'");
    EXPECT_EQ(victim(), "ran\n");
}

TEST_F(Trusted, CallersPathNamesTheTools) {
    world::DeviceRun device(scenario(R"({"about": "a"})"), setup());
    world::write_file("/run/device/tools/cp", "#!/bin/sh\necho ran >/mnt/data/victim\n");
    std::filesystem::permissions("/run/device/tools/cp", std::filesystem::perms(0755));
    device.run("PATH=/run/device/tools:$PATH kdump segmentrace");
    EXPECT_EQ(victim(), "ran\n");
}

// The tool's environment is the program's.
TEST_F(Trusted, WhatLibrariesAndToolsWouldReadIsForgotten) {
    world::DeviceRun device(scenario(R"({"about": "a"})"), setup());
    world::write_file("/run/device/tools/cp", "#!/bin/sh\nenv >/mnt/data/victim\n");
    std::filesystem::permissions("/run/device/tools/cp", std::filesystem::perms(0755));
    std::string variables;
    for (const char *names :
         {"http_proxy https_proxy HTTPS_PROXY all_proxy ALL_PROXY no_proxy NO_PROXY SSLKEYLOGFILE",
          "CARES_HOSTS HOSTALIASES LOCALDOMAIN RES_OPTIONS SSL_CERT_DIR SSL_CERT_FILE CTLOG_FILE",
          "OPENSSL_CONF OPENSSL_CONF_INCLUDE OPENSSL_ENGINES OPENSSL_MODULES RANDFILE",
          "ENV BASH_ENV SHELLOPTS BASHOPTS TAR_OPTIONS TAPE RSH TMPDIR POSIXLY_CORRECT",
          "VERSION_CONTROL SIMPLE_BACKUP_SUFFIX"}) {
        std::istringstream words(names);
        for (std::string name; words >> name;) {
            variables += name + "=/mnt/data/set ";
        }
    }
    device.run("env -i " + variables + "OTHER=stays TZ=UTC0 PATH=/run/device/tools:$PATH " +
               setup().kdump + " segmentrace");
    EXPECT_THAT(victim(), testing::HasSubstr("OTHER=stays\n"));
    EXPECT_THAT(victim(), testing::HasSubstr("TZ=UTC0\n"));
    EXPECT_THAT(victim(), testing::Not(testing::HasSubstr("/mnt/data/set")));
}

}  // namespace
