// Every short content of the state files.
#include <cstdio>

#include "accessors.h"
#include "state_test.h"
#include "testing/exhaustive.h"

namespace {

// A getter takes the first word of a content, and a number the beginning of that word.
std::string word_of(const std::string &content) {
    const size_t begin = content.find_first_not_of(" \n");
    return begin == std::string::npos
               ? ""
               : content.substr(begin, content.find_first_of(" \n", begin) - begin);
}

uint32_t number_of(const std::string &word, uint32_t otherwise) {
    const size_t digits = word.find_first_not_of("+-") == 1 ? 1 : 0;
    if (word.find_first_of("0123456789") != digits) {
        return otherwise;
    }
    const auto number = static_cast<uint32_t>(std::stoul(word.substr(digits)));
    return word[0] == '-' ? 0 - number : number;
}

using Exhaustive = StateTest;

TEST_F(Exhaustive, ContentsOfStateFiles) {
    const auto attempt = [](const std::string &content) {
        const uint32_t read = number_of(word_of(content), 77);
        for (const NumberGetter &getter : number_getters()) {
            const bool is_debug = getter.name == "api_cloud_debug_get";
            const bool is_switch = !is_debug && getter.path.find(kSettings) == 0;
            world::write_file(getter.path, content);
            uint32_t value = 77;
            getter.get(&value);
            EXPECT_EQ(value, is_debug && read > 2    ? 0
                             : is_switch && read > 1 ? 1
                                                     : read)
                << getter.name << " '" << content << "'";
        }
        for (const TextGetter &getter : text_getters()) {
            world::write_file(getter.path, content);
            char value[256] = "untouched";
            getter.get(value);
            EXPECT_EQ(value, word_of(content).empty() ? "untouched" : word_of(content))
                << getter.name << " '" << content << "'";
        }
    };
    const world::Symbols symbols = world::each_byte_of("0129-+ \nx%");
    std::printf("%ld contents\n", world::each_text(symbols, world::reach(2, 3, 4), attempt));
}

}  // namespace
