#include "host/host.h"
#include "platform/output_calls.h"
#include "platform/types.h"

#include <gtest/gtest.h>

#include <csignal>
#include <limits>

namespace {

class Output : public ::testing::Test {
protected:
    void SetUp() override { static_cast<void>(mor::host::takePrintedText()); }

    template <typename... Arguments>
    static std::wstring printed(const wchar_t* format, Arguments... arguments) {
        EXPECT_EQ(acutPrintf(format, arguments...), RTNORM);
        return mor::host::takePrintedText();
    }
};

TEST_F(Output, FormatsTexts) {
    const wchar_t* none = nullptr;
    EXPECT_EQ(printed(L"plain \u00E4\n"), L"plain \u00E4\n");
    EXPECT_EQ(printed(L"%s: invalid path \"%s\"", L"f", L"/a/"), L"f: invalid path \"/a/\"");
    EXPECT_EQ(printed(L"[%-5s][%5s][%.2s][%ls]", L"ab", L"ab", L"abc", L"x"),
              L"[ab   ][   ab][ab][x]");
    EXPECT_EQ(printed(L"[%s][%3s]", none, none), L"[][   ]");
    EXPECT_EQ(printed(L"%c%%%c", L'a', L'\u20AC'), L"a%\u20AC");
    EXPECT_EQ(printed(L"[%*s][%-*s]", 4, L"a", -3, L"b"), L"[   a][b  ]");
}

TEST_F(Output, TakesNoMoreOfATextThanThePrecisionSays) {
    const wchar_t unterminated[] = {L'a', L'b', L'c'};
    EXPECT_EQ(printed(L"%.3s", static_cast<const wchar_t*>(unterminated)), L"abc");
}

TEST_F(Output, FormatsIntegers) {
    EXPECT_EQ(printed(L"[%5ld][%ld]", 42L, 4294967296L), L"[   42][4294967296]");
    EXPECT_EQ(printed(L"[%d][%i][%+d][% d]", -1, 2, 3, 4), L"[-1][2][+3][ 4]");
    EXPECT_EQ(printed(L"[%05d][%-5d][%5.3d][%.0d]", -42, 42, 7, 0), L"[-0042][42   ][  007][]");
    EXPECT_EQ(printed(L"[%08x][%X][%#x][%#o][%u]", 0x1AFU, 0x1AFU, 1U, 8U, 4294967295U),
              L"[000001af][1AF][0x1][010][4294967295]");
    EXPECT_EQ(printed(L"[%hd][%hhu][%zu]", 65537, 257U, std::size_t{9}), L"[1][1][9]");
    EXPECT_EQ(printed(L"%ld", std::numeric_limits<long>::min()), L"-9223372036854775808");
}

TEST_F(Output, FormatsReals) {
    EXPECT_EQ(printed(L"[%f][%.2f][%8.1f][%-8.1f]", 1.5, 2.346, -1.25, 1.25),
              L"[1.500000][2.35][    -1.2][1.2     ]");
    EXPECT_EQ(printed(L"[%g][%g][%.3g][%e][%E]", 0.1, 1e20, 1234.5, 1.5, 1.5),
              L"[0.1][1e+20][1.23e+03][1.500000e+00][1.500000E+00]");
    EXPECT_EQ(printed(L"[%06.1f][%+g][%05f]", -2.5, 1.0, std::numeric_limits<double>::infinity()),
              L"[-002.5][+1][  inf]");
    EXPECT_EQ(printed(L"%.0f", 1e308).size(), 309u);
}

TEST_F(Output, LeavesUnknownConversionsAsTheyAre) {
    EXPECT_EQ(printed(L"%y %d", 5), L"%y 5");
    EXPECT_EQ(printed(L"100%"), L"100%");
    EXPECT_EQ(printed(L"%-5"), L"%-5");
}

TEST_F(Output, GoesToAPrinterWhileOneIsSet) {
    std::wstring received;
    mor::host::setPrinter([&received](std::wstring_view text) { received += text; });
    acutPrintf(L"a%d", 1);
    acutPrintf(L"b");
    mor::host::setPrinter({});
    acutPrintf(L"c");
    EXPECT_EQ(received, L"a1b");
    EXPECT_EQ(mor::host::takePrintedText(), L"c");
}

TEST_F(Output, ReportsABreakOnce) {
    EXPECT_EQ(acedUsrBrk(), 0);
    mor::host::pressBreakKey();
    mor::host::pressBreakKey();
    EXPECT_NE(acedUsrBrk(), 0);
    EXPECT_EQ(acedUsrBrk(), 0);
}

TEST_F(Output, MayBeBrokenFromASignalHandler) {
    const auto former = std::signal(SIGINT, [](int) { mor::host::pressBreakKey(); });
    std::raise(SIGINT);
    std::signal(SIGINT, former);
    EXPECT_NE(acedUsrBrk(), 0);
}

}  // namespace
