// The file sink takes the finished line as a format once more, without arguments.

#include "base/owned.h"
#include "log_test.h"
#include "testing/exhaustive.h"
#include "testing/stdout_of.h"

namespace {

using cloudagent::OwnedFile;
using std::string_literals::operator""s;

class SecondFormat : public LogTest {
  protected:
    SecondFormat() { log_to_file(); }

    // The line in the log file of a message that is an argument.
    static std::string in_file(const std::string &message) {
        world::write_file(kLogFile, "");
        cloud_log("%s", message.c_str());
        const std::string line = world::read_file(kLogFile);
        EXPECT_EQ(line.substr(0, kStamp.size()), kStamp);
        return line.substr(kStamp.size());
    }
};

struct Expansion {
    std::string message;
    std::string in_file;
};

const Expansion kExpansions[] = {
    {"a %d b\n", "a 0 b\n"},
    {"%i%u%x%X%o", "00000"},
    {"%5d|%-5d|%05d|%+d|% d", "    0|0    |00000|+0| 0"},
    {"%.3d|%.0d|%8.3d|%.d", "000||     000|"},
    {"%#x|%#o|%'d|%Id", "0|0|0|0"},
    {"%ld|%lld|%hd|%hhd|%zd|%jd|%td|%qd|%Zu|%Ld", "0|0|0|0|0|0|0|0|0|0"},
    {"%5.2f|%f|%.0f|%+.1f", " 0.00|0.000000|0|+0.0"},
    {"%e|%E|%g|%G|%a|%A|%F", "0.000000e+00|0.000000E+00|0|0|0x0p+0|0X0P+0|0.000000"},
    {"%Lf|%lf|%Lg", "0.000000|0.000000|0"},
    {"%s|%10s|%-8s|%ls|%S", "(null)|    (null)|(null)  |(null)|(null)"},
    {"%c|%3c|%lc|%C", "\0|  \0|\0|\0"s},
    {"%p|%7p", "(nil)|  (nil)"},
    {"%n|%hhn|%lln|%5n", "|||"},
    {"%%|%5%|%l%|100%%", "%|%|%|100%"},
    {"%*d|%-*d|%.*d|%*.*f", "0|0||0"},
    {"%1$s|%2$d|%3$5.2f|%2$*1$d|%1$.*2$d", "(null)|0| 0.00|0|"},
    // stdio copies what is no conversion, as far as it has understood it.
    {"%y|%k|%!|%ly|%+ y|%05.3y", "%y|%k|%!|%y|%+y|%05.3y"},
    {"%hhhd|%lhd|%llld|%jjd|%hlu|%Lls", "%hd|%hd|%ld|%jd|%lu|%ls"},
    {"%z3d|%ll5d|%L-d|%5 d|%.3-d|%5*d|%5.3.2d", "%3d|%5d|%-d|%5 d|%.3-d|%5*d|%5.3.2d"},
    {"%5$5$d|%$d|%-5$d|%d$|%5$|", "%5$d|%$d|%-5$d|0$|%|"},
    {"%0$k|%01$d|%*0$d", "%0$k|0|%0$d"},
    {"%* 9x|%*#E|%-*I.|%.-y|%#.*k", "% 9x|%#E|%-I.|%.0-y|%#.0k"},
    {"%000000000000000000005d", "00000"},
    {"%.000000000000000000003d|%.010d", "000|0000000000"},
    {"https://host/a%20d%2Fc", "https://host/a                   00.000000c"},
};

TEST_F(SecondFormat, GivesAZeroToEachConversion) {
    for (const Expansion &row : kExpansions) {
        EXPECT_EQ(in_file(row.message), row.in_file) << row.message;
        EXPECT_EQ(logged(), row.message);
    }
}

// Leaves memory below the stack that is no zero, for whoever reads an argument that is not there.
[[gnu::noinline]] void soil_the_stack() {
    volatile char dirt[65536];
    for (volatile char &byte : dirt) {
        byte = 'A';
    }
}

TEST_F(SecondFormat, NeverReadsAnArgumentThatIsNotThere) {
    for (const char kind : {'e', 'E', 'f', 'F', 'g', 'G', 'a', 'A'}) {
        const std::string format = std::string("%.330") + kind;  // shows the smallest number too
        char zero[400];
        std::snprintf(zero, sizeof zero, format.c_str(), 0.0);
        soil_the_stack();
        EXPECT_EQ(in_file(format), zero);
    }
}

TEST_F(SecondFormat, MeetsThePercentSignsOfTheFormatToo) {
    cloud_log("%d%% of %s\n", 50, "%d");
    EXPECT_EQ(world::read_file(kLogFile), kStamp + "500f 0\n");
}

TEST_F(SecondFormat, TakesAThousandConversions) {
    std::string message;
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        message += "%s%d%n%5.2f%*d%1$s";
        expected += "(null)0 0.000(null)";
    }
    EXPECT_EQ(in_file(message), expected);
}

