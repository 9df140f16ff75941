#include "failing_memory.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void __libc_free(void *block);
}

namespace {

struct Block {
    void *address;
    std::size_t number;
};

constexpr std::size_t kPlaces = 1 << 16;  // a power of two, several times what is ever live
Block g_blocks[kPlaces];                  // by address, the next free place when that is taken

bool g_following = false;
bool g_watching = false;
std::size_t g_fail_at = 0;
failing_memory::Mode g_mode = failing_memory::Mode::kOnce;
std::size_t g_asked = 0;
std::size_t g_failed = 0;
std::size_t g_live = 0;
const void *g_first_refused = nullptr;  // where the first allocation that failed was asked for
bool *g_of_openssl = nullptr;
std::size_t g_of_openssl_size = 0;

bool is_in_openssl(const void *place) {
    Dl_info found;
    return dladdr(place, &found) != 0 && (std::strstr(found.dli_fname, "libcrypto") != nullptr ||
                                          std::strstr(found.dli_fname, "libssl") != nullptr);
}

std::size_t place_of(void *address) {
    const auto bits = reinterpret_cast<std::uintptr_t>(address);
    return static_cast<std::size_t>((bits >> 4) * 0x9E3779B97F4A7C15u >> 40) % kPlaces;
}

void remember(void *address, std::size_t number) {
    std::size_t at = place_of(address);
    while (g_blocks[at].address != nullptr)
        at = (at + 1) % kPlaces;
    g_blocks[at] = {address, number};
    if (++g_live > kPlaces / 2)
        std::abort();  // the table is too small for its task
}

// Takes an entry out and moves up those that would no longer be found behind the gap.
void take_out(std::size_t gap) {
    for (std::size_t at = (gap + 1) % kPlaces; g_blocks[at].address != nullptr;
         at = (at + 1) % kPlaces) {
        const std::size_t wish = place_of(g_blocks[at].address);
        if ((at - wish) % kPlaces >= (at - gap) % kPlaces) {
            g_blocks[gap] = g_blocks[at];
            gap = at;
        }
    }
    g_blocks[gap] = {};
    --g_live;
}

void forget(void *address) {
    if (address == nullptr || !g_following)
        return;
    for (std::size_t at = place_of(address); g_blocks[at].address != nullptr;
         at = (at + 1) % kPlaces) {
        if (g_blocks[at].address == address) {
            take_out(at);
            return;
        }
    }
}

bool must_fail(const void *asker) {
    if (!g_watching)
        return false;
    ++g_asked;
    if (g_asked < g_of_openssl_size)
        g_of_openssl[g_asked] = is_in_openssl(asker);
    const bool fails =
        g_fail_at != 0 &&
        (g_mode == failing_memory::Mode::kOnce ? g_asked == g_fail_at : g_asked >= g_fail_at);
    if (fails) {
        if (g_failed++ == 0)
            g_first_refused = asker;
        errno = ENOMEM;
    }
    return fails;
}

void *noted(void *address) {
    if (g_following && address != nullptr)
        remember(address, g_watching ? g_asked : 0);
    return address;
}

}  // namespace

extern "C" {

void *malloc(std::size_t size) noexcept {
    return must_fail(__builtin_return_address(0)) ? nullptr : noted(__libc_malloc(size));
}

void *calloc(std::size_t count, std::size_t size) noexcept {
    return must_fail(__builtin_return_address(0)) ? nullptr : noted(__libc_calloc(count, size));
}

void *realloc(void *block, std::size_t size) noexcept {
    if (must_fail(__builtin_return_address(0)))
        return nullptr;
    forget(block);
    return noted(__libc_realloc(block, size));
}

void free(void *block) noexcept {
    forget(block);
    __libc_free(block);
}

}  // extern "C"

namespace failing_memory {

void follow() { g_following = true; }

void watch(std::size_t fail_at, Mode mode) {
    for (Block &block : g_blocks)
        block.number = 0;
    g_fail_at = fail_at;
    g_mode = mode;
    g_asked = 0;
    g_failed = 0;
    g_of_openssl_size = 0;
    g_watching = true;
}

void watch_askers(bool *of_openssl, std::size_t size) {
    watch(0, Mode::kOnce);
    g_of_openssl = of_openssl;
    g_of_openssl_size = size;
}

void give_back() { g_fail_at = 0; }

void stop() { g_watching = false; }

std::size_t asked() { return g_asked; }
std::size_t failed() { return g_failed; }
bool openssl_asked() { return g_failed != 0 && is_in_openssl(g_first_refused); }

std::size_t live() { return g_live; }

std::size_t first_live() {
    std::size_t first = 0;
    for (const Block &block : g_blocks) {
        if (block.number != 0 && (first == 0 || block.number < first))
            first = block.number;
    }
    return first;
}

}  // namespace failing_memory
