#include "space/model_space.h"

#include "platform/owned.h"
#include "tests/space/space_fixture.h"
#include "tests/support/dxf_drawing.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

std::wstring textOf(const ResbufList& list, int code) {
    const resbuf* group = findGroup(list, code);
    return group == nullptr || group->resval.rstring == nullptr ? L"" : group->resval.rstring;
}

/// A drawing with a block DOOR, a line A1 in model space and a line A2 on paper.
class ModelSpace : public SpaceTest {
protected:
    void SetUp() override {
        SpaceTest::SetUp();
        const DxfDrawing drawing{
            .layers = {"0", "WALLS"},
            .blocks = blockDefinition("DOOR", lineEntity("D1", "0")),
            .entities = lineEntity("A1", "WALLS") + lineEntity("A2", "0|67 1")};
        auto opened = host::openDocument(drawing.save("model_space.dxf"));
        ASSERT_TRUE(opened) << opened.error().message();
        host::closeDocument(replaceDocument(opened.value()));
        ASSERT_TRUE(m_space.connect());
    }
    CMORCadSpace m_space;
};

TEST_F(ModelSpace, IsConnectedWriteableAndNamed) {
    EXPECT_TRUE(m_space.isConnected());
    EXPECT_TRUE(m_space.isWriteable());
    EXPECT_STREQ(m_space.getName(), L"ModelSpace");
}

TEST_F(ModelSpace, TheLetterIsLocalValidAndNoReference) {
    CMORCadLetterModelSpace letter;
    EXPECT_TRUE(letter.isModelSpace() && letter.isValid() && letter.isLocal());
    EXPECT_FALSE(letter.isXRef());
    EXPECT_FALSE(letter.hasName(L"ModelSpace"));
}

TEST_F(ModelSpace, IsNotFoundByName) {
    CMORCadSpace space;
    EXPECT_FALSE(space.connect(L"ModelSpace"));
    EXPECT_TRUE(space.isEmpty());
}

TEST_F(ModelSpace, FindsBlocksAndSymbolsUnderTheirOwnNames) {
    const struct {
        const wchar_t* table;
        const wchar_t* symbol;
        const wchar_t* found;
    } cases[] = {{L"BLOCK", L"door", L"DOOR"},
                 {L"LAYER", L"WALLS", L"WALLS"},
                 {L"BLOCK", L"WALLS", L""},
                 {L"NOSUCH", L"DOOR", L""}};
    for (const auto& c : cases) {
        const ResbufList record{m_space.tblSearch(c.table, c.symbol)};
        EXPECT_EQ(textOf(record, 2), c.found) << host::toUtf8(c.table);
    }
    EXPECT_EQ(textOf(ResbufList{m_space.searchBlock(L"DOOR")}, 2), L"DOOR");
    EXPECT_EQ(m_space.searchBlock(L"WALLS"), nullptr);
}

TEST_F(ModelSpace, FindsHandlesWhereverTheEntityLies) {
    for (const wchar_t* handle : {L"A1", L"a2", L"D1"}) {
        ads_name name{};
        EXPECT_TRUE(m_space.handEnt(handle, name)) << host::toUtf8(handle);
        EXPECT_EQ(host::findHandle(document(), handle), EntityName{name});
    }
    ads_name name{};
    EXPECT_FALSE(m_space.handEnt(L"FFFF", name));
    EXPECT_FALSE(m_space.handEnt(L"no handle", name));
}

TEST_F(ModelSpace, AFailingPlatformLookUpIsAnAnswer) {
    ads_name name{};
    host::faults::failCall("acdbHandEnt", 1);
    EXPECT_FALSE(m_space.handEnt(L"A1", name));
    host::faults::failCall("acdbTblSearch", 1);
    EXPECT_EQ(m_space.searchBlock(L"DOOR"), nullptr);
}

}  // namespace
}  // namespace mor::test
