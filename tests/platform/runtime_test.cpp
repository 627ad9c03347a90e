#include "platform/runtime.h"

#include "host/host.h"
#include "platform/entity_name.h"
#include "platform/list_calls.h"
#include "platform/owned.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <map>

namespace mor {
namespace {

TEST(Runtime, ClassifiesByUnicodeWhateverTheLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    const struct {
        wchar_t c;
        bool alpha, alnum;
    } cases[] = {{L'a', true, true},        {L'Z', true, true},        {L'7', false, true},
                 {L'_', false, false},      {L'@', false, false},      {L'[', false, false},
                 {L'\u00E4', true, true},   {L'\u0416', true, true},   {L'\u4E2D', true, true},
                 {L'\u00D7', false, false}, {L'\u2013', false, false}, {L'\0', false, false}};
    for (const auto& c : cases) {
        EXPECT_EQ(isAlpha(c.c), c.alpha) << static_cast<long>(c.c);
        EXPECT_EQ(isAlnum(c.c), c.alnum) << static_cast<long>(c.c);
    }
}

TEST(Runtime, UpperCasesByUnicode) {
    EXPECT_EQ(upperCase(L"az{`\u00E4\u0436\u00DF1"), L"AZ{`\u00C4\u0416\u00DF1");
    EXPECT_EQ(toUpper(L'\u00FF'), L'\u0178');
}

TEST(Runtime, OrdersWithoutCase) {
    EXPECT_TRUE(equalNoCase(L"Wall\u00E4", L"WALL\u00C4"));
    EXPECT_FALSE(equalNoCase(L"wall", L"walls"));
    EXPECT_LT(compareNoCase(L"a", L"B"), 0);
    EXPECT_GT(compareNoCase(L"b", L"A"), 0);
    EXPECT_LT(compareNoCase(L"ab", L"ABC"), 0);
    EXPECT_LT(compareNoCase(L"Z", L"_"), 0) << "letters are compared as upper case";
    const std::map<std::wstring, int, LessNoCase> map{{L"Layer", 1}};
    EXPECT_TRUE(map.contains(L"LAYER"));
}

class ListCalls : public ::testing::Test {
protected:
    void SetUp() override { m_open = open(); }
    void TearDown() override { EXPECT_EQ(open(), m_open); }
    [[nodiscard]] std::size_t newOpen() const { return open() - m_open; }

private:
    [[nodiscard]] static std::size_t open() { return host::counters().resbufsOpen; }
    std::size_t m_open = 0;
};

TEST_F(ListCalls, BuildAListInTheOrderGiven) {
    const ads_point origin = {1.0, 2.0, 3.0};
    const ads_name name = {5, 6};
    const ResbufList list{acutBuildList(RTDXF0, L"INSERT", 2, L"MOR", 10, origin, 40, 1.5, 67, -1,
                                        90, INT_MAX, -2, name, RTNIL, 330, name, 0)};
    EXPECT_EQ(newOpen(), 9u);
    EXPECT_STREQ(list.get()->resval.rstring, L"INSERT");
    EXPECT_EQ(list.get()->restype, 0);
    EXPECT_STREQ(findGroup(list, 2)->resval.rstring, L"MOR");
    EXPECT_EQ(findGroup(list, 10)->resval.rpoint[2], 3.0);
    EXPECT_EQ(findGroup(list, 40)->resval.rreal, 1.5);
    EXPECT_EQ(findGroup(list, 67)->resval.rint, -1);
    EXPECT_EQ(findGroup(list, 90)->resval.rlong, INT_MAX);
    EXPECT_EQ(EntityName{findGroup(list, -2)->resval.rlname}, EntityName(5, 6));
    EXPECT_EQ(EntityName{findGroup(list, 330)->resval.rlname}, EntityName(5, 6));
    EXPECT_EQ(findGroup(list, RTNIL)->rbnext->restype, 330);
    EXPECT_EQ(findGroup(list, 99), nullptr);
}

TEST_F(ListCalls, CopyTheirTexts) {
    std::wstring text = L"abc";
    const ResbufList list{acutBuildList(RTSTR, text.c_str(), 8, nullptr, 0)};
    text = L"xyz";
    EXPECT_STREQ(list.get()->resval.rstring, L"abc");
    EXPECT_EQ(list.get()->rbnext->resval.rstring, nullptr);
}

TEST_F(ListCalls, BuildNothingFromNothingOrFromAnUnknownType) {
    EXPECT_EQ(acutBuildList(0), nullptr);
    EXPECT_EQ(acutBuildList(8, L"0", 4999, 1, 0), nullptr);
}

TEST_F(ListCalls, ReleaseElementsMadeOneByOne) {
    ResbufList list{acutNewRb(RTSTR)};
    EXPECT_EQ(list.get()->resval.rstring, nullptr);
    list.get()->resval.rstring = static_cast<wchar_t*>(acad_malloc(2 * sizeof(wchar_t)));
    list.get()->resval.rstring[0] = L'\0';
    list.get()->rbnext = acutNewRb(RTSHORT);
    EXPECT_EQ(newOpen(), 2u);
    EXPECT_EQ(acutRelRb(list.release()), RTNORM);
    EXPECT_EQ(newOpen(), 0u);
    EXPECT_EQ(acutRelRb(nullptr), RTNORM);
}

TEST_F(ListCalls, StayCountedWhenTheCountersAreReset) {
    const ResbufList list{acutNewRb(RTSHORT)};
    host::resetCounters();
    EXPECT_EQ(newOpen(), 1u);
}

}  // namespace
}  // namespace mor