TEST_F(SecondFormat, TakesLargeWidths) {
    EXPECT_EQ(in_file("%1000000d|"), std::string(999999, ' ') + "0|");
    EXPECT_EQ(in_file("%.1000000d|"), std::string(1000000, '0') + "|");
}

TEST_F(SecondFormat, ReportsAConversionThatTheEndCutsShort) {
    for (const std::string tail : {"%", "%5", "%-", "%.", "%.3", "%l", "%hh", "%*", "%1$", "% "}) {
        world::write_file(kLogFile, "");
        const std::string output = stdout_of([&] { cloud_log("ab%sz%s", "%d", tail.c_str()); });
        EXPECT_EQ(output, report_for("ab%dz" + tail));
        EXPECT_EQ(world::read_file(kLogFile), kStamp + "ab0z") << tail;
        EXPECT_EQ(logged(), "ab%dz" + tail);
    }
}

TEST_F(SecondFormat, ReportsNumbersThatNoIntHolds) {
    for (const std::string conversion :
         {"%2147483648d", "%99999999999999999999d", "%4294967296d", "%.99999999999999999999d",
          "%18446744073709551617s", "%99999999999%", "%99999999999n", "%99999999999$d",
          "%.99999999999y", "%99999999999-d", "%99999999999"}) {
        EXPECT_EQ(stdout_of([&] { cloud_log("%s", conversion.c_str()); }), report_for(conversion));
    }
}

// stdio ends at such a number, whatever follows it.
TEST_F(SecondFormat, LosesNoDigitsInSilence) {
    const std::string name = "a%2020261122093000-x.bin\n";
    EXPECT_LT(std::fprintf(OwnedFile(std::fopen("/dev/null", "w")).get(), name.c_str()), 0);
    EXPECT_EQ(stdout_of([&] { cloud_log("%s", name.c_str()); }), report_for(name));
    EXPECT_EQ(world::read_file(kLogFile), kStamp + "a");
}

class Exhaustive : public SecondFormat {};

// stdio finds a zero in every register and place of the stack that a conversion takes. Left out: %n,
// which stores, and positions.
TEST_F(Exhaustive, FormatsAgreeWithStdioForZeros) {
    g_console_debug = 0;
    const world::Symbols symbols = world::each_byte_of("%.*#0-+ 'I12hlLqjztZdiouxXeEfFgGaAcsCSpy");
    std::string line;
    std::string expected;
    const auto compare = [&] {
        ASSERT_TRUE(in_file(line) == expected) << line.substr(0, 99);
        line.clear();
        expected.clear();
    };
    const auto attempt = [&](const std::string &text) {
        const std::string format = text + '|';
        char all[512];
        const int length = std::snprintf(all, sizeof all, format.c_str(), 0L, 0L, 0L, 0L, 0L, 0L,
                                         0L, 0L, 0L, 0L, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
        ASSERT_TRUE(length >= 0 && length < 512) << format;
        line += format;
        expected.append(all, static_cast<size_t>(length));
        if (line.size() > 10000) {
            compare();
        }
    };
    std::printf("%ld formats\n", world::each_text(symbols, world::reach(3, 4, 4), attempt, "%"));
    compare();
}

}  // namespace
