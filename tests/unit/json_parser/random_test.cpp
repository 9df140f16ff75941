// Random documents, random near-documents and all short texts, judged by a plain recursive parser
// that shares nothing with the layer, and printed and parsed again.
#include <iterator>
#include <random>
#include <sstream>
#include <vector>

#include "json_test.h"
#include "plain_parser.h"
#include "testing/exhaustive.h"
#include "testing/spawn.h"

namespace {

class RandomText {
  public:
    explicit RandomText(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t limit) { return random_() % limit; }

    std::string document(int depth) {
        const std::size_t kind = below(depth > 0 ? 8 : 6);
        if (kind < 6) {
            return pick(kScalars);
        }
        std::string text = blank() + (kind == 6 ? "[" : "{");
        for (std::size_t i = below(5); i > 0; --i) {
            text += blank() + (kind == 6 ? "" : pick(kStrings) + blank() + ":") + blank();
            text += document(depth - 1) + blank() + (i > 1 ? "," : "");
        }
        return text + (kind == 6 ? "]" : "}");
    }

    // A document with a few pieces put in, bytes taken out or the end cut off.
    std::string damaged() {
        std::string text = document(4);
        for (std::size_t i = below(3) + 1; i > 0; --i) {
            const std::size_t place = below(text.size() + 1);
            const std::size_t how = below(3);
            if (how == 0) {
                text.insert(place, pick(kPieces));
            } else {
                text.erase(place, how == 1 ? 1 : below(20) == 0 ? std::string::npos : 2);
            }
        }
        return text;
    }

  private:
    using Pieces = std::vector<std::string>;

    static Pieces words(const std::string &text) {
        std::istringstream stream(text);
        return {std::istream_iterator<std::string>(stream), {}};
    }

    std::string pick(const Pieces &pieces) { return pieces[below(pieces.size())]; }
    std::string blank() { return below(4) == 0 ? pick({" ", "\n\t", "\r \x01"}) : ""; }

    static inline const Pieces kStrings = {
        R"("a")",    R"("")",        R"("-1.5")",  R"("\"]")",          R"("\\")",
        R"("k\n7")", "\"\xc3\xa9\"", R"("/\/{[")", R"("\u0041\u00e9")", R"("\uD83D\ude00")"};
    static inline const Pieces kScalars =
        words(R"(0 1 -5 007 1.5 12.25e3 1e-2 18446744073709551615 99 -0 123456 05 true false null)"
              R"( "x" "\"5," "" 7E+1 4294967295 18446744073709551617)");
    static inline const Pieces kPieces = {
        "{",    "}",   "[",  "]",    ",",    ":",   "\"a\"", "\"\\n\"",     "\"\\q\"", "1",
        "0",    "-",   "-5", "1.5",  "007",  "1e5", "1.",    "e",           ".",       "+",
        "true", "nul", " ",  "\t",   "\x7f", "\"",  "\\",    "{\"k\":",     "[1,",     "\"b\":",
        "]}",   "x",   "E3", "\xEF", "-.5",  "00",  "\\u",   "\"\\u1234\"", "\\uD834", "\\udd1e"};

    std::mt19937 random_;
};

// Compares the tree, or the place of the failure, in both modes.
bool agree(const std::string &text) {
    bool agrees = true;
    for (const bool uint64 : {false, true}) {
        PlainParser plain_parser(text, uint64);
        const std::string expected = plain_parser.parse();
        const char *const begin = text.c_str();
        const OwnedJson document(uint64 ? parseJsonTextLongLongUint(begin) : parseJsonText(begin));
        agrees = agrees && (document ? dump(document.get()) : "") == expected &&
                 (document || cJSON_GetErrorPtr() - begin == plain_parser.at());
    }
    return agrees;
}

TEST(Random, DocumentsParseAsAPlainParserReadsThem) {
    RandomText random(1);
    for (int i = 0; i < 30000; ++i) {
        const std::string text = random.document(5);
        ASSERT_TRUE(agree(text)) << text;
    }
}

TEST(Random, DamagedDocumentsFailWhereAPlainParserFails) {
    RandomText random(2);
    for (int i = 0; i < 60000; ++i) {
        const std::string text = random.damaged();
        ASSERT_TRUE(agree(text)) << text;
    }
}

TEST(Random, PrintedDocumentsParseToTheSamePrint) {
    RandomText random(4);
    for (int i = 0; i < 20000; ++i) {
        const std::string text = random.document(5);
        for (const OwnedJson &document : {parsed(text), parsed_uint64(text)}) {
            if (!document) {
                continue;
            }
            const std::string printed = plain(document);
            // Numbers may lose digits the first time they are printed, and none after that.
            const std::string again = plain(parsed(printed));
            ASSERT_EQ(plain(parsed(formatted(parsed(again)))), again) << text;
            ASSERT_EQ(plain(parsed(formatted(document))), again) << text;
        }
    }
}

// Words and an escape count as one symbol. Two processes share the work.
TEST(Exhaustive, ShortTextsParseAsAPlainParserReadsThem) {
    const world::Symbols symbols = {"true", "false", "null", R"(\n)", "{", "}", "[",
                                    "]",    ",",     ":",    "\"",    "0", "1", "-"};
    const int length = world::reach(4, 6, 8);
    const auto work = [&](int part) {
        int wrong = 0;
        const auto attempt = [&](const std::string &text) {
            if (!agree(text) && wrong < 9) {
                wrong += std::printf("differs: %s\n", text.c_str()) > 0;
            }
        };
        for (std::size_t i = static_cast<std::size_t>(part); i < symbols.size(); i += 2) {
            world::each_text(symbols, length - 1, attempt, symbols[i]);
        }
        return wrong;
    };
    EXPECT_EQ(world::run_together(2, work), (std::vector<int>{0, 0}));
}

// Four bytes, alone and behind the first half of a surrogate pair, in a value and in a name.
TEST(Exhaustive, TailsOfAnEscapeParseAsAPlainParserReadsThem) {
    const world::Symbols edges = world::each_byte_of("09/:@AFG`afgDd\"\\");
    const auto attempt = [](const std::string &tail) {
        for (const std::string before : {"[\"a\\u", "{\"\\u", "[\"\\uD834\\u"}) {
            const std::string text = before + tail + (before[0] == '{' ? "\":0}" : "\"]");
            ASSERT_TRUE(agree(text)) << text;
        }
    };
    EXPECT_EQ(world::each_text(edges, 4, attempt), 69905);
}

}  // namespace
