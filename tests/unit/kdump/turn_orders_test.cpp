// Orders in which processes claim the turn and give it back.
#include <sys/socket.h>
#include <unistd.h>

#include "kdump/turn_lock.h"
#include "testing/exhaustive.h"
#include "testing/logged_test.h"
#include "testing/paths.h"
#include "testing/spawn.h"

namespace {

using Exhaustive = LoggedTest;

// Three processes; in an order, 'a' to 'c' claim and 'A' to 'C' release.
TEST_F(Exhaustive, OrdersOfClaimsAndReleases) {
    g_console_debug = 0;
    g_turn_held = 0;
    std::vector<world::Child> workers;
    std::vector<int> ends;
    for (int i = 0; i < 3; ++i) {
        int pair[2];
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair), 0);
        ends.push_back(pair[0]);
        workers.push_back(world::spawn(world::Command([end = pair[1]] {
            for (char step; read(end, &step, 1) == 1;) {
                const int result =
                    step >= 'a' ? api_get_cloudwtpflag() : api_release_cloudwtpflag();
                const int answer[] = {result, g_turn_held};
                (void)!write(end, answer, sizeof answer);
            }
            return 0;
        })));
    }
    int held_by[3] = {0, 0, 0};
    const auto attempt = [&](const std::string &order) {
        for (const std::string content : {"", "cloud", "zorbcon", "other"}) {
            std::string expected = content;
            world::write_file(kTurnFile, content);
            for (const char step : order) {
                const auto worker = static_cast<size_t>((step | 0x20) - 'a');
                const bool claims = step >= 'a';
                const bool refused = claims && expected == "other";
                held_by[worker] = refused ? held_by[worker] : claims;
                expected = !claims ? "" : expected.empty() ? "cloud" : expected;
                int answer[2] = {9, 9};
                ASSERT_EQ(write(ends[worker], &step, 1), 1);
                ASSERT_EQ(read(ends[worker], answer, sizeof answer), ssize_t{sizeof answer});
                ASSERT_EQ(answer[0], refused ? -1 : 0) << content << order;
                ASSERT_EQ(answer[1], held_by[worker]) << content << order;
            }
            ASSERT_EQ(world::read_file(kTurnFile), expected) << content << order;
        }
    };
    std::printf("%ld orders\n",
                world::each_text(world::each_byte_of("abcABC"), world::reach(3, 5, 8), attempt));
    for (const int end : ends) {
        shutdown(end, SHUT_RDWR);
    }
}

}  // namespace
