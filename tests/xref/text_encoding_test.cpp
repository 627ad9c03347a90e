#include "platform/owned.h"
#include "tests/xref/iterator_fixture.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {
namespace {

/// References whose files have another encoding than the drawing that refers to them. The drawing
/// is in ANSI_1252: its layer, the reference's name and path hold letters beyond ASCII.
class TextEncodings : public IteratorTest {
protected:
    void load(const std::string& version, const std::string& header, const std::string& layer) {
        DxfDrawing{.layers = {layer},
                   .entities = lineEntity("C1", layer),
                   .header = header,
                   .version = version}
            .save("Pl\u00E4ne.dxf");
        open(DxfDrawing{.layers = {"\xC4"},
                        .blocks = referenceDefinition("Gr\xFCn", ".\\Pl\xE4ne.dwg"),
                        .entities = lineEntity("A1", "\xC4") + insertEntity("10", "0", "Gr\xFCn"),
                        .header = "9 $DWGCODEPAGE|3 ANSI_1252|"}
                 .save("site.dxf"));
    }
};

constexpr const char* k1251 = "9 $DWGCODEPAGE|3 ANSI_1251|";

TEST_F(TextEncodings, NamesMeetWhateverTheFilesSay) {
    const struct {
        const char* version;
        const char* header;
        const char* bytes;     // of the layer
        const wchar_t* layer;  // as it reads
        const wchar_t* pattern;
    } cases[] = {
        {"AC1024", k1251, "\xD0\xA1\xD1\x82\xD0\xB5\xD0\xBD\xD0\xB0",
         L"\u0421\u0442\u0435\u043D\u0430", L"\u0441\u0422*"},
        {"AC1009", k1251, "\xD1\xF2\xE5\xED\xE0", L"\u0421\u0442\u0435\u043D\u0430",
         L"\u0421\u0422\u0415\u041D\u0410"},
        {"AC1015", "", "\\U+0421\\U+0442\\u+1", L"\u0421\u0442\\u+1", L"\u0441@*"},
        {"AC1032", k1251, "\\U+00e4\xC3\x9F", L"\u00E4\u00DF", L"\u00C4?"},
        {"AC1009", "9 $DWGCODEPAGE|3 ansi_932|", "\x83\x7C\x95\x5C", L"\u30DD\u8868", L"@@"},
        {"AC1009", "9 $DWGCODEPAGE|3 ANSI_1252|", "\xC4\\U+0416", L"\u00C4\u0416",
         L"\u00E4\u0436"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bytes);
        load(c.version, c.header, c.bytes);
        const host::ReferenceInfo info = host::references(document()).at(0);
        EXPECT_EQ(info.name + info.saved, L"Gr\u00FCn.\\Pl\u00E4ne.dwg");
        CMORCadSpace space;
        ASSERT_TRUE(m_modelSpace.forget() && m_modelSpace.connect() && space.connect(L"GR\u00DCN"));
        ads_name name{};
        CMOREntity entity;
        ASSERT_TRUE(space.handEnt(L"C1", name) && entity.Connect(name));
        EXPECT_EQ(entity.GetLayer(nullptr), std::wstring{L"Gr\u00FCn|"} + c.layer);
        EXPECT_TRUE(ResbufList{space.tblSearch(L"LAYER", c.layer)});
        EXPECT_EQ(walk(space, texts({c.pattern})), L"C1 ");
        for (const wchar_t* pattern : {L"\u00E4", L"\u00C4", L"[\u00E0-\u00E5]", L"@"})
            EXPECT_EQ(walk(m_modelSpace, texts({pattern})), L"A1 ");
    }
}

}  // namespace
}  // namespace mor::test
