#include "virtual_device/expected_text.h"

#include "testing/sha256.h"
#include "testing/world_test.h"

namespace {

TEST(ExpectedText, LegibleShowsControlBytesAndCountsLongRuns) {
    EXPECT_EQ(world::legible("a\tb\nc"), "a\tb\nc");
    EXPECT_EQ(world::legible(std::string("\0\x1b", 2)), "\\x00\\x1b");
    EXPECT_EQ(world::legible(std::string(40, 'x')), std::string(40, 'x'));
    EXPECT_EQ(world::legible("a" + std::string(41, 'x') + "b"), "a<x*41>b");
}

TEST(ExpectedText, BytesAreNamedByTheFileTheyEqual) {
    const std::string digest = world::Sha256::of("dump");
    const world::FileTree known = {{"/tmp/dump", {4, digest, "dump", ""}}};
    EXPECT_EQ(world::describe_bytes(4, digest, "dump", known), "the 4 bytes of /tmp/dump");
    EXPECT_EQ(world::describe_bytes(5, digest, "dumpx", known), "dumpx");
    EXPECT_EQ(world::describe_bytes(0, "", "", known), "empty");
    EXPECT_EQ(world::describe_bytes(9000, "", "start only", known), "9000 bytes");
}

world::Outcome small_outcome() {
    world::Outcome outcome;
    world::CommandResult command;
    command.line = "kdump RAM";
    command.console = "[Mon Nov 16 06:57:51 2026]main 1284 RAM\n\n";
    outcome.commands.push_back(command);
    outcome.before["/tmp/a"] = {1, world::Sha256::of("a"), "a", ""};
    outcome.before["/tmp/b"] = {1, world::Sha256::of("b"), "b", ""};
    outcome.after["/tmp/a"] = {1, world::Sha256::of("c"), "c", ""};
    outcome.after["/tmp/d"] = {0, world::Sha256::of(""), "", "/nowhere"};
    return outcome;
}

TEST(ExpectedText, ShowsConsoleWithoutStampsAndChangedFiles) {
    EXPECT_EQ(world::expected_text(small_outcome()),
              "== run: kdump RAM\nexit 0\n== console\nmain 1284 RAM\n\n"
              "== files\nremoved /tmp/b\nchanged /tmp/a: c\ncreated /tmp/d: link to /nowhere\n");
}

TEST(ExpectedText, ShowsEachPartThatHasSomething) {
    world::Outcome outcome = small_outcome();
    world::Exchange exchange;
    exchange.method = "PUT";
    exchange.url = "https://host/x";
    exchange.client_certificate = "unit";
    exchange.headers = {{"content-type", "text/plain"}};
    exchange.body = "hi";
    exchange.body_size = 2;
    exchange.status = 403;
    outcome.exchanges.push_back(exchange);
    outcome.sleeps = {10, 10};
    outcome.reboots = 1;
    const std::string text = world::expected_text(outcome);
    EXPECT_NE(text.find("== requests\n1. PUT https://host/x\n   client certificate: unit\n"
                        "   Content-Type: text/plain\n   body: hi\n   -> 403\n"),
              std::string::npos);
    EXPECT_NE(text.find("== sleeps\n10 10\n== reboots\n1\n"), std::string::npos);
}

}  // namespace
