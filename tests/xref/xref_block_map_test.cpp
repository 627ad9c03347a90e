#include "xref/xref_block_map.h"

#include "platform/owned.h"
#include "platform/table_calls.h"
#include "tests/xref/reference_fixture.h"
#include "xref/block_search.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

namespace mor::test {
namespace {

constexpr const wchar_t* kFailed = L"Xrefhandle [NOSUCH] tblsearch failed \n";

std::wstring textOf(const resbuf* list, int code) {
    const resbuf* group = findGroup(list, code);
    return group == nullptr || group->resval.rstring == nullptr ? L"" : group->resval.rstring;
}

class BlockMaps : public ReferenceTest {
protected:
    void load(const wchar_t* name = L"PLAN") { ASSERT_TRUE(m_map.Load(name)); }
    /// Name, flags and path of a block, then the handle of its first entity; "none" for an unknown
    /// one.
    [[nodiscard]] std::wstring look(const wchar_t* name) const { return look(m_map, name); }
    static std::wstring look(const CXrefBlockMap& map, const wchar_t* name) {
        const ResbufList list{map.BlockSearch(name)};
        if (!list) return L"none";
        EXPECT_EQ(std::wstring{list.get()->resval.rstring}, L"BLOCK");
        EXPECT_EQ(textOf(list.get(), 2), textOf(list.get(), 3));
        return textOf(list.get(), 2) + L" " + std::to_wstring(findGroup(list, 70)->resval.rint) +
               L" " + textOf(list.get(), 1) + L" " + handleOf(findGroup(list, -2)->resval.rlname);
    }
    CXrefBlockMap m_map;
};

TEST_F(BlockMaps, ListTheReferencesBlocksUnderTheirOwnNames) {
    load();
    const std::pair<const wchar_t*, const wchar_t*> blocks[] = {
        {L"DOOR", L"DOOR 0 DOOR B1"},
        {L"door", L"DOOR 0 DOOR B1"},
        {L"TITLE", L"TITLE 2 TITLE B2"},
        {L"EMPTY", L"EMPTY 0 EMPTY none"},
        {L"GATE", L"none"},
        {L"PLAN|DOOR", L"none"},
        {L"CORE", L"CORE 4 core.dxf F1"},
        {L"OVER", L"OVER 12 core.dxf none"}};
    for (const auto& [name, shown] : blocks) EXPECT_EQ(look(name), shown);
    EXPECT_EQ(printed(), L"");
}

TEST_F(BlockMaps, AgreeWithTableSearchesOnTheBasePointOfAReference) {
    DxfDrawing{.entities = lineEntity("F1", "0"), .header = "9 $INSBASE|10 3.0|20 4.0|30 0.0|"}
        .save("core.dxf");
    open(siteDrawing().save("site.dxf"));
    load();
    const ResbufList core{m_map.BlockSearch(L"CORE")};
    const ResbufList same{acdbTblSearch(L"BLOCK", L"PLAN|CORE", 0)};
    EXPECT_EQ(findGroup(core, 10)->resval.rpoint[1], 4.0);
    EXPECT_EQ(findGroup(same, 10)->resval.rpoint[1], 4.0);
}

TEST_F(BlockMaps, TellAttributesAndAnonymousBlocksWithoutTheirFlags) {
    open(
        DxfDrawing{.blocks = blockDefinition("PART", lineEntity("B1", "0") + "0 ATTDEF|8 0|2 NO|") +
                             blockDefinition("*U12", lineEntity("B2", "0")) +
                             blockDefinition("*Paper_Space0", "") + blockDefinition("*U", "") +
                             blockDefinition("BOTH", "", 3)}
            .save("site.dxf"));
    load(L"PART");
    for (const auto& [name, flags] :
         {std::pair{L"PART", 2}, {L"*U12", 1}, {L"*Paper_Space0", 0}, {L"*U", 0}, {L"BOTH", 3}})
        EXPECT_EQ(findGroup(ResbufList{m_map.BlockSearch(name)}, 70)->resval.rint, flags)
            << host::toUtf8(name);
}

TEST_F(BlockMaps, AnswerInTheOrderOfATableSearch) {
    load();
    const ResbufList list{m_map.BlockSearch(L"EMPTY")};
    std::wstring codes;
    for (const resbuf* element = list.get(); element != nullptr; element = element->rbnext)
        codes += std::to_wstring(element->restype) + L" ";
    EXPECT_EQ(codes, L"0 2 70 -2 10 3 1 ");
    EXPECT_TRUE(EntityName{findGroup(list, -2)->resval.rlname}.isNone());
    EXPECT_EQ(findGroup(list, 10)->resval.rpoint[0], 0.0);
}

TEST_F(BlockMaps, AFailedLoadIsReportedAndMayBeRepeated) {
    EXPECT_FALSE(m_map.Load(L"NOSUCH"));
    EXPECT_EQ(printed(), kFailed);
    EXPECT_FALSE(m_map.Load(L"LOST"));  // has no entity that a database could hold
    EXPECT_FALSE(m_map.Load(nullptr) || m_map.BuildFromBlockTable(nullptr));
    EXPECT_EQ(m_map.BlockSearch(L"DOOR"), nullptr);
    load();
    EXPECT_FALSE(m_map.Load(L"PLAN") || m_map.Load(L"NOSUCH"));
    EXPECT_EQ(look(L"DOOR"), L"DOOR 0 DOOR B1");
    EXPECT_EQ(printed(), L"");
}

TEST_F(BlockMaps, AnOrdinaryBlockLeadsToTheDrawingsOwnBlocks) {
    load(L"GATE");
    EXPECT_EQ(look(L"GATE"), L"GATE 0 GATE D1");
    EXPECT_EQ(look(L"PLAN").substr(0, 15), L"PLAN 4 plan.dxf");
}

TEST_F(BlockMaps, AreListedForDiagnosis) {
    m_map.Dump();
    EXPECT_EQ(printed(), L"Members of xref []\n");
    load();
    const ResbufList door{m_map.BlockSearch(L"DOOR")};
    std::ostringstream line;
    line << "dwg-block found: [DOOR                ] xref: 0 ovl: 0 att: 0 anon: 0  (>>) <"
         << std::hex << std::setw(8) << std::setfill('0')
         << (findGroup(door, -2)->resval.rlname[0] & 0xFFFFFFFF) << ">\t[DOOR]\n";
    m_map.Dump();
    const std::string text = host::toUtf8(printed());
    EXPECT_TRUE(text.starts_with("Members of xref [PLAN]\n"));
    EXPECT_TRUE(holds(text, line.str()));
}

TEST_F(BlockMaps, ADocumentKeepsOneMapPerReference) {
    CDocvarXrefTblBlockMap maps;
    CXrefBlockMap* plan = maps.GetXrefBlockMap(L"PLAN");
    EXPECT_EQ(maps.GetXrefBlockMap(L"plan"), plan);
    EXPECT_EQ(look(*plan, L"DOOR"), L"DOOR 0 DOOR B1");
    CXrefBlockMap* missing = maps.GetXrefBlockMap(L"NOSUCH");
    EXPECT_EQ(printed(), kFailed);
    EXPECT_EQ(maps.GetXrefBlockMap(L"NoSuch"), missing);
    EXPECT_EQ(printed(), L"");
    EXPECT_EQ(missing->BlockSearch(L"DOOR"), nullptr);
    for (CMORMDIDocumentVariable* made : {maps.CreateCopy(), maps.CreateInstance()}) {
        const std::unique_ptr<CMORMDIDocumentVariable> owner{made};
        static_cast<void>(printed());
        dynamic_cast<CDocvarXrefTblBlockMap&>(*made).GetXrefBlockMap(L"NOSUCH");
        EXPECT_EQ(printed(), kFailed);  // a copy is empty: asked for anew
    }
}

TEST_F(BlockMaps, ABlockSearchGivesTheRecordOfTheDrawingItself) {
    const ResbufList gate{TblBlockSearch(L"gate")};
    EXPECT_EQ(textOf(gate.get(), 2), L"GATE");
    const ResbufList plan{TblBlockSearch(L"PLAN")};
    EXPECT_EQ(findGroup(plan, 70)->resval.rint & 4, 4);
    EXPECT_EQ(TblBlockSearch(L"NOSUCH"), nullptr);
    EXPECT_EQ(TblBlockSearch(nullptr), nullptr);
}

}  // namespace
}  // namespace mor::test
