#include "cloud_http/http_reply.h"

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "testing/logged_test.h"
#include "testing/named_row.h"

namespace {

class HttpReplyTest : public LoggedTest {
  protected:
    static size_t write(void *record, std::string text, size_t item_size = 1) {
        return http_reply_write(text.data(), item_size, text.size() / item_size, record);
    }
};

TEST_F(HttpReplyTest, NamesTheModesByTheirNumbers) {
    EXPECT_EQ(HTTP_REPLY_DISCARD, 0);
    EXPECT_EQ(HTTP_REPLY_FILE, 1);
    EXPECT_EQ(HTTP_REPLY_MEMORY, 2);
}

TEST_F(HttpReplyTest, WithoutARecordSaysSoAndDropsTheChunk) {
    EXPECT_EQ(write(nullptr, "abcdef", 2), 6u);
    EXPECT_EQ(logged(), "reply ignored\n");
}

TEST_F(HttpReplyTest, DiscardsInEveryModeThatIsNeitherFileNorMemory) {
    for (const uint32_t mode : {0u, 3u, 4u, 256u, UINT32_MAX}) {
        char path[] = "/tmp/reply";
        HttpReply reply = {mode, path, 7};
        EXPECT_EQ(write(&reply, "abcdef", 3), 6u) << mode;
        EXPECT_EQ(reply.mode, mode);
        EXPECT_EQ(reply.data, path);
        EXPECT_EQ(reply.size, 7u);
    }
    EXPECT_FALSE(world::exists("/tmp/reply"));
    EXPECT_EQ(logged(), "");
}

struct Growth : NamedRow {
    std::vector<std::string> chunks;
};

class HttpReplyMemory : public HttpReplyTest, public testing::WithParamInterface<Growth> {};

TEST_P(HttpReplyMemory, HoldsAllChunksAndATerminator) {
    HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
    std::string whole;
    for (const std::string &chunk : GetParam().chunks) {
        EXPECT_EQ(write(&reply, chunk), chunk.size());
        whole += chunk;
        ASSERT_NE(reply.data, nullptr);
        EXPECT_EQ(reply.size, whole.size() + 1);
        EXPECT_EQ(std::string(reply.data, reply.size - 1), whole);
        EXPECT_EQ(reply.data[whole.size()], '\0');
    }
    EXPECT_EQ(reply.mode, 2u);
    EXPECT_EQ(logged(), "");
    std::free(reply.data);
}

INSTANTIATE_TEST_SUITE_P(
    Of, HttpReplyMemory,
    testing::Values(Growth{"OneByte", {"a"}}, Growth{"FiveAndThree", {"12345", "678"}},
                    Growth{"TwoAndThree", {"ab", "cde"}}, Growth{"Nothing", {""}},
                    Growth{"NothingInBetween", {"ab", "", "c"}},
                    Growth{"BytesOfEveryKind", {std::string("\0\x80\xff\n%s", 6), "z"}},
                    Growth{"ManyPieces", std::vector<std::string>(1000, "0123456789")}),
    RowName());

TEST_F(HttpReplyTest, CountsItemsTimesTheirSizeInMemory) {
    HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
    EXPECT_EQ(write(&reply, "abcdef", 2), 6u);
    EXPECT_EQ(write(&reply, "gh", 2), 2u);
    EXPECT_STREQ(reply.data, "abcdefgh");
    std::free(reply.data);
}

class HttpReplyFile : public HttpReplyTest {
  protected:
    char path[16] = "/tmp/reply";
    HttpReply reply = {HTTP_REPLY_FILE, path, 5};
};

TEST_F(HttpReplyFile, CreatesTheFileAppendsAndCountsItems) {
    EXPECT_EQ(write(&reply, "abcdef", 2), 3u);
    EXPECT_EQ(write(&reply, "ghi", 1), 3u);
    EXPECT_EQ(write(&reply, "jkl", 3), 1u);
    EXPECT_EQ(world::read_file(path), "abcdefghijkl");
    EXPECT_EQ(reply.data, path);
    EXPECT_EQ(reply.size, 5u);
}

TEST_F(HttpReplyFile, CountsTheWholeItemsThatFitted) {
    struct rlimit old = {};
    getrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = old;
    small.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &small);
    const size_t items = write(&reply, std::string(100000, 'x'), 1000);
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(items, 4u);
    EXPECT_EQ(world::read_file(path).size(), 4096u);
}

TEST_F(HttpReplyFile, TakesAllBytesWhenTheFileCannotBeOpened) {
    char nowhere[] = "/tmp/no/such/folder";
    reply.data = nowhere;
    EXPECT_EQ(write(&reply, "abcdef", 2), 6u);
    EXPECT_EQ(logged(), "");
}

}  // namespace
