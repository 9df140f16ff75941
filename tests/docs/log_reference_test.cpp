// docs/log-reference.md names every log line of the sources, exactly, and no other.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "kdump/dump_kinds.h"
#include "log_lines.h"
#include "source_tokens.h"

namespace {

using Lines = std::set<LogLine>;

const std::string kProject = PROJECT_FOLDER;
constexpr const char *kKindTable = "kdump/dump_kinds.cpp";

std::string content_of(const std::filesystem::path &path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

Sources product_sources() {
    Sources sources;
    for (const char *room :
         {"kdump", "cloud_http", "device", "json_parser", "log", "state", "support"})
        for (const auto &entry : std::filesystem::directory_iterator(kProject + "/" + room)) {
            const std::string name = entry.path().filename();
            sources[std::string(room) + "/" + name] = content_of(entry.path());
        }
    return sources;
}

// ---- The numbers in the table of dump kinds

void add_number(Lines &lines, const std::string &row, int number, const char *field) {
    if (number != 0)
        lines.insert({row, "main", std::to_string(number), field});
}

void add_kind(Lines &lines, const DumpKind &kind) {
    const std::string word = kind.word;
    add_number(lines, word, kind.sites.announced, "announced");
    add_number(lines, word, kind.sites.busy, "busy");
    add_number(lines, word, kind.sites.marker_removed, "marker removed");
    add_number(lines, word, kind.sites.marker_kept, "marker kept");
    add_number(lines, word, kind.sites.end, "end");
    const auto files = std::count_if(std::begin(kind.files), std::end(kind.files),
                                     [](const DumpFile *file) { return file != nullptr; });
    for (const DumpFile *file : kind.files) {
        if (file == nullptr)
            continue;
        const std::string row = word + (kind.argument ? std::string(" ") + kind.argument : "") +
                                (files > 1 ? std::string(": ") + file->json_name : "");
        add_number(lines, row, file->sites.early, "early");
        add_number(lines, row, file->sites.body, "body");
        add_number(lines, row, file->sites.command, "command");
        add_number(lines, row, file->sites.request_failed, "request failed");
        add_number(lines, row, file->sites.marker_removed, "marker removed");
        add_number(lines, row, file->sites.requested, "requested");
        add_number(lines, row, file->sites.upload_failed, "upload failed");
        add_number(lines, row, file->sites.removed, "removed");
    }
}

// Every text of the table's source may be a kind's word or a second argument that a row is for.
Lines kind_numbers(const std::string &table_source) {
    std::set<std::string> texts = {"", "any other"};
    for (const Token &token : tokens_of(table_source))
        if (token.kind == Token::kText)
            texts.insert(token.text);
    Lines lines;
    for (const std::string &word : texts)
        for (const std::string &argument : texts)
            if (const DumpKind *kind = find_dump_kind(word.c_str(), argument.c_str()))
                add_kind(lines, *kind);
    return lines;
}

Lines lines_of(const Sources &sources) {
    Lines lines = log_lines(sources);
    lines.merge(kind_numbers(sources.at(kKindTable)));
    return lines;
}

// ---- The reference

std::vector<std::string> cells_of(const std::string &row) {
    std::vector<std::string> cells;
    std::stringstream rest(row.substr(1));
    for (std::string cell; std::getline(rest, cell, '|');) {
        const size_t from = cell.find_first_not_of(' ');
        cells.push_back(from == std::string::npos
                            ? ""
                            : cell.substr(from, cell.find_last_not_of(' ') + 1 - from));
    }
    return cells;
}

std::string without_backticks(const std::string &text) {
    return text.size() >= 2 && text.front() == '`' ? text.substr(1, text.size() - 2) : text;
}

void add_row(Lines &lines, const std::string &heading, const std::vector<std::string> &head,
             const std::vector<std::string> &cells) {
    if (head[0] == "Speaks as") {
        lines.insert({heading, cells.at(0), cells.at(1), without_backticks(cells.at(2))});
    } else if (head[0] == "Line") {
        lines.insert({heading, cells.at(1), cells.at(0), without_backticks(cells.at(2))});
    } else if (head[0] == "Kind" || head[0] == "File of") {
        for (size_t i = 1; i < cells.size(); ++i)
            if (!cells[i].empty())
                lines.insert({cells[0], "main", cells[i], head.at(i)});
    }
}

Lines lines_in(const std::string &reference) {
    Lines lines;
    std::string heading;
    std::vector<std::string> head;
    std::stringstream rest(reference);
    for (std::string line; std::getline(rest, line);) {
        if (line.rfind("### ", 0) == 0)
            heading = line.substr(4);
        if (line.empty() || line[0] != '|')
            head.clear();
        else if (head.empty())
            head = cells_of(line);
        else if (line.rfind("|---", 0) != 0)
            add_row(lines, heading, head, cells_of(line));
    }
    return lines;
}

std::string shown(const LogLine &line) {
    return line.where + " | " + line.speaker + " " + line.number + " | " + line.text;
}

std::vector<std::string> missing(const Lines &from, const Lines &in) {
    std::vector<std::string> found;
    for (const LogLine &line : in)
        if (from.count(line) == 0)
            found.push_back(shown(line));
    return found;
}

// ---- Tests

class LogReference : public testing::Test {
  protected:
    Sources sources = product_sources();
    std::string reference = content_of(kProject + "/docs/log-reference.md");
    Lines written = lines_in(reference);

    // While the reference is not in order, what it notices cannot be tried.
    bool in_order() { return written == lines_of(sources); }

    std::string replaced(std::string text, const std::string &old, const std::string &now) {
        const size_t at = text.find(old);
        EXPECT_NE(at, std::string::npos) << old;
        return at == std::string::npos ? text : text.replace(at, old.size(), now);
    }
};

TEST_F(LogReference, NamesEveryLineOfTheSources) {
    EXPECT_THAT(missing(written, lines_of(sources)), testing::IsEmpty())
        << "These lines are missing in docs/log-reference.md.";
}

TEST_F(LogReference, NamesNoLineThatIsGone) {
    EXPECT_THAT(missing(lines_of(sources), written), testing::IsEmpty())
        << "These lines of docs/log-reference.md are in no source.";
}

// No call is overlooked: with each text changed to a number of its own, every number is found.
TEST_F(LogReference, FindsEveryCall) {
    const std::string call = "cloud_log(\"";
    std::set<std::string> calls;
    for (auto &[name, source] : sources)
        for (size_t at = source.find(call); at != std::string::npos;
             at = source.find(call, at + 1)) {
            const std::string number = "call " + std::to_string(calls.size()) + ":";
            source.insert(at + call.size(), number);
            calls.insert(number);
        }
    std::set<std::string> found;
    for (const LogLine &line : log_lines(sources))
        found.insert(line.text.substr(0, line.text.find(':') + 1));
    EXPECT_GT(calls.size(), 70u);
    EXPECT_TRUE(std::includes(found.begin(), found.end(), calls.begin(), calls.end()));
}

// What the program really writes, in every shipped scenario, can be looked up by name and number.
TEST_F(LogReference, NamesWhatTheScenariosShow) {
    std::set<std::string> known, speakers;
    for (const LogLine &line : written) {
        known.insert(line.speaker + " " + line.number);
        speakers.insert(line.speaker);
    }
    size_t seen = 0;
    for (const auto &entry :
         std::filesystem::directory_iterator(kProject + "/virtual_device/scenarios")) {
        std::ifstream expected(entry.path());
        for (std::string line; std::getline(expected, line);) {
            std::stringstream words(line);
            std::string speaker, number;
            words >> speaker >> number;
            if (number.empty() || speakers.count(speaker) == 0 ||
                number.find_first_not_of("0123456789") == 0)
                continue;
            EXPECT_EQ(known.count(speaker + " " + number), 1u) << entry.path() << ": " << line;
            ++seen;
        }
    }
    EXPECT_GT(seen, 1000u);
}

TEST_F(LogReference, EveryRowCounts) {
    if (!in_order())
        GTEST_SKIP();
    const Lines real = lines_of(sources);
    ASSERT_GT(real.size(), 200u);
    for (const LogLine &line : written) {
        Lines fewer = written;
        fewer.erase(line);
        EXPECT_EQ(missing(fewer, real).size(), 1u) << shown(line);
    }
}

TEST_F(LogReference, NoticesAChangedCall) {
    if (!in_order())
        GTEST_SKIP();
    Sources changed = sources;
    std::string &source = changed.at("cloud_http/file_upload.cpp");
    source = replaced(source, "filename %s not found\\n\", kFunction, 383",
                      "filename %s not found!\\n\", kFunction, 383");
    EXPECT_THAT(missing(written, lines_of(changed)),
                testing::ElementsAre("cloud_http/file_upload.cpp | api_TFA_post_FILE 383 | "
                                     "%s %d filename %s not found!\\n"));
    EXPECT_THAT(missing(lines_of(changed), written),
                testing::ElementsAre("cloud_http/file_upload.cpp | api_TFA_post_FILE 383 | "
                                     "%s %d filename %s not found\\n"));
}

TEST_F(LogReference, NoticesNumbersThatAreHandedOnOrHeldInATable) {
    if (!in_order())
        GTEST_SKIP();
    for (const auto &[file, old, now] : std::vector<std::array<std::string, 3>>{
             {"kdump/turn_lock.cpp", "grant(499)", "grant(498)"},
             {"cloud_http/endpoints.cpp", "135}", "136}"},
             {"cloud_http/curl_info.cpp", "CURLINFO_LOCAL_PORT %ld", "CURLINFO_LOCAL_PORT%ld"},
             {"cloud_http/file_upload.cpp", "(kFunction, 426)", "(kFunction, 427)"},
             {"device/system_status.cpp", "1455)", "1456)"}}) {
        Sources changed = sources;
        changed.at(file) = replaced(changed.at(file), old, now);
        EXPECT_EQ(missing(written, lines_of(changed)).size(), 1u) << file;
        EXPECT_EQ(missing(lines_of(changed), written).size(), 1u) << file;
    }
}

// Whatever else stands in a source, the call behind it is found.
TEST(SourceTokens, ReadsPastEveryKindOfText) {
    const Sources sources = {{"a.cpp", R"x(
        #define QUOTE "\"
        // cloud_log("no call");
        /* cloud_log("none either"); */
        const char *json = R"({"a": "b\"})";
        char c = '"';
        void f(int x) { if (x) { cloud_log("%s %d \"%s\"" " end\n", __func__, 7, json); } }
    )x"}};
    EXPECT_EQ(log_lines(sources),
              (std::set<LogLine>{{"a.cpp", "f", "7", R"(%s %d \"%s\" end\n)"}}));
}

TEST_F(LogReference, NoticesANewCallAndARowTooMany) {
    if (!in_order())
        GTEST_SKIP();
    Sources more = sources;
    more["log/new.cpp"] = "void f() { cloud_log(\"%s %d new\\n\", __func__, 7); }";
    EXPECT_THAT(missing(written, lines_of(more)),
                testing::ElementsAre("log/new.cpp | f 7 | %s %d new\\n"));
    const std::string changed =
        replaced(reference, "| segmentrace | 900 |", "| segmentrace | 901 |");
    EXPECT_THAT(missing(lines_of(sources), lines_in(changed)),
                testing::ElementsAre("segmentrace | main 901 | announced"));
    EXPECT_THAT(missing(lines_in(changed), lines_of(sources)),
                testing::ElementsAre("segmentrace | main 900 | announced"));
}

}  // namespace
