// The functions that libFuzzer and replay_main.cpp call, for every target.
#include <fcntl.h>
#include <resolv.h>
#include <sys/stat.h>

#include <csignal>

#include "fuzz.h"
#include "replies.h"
#include "testing/calls.h"
#include "testing/private_world.h"
#include "testing/shown_folders.h"

namespace {

void forbid_calls() {
    calls::answer<std::system>() = [](const char *) {
        REQUIRE(false);
        return -1;
    };
    calls::answer<::kill>() = [](int, int) {
        REQUIRE(false);
        return -1;
    };
    calls::answer<::sleep>() = [](unsigned) {
        REQUIRE(false);
        return 0;
    };
    // Reads the resolver's configuration, which no input changes.
    calls::answer<res_init>() = [] { return 0; };
}

// The lowest free descriptor: unchanged if nothing was left open.
int free_descriptor() {
    const int descriptor = dup(STDERR_FILENO);
    close(descriptor);
    return descriptor;
}

}  // namespace

namespace fuzz {

void write_descriptor(int descriptor, std::string_view content) {
    REQUIRE(descriptor >= 0);
    REQUIRE(ftruncate(descriptor, 0) == 0);
    REQUIRE(pwrite(descriptor, content.data(), content.size(), 0) ==
            static_cast<ssize_t>(content.size()));
}

void write_file(const char *path, std::string_view content) {
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    write_descriptor(descriptor, content);
    close(descriptor);
}

}  // namespace fuzz

extern "C" int LLVMFuzzerInitialize(int *, char ***arguments) {
    world::enter();
    world::move_inside(*arguments + 1);  // the name stays: libFuzzer insists
    setenv("TZ", "UTC0", 1);
    forbid_calls();
    if (fuzz::target.begin != nullptr) {
        fuzz::target.begin();
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    const int descriptor = free_descriptor();
    fuzz::target.try_input(fuzz::Input(data, size));
    REQUIRE(free_descriptor() == descriptor);
    REQUIRE(fuzz::all_released());
    return 0;
}
