#include "platform/table_calls.h"
#include "tests/host/host_fixture.h"
#include "tests/support/dxf_records.h"

#include <gtest/gtest.h>

namespace mor::test {
namespace {

class Encodings : public HostTest {
protected:
    /// A drawing with one layer of that name, as bytes of the file.
    AcApDocument* openLayer(const std::string& version, const std::string& codePage,
                            const std::string& name) {
        return open(
            DxfDrawing{.layers = {name},
                       .header = codePage.empty() ? "" : "9 $DWGCODEPAGE|3 " + codePage + "|",
                       .version = version});
    }
    /// The name of the layer as the platform's functions give it.
    [[nodiscard]] static std::wstring layerName() {
        const ResbufList record{acdbTblNext(L"LAYER", 1)};
        const resbuf* name = findGroup(record, 2);
        return name == nullptr ? L"" : name->resval.rstring;
    }
};

TEST_F(Encodings, DecodeNamesOfTheFile) {
    const struct {
        const char* version;
        const char* codePage;
        const char* bytes;
        const wchar_t* name;
    } cases[] = {
        {"AC1009", "", "W\xC4NDE", L"W\u00C4NDE"},
        {"AC1009", "nonsense", "\x80", L"\u20AC"},
        {"AC1015", "ANSI_1252", "W\xC4NDE", L"W\u00C4NDE"},
        {"AC1015", "ansi_1251", "\xD1\xD2\xC5\xCD\xC0", L"\u0421\u0422\u0415\u041D\u0410"},
        {"AC1014", "dos850", "\x8E\x99\x9A", L"\u00C4\u00D6\u00DC"},
        {"AC1014", "DOS850", "\xE1", L"\u00DF"},
        {"AC1018", "ANSI_1250", "\xD8", L"\u0158"},
        {"AC1021", "ANSI_1251", "\xC3\x84", L"\u00C4"},  // UTF-8 whatever the code page says
        {"AC1032", "", "\xF0\x9F\x98\x80", L"\U0001F600"},
        // The second byte of a character may be a backslash, a caret or a bar.
        {"AC1015", "ANSI_932", "\x95\x5C\x8E\xA6", L"\u8868\u793A"},
        {"AC1015", "ANSI_932", "\x8B\x5Ez", L"\u7591z"},
        {"AC1015", "ANSI_932", "\x83\x7C", L"\u30DD"},
        {"AC1015", "ANSI_936", "\x81\x5CU+0041", L"\u4E57U+0041"},
        {"AC1015", "ANSI_950", "\xA5\x5C", L"\u529F"},
        {"AC1015", "ANSI_949", "\xB0\xA1", L"\uAC00"},
        // An accent could follow the last letter.
        {"AC1015", "ANSI_1255", "\xE9\xE5", L"\u05D9\u05D5"},
        {"AC1015", "ANSI_1258", "\xD0\xF4ng", L"\u0110\u00F4ng"},
        {"AC1015", "ANSI_1258", "ta\xEC", L"t\u00E1"},
        // Escapes, in every release.
        {"AC1009", "", "\\U+00e2\\U+00E2", L"\u00E2\u00E2"},
        {"AC1015", "ANSI_1252", "\\U+D83D\\U+DE00", L"\U0001F600"},
        {"AC1032", "ANSI_1252", "\\U+4e2dX", L"\u4E2DX"},
        {"AC1015", "ANSI_1252", "\\M+18140", L"\u3000"},
        {"AC1015", "ANSI_1252", "\\M+5B0A1", L"\u554A"},
        {"AC1015", "ANSI_1252", "\\U+005CU+0041", L"\\U+0041"},  // one pass
        {"AC1015", "ANSI_1252", "\\U+12", L"\\U+12"},
        {"AC1015", "ANSI_1252", "A^ B^IC^", L"A^B\tC^"},
        {"AC1015", "ANSI_1252", "^a^1", L"^a^1"}};
    for (const auto& c : cases) {
        openLayer(c.version, c.codePage, c.bytes);
        EXPECT_EQ(layerName(), c.name) << c.version << " " << c.codePage << " " << c.bytes;
    }
}

TEST_F(Encodings, EncodeMadeNamesInTheFilesOwn) {
    const struct {
        const char* version;
        const char* codePage;
        const wchar_t* name;
        const char* bytes;
    } cases[] = {{"AC1015", "ANSI_1252", L"\u00C4", "\xC4"},
                 {"AC1015", "ANSI_1251", L"\u0416", "\xC6"},
                 {"AC1015", "ANSI_1252", L"\u0416", "\\U+0416"},
                 {"AC1015", "ANSI_932", L"\u8868", "\x95\x5C"},
                 {"AC1015", "ANSI_1252", L"\U0001F600", "\\U+D83D\\U+DE00"},
                 {"AC1009", "dos850", L"\u00C4", "\x8E"},
                 {"AC1021", "ANSI_1252", L"\u0416", "\xD0\x96"},
                 {"AC1015", "ANSI_1252", L"a^b", "a^ b"}};
    for (const auto& c : cases) {
        openLayer(c.version, c.codePage, "0");
        ASSERT_EQ(makeLine(c.name), RTNORM);
        const std::string bytes = savedBytes();
        EXPECT_TRUE(holds(bytes, std::string("\n8\n") + c.bytes + "\n")) << c.bytes;
        EXPECT_TRUE(holds(bytes, std::string("\n2\n") + c.bytes + "\n")) << c.bytes;
        open(bytes);
        Connected line{lastEntity()};
        EXPECT_STREQ(line.GetLayer(nullptr), c.name);
    }
}

TEST_F(Encodings, KeepBytesThatTheCodePageLacks) {
    const std::pair<const char*, const char*> pages[] = {
        {"AC1021", "ANSI_1252"}, {"AC1015", "ANSI_932"}, {"AC1015", "ANSI_1252"}};
    for (const auto& [version, page] : pages) {
        SCOPED_TRACE(std::string(version) + page);
        openLayer(version, page, "A\xFF\x81");
        const std::wstring name = layerName();
        EXPECT_NE(name, L"");
        EXPECT_TRUE(host::findSymbol(document(), "LAYER", name));
        ASSERT_EQ(makeLine(name.c_str()), RTNORM);
        EXPECT_TRUE(holds(savedBytes(), "\n8\nA\xFF\x81\n"));
        EXPECT_EQ(splitDxf(savedBytes()).countIn("LAYER"), 1);
    }
}

TEST_F(Encodings, CompareNamesByCharactersAndWithoutCase) {
    openLayer("AC1015", "ANSI_1252", "w\xE4nde");
    EXPECT_TRUE(host::findSymbol(document(), "LAYER", L"W\u00C4NDE"));
    openLayer("AC1009", "", "W\\U+00c4NDE");
    EXPECT_TRUE(host::findSymbol(document(), "layer", L"w\u00E4nde"));
    EXPECT_FALSE(host::findSymbol(document(), "LAYER", L"WANDE"));
}

}  // namespace
}  // namespace mor::test
