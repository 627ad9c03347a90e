#include "host/dxf/dxf_codec.h"
#include "host/dxf/dxf_header.h"
#include "host/dxf/form.h"
#include "host/text/group_codes.h"
#include "host/text/numbers.h"

#include <string>
#include <string_view>

namespace mor::host {

namespace {

/// Writes groups given as "CODE VALUE|CODE VALUE|...", padded as CAD programs do it.
class Writer {
public:
    Writer(Release release, std::string_view lineEnd)
        : m_release(release), m_form{DxfForm::Kind::Text, lineEnd} {}

    Writer& operator()(std::string_view groups) {
        while (!groups.empty()) {
            const std::size_t bar = groups.find('|');
            put(groups.substr(0, bar));
            groups = bar == std::string_view::npos ? std::string_view() : groups.substr(bar + 1);
        }
        return *this;
    }
    Writer& since(Release release, std::string_view groups) {
        return m_release >= release ? (*this)(groups) : *this;
    }
    Writer& before(Release release, std::string_view groups) {
        return m_release < release ? (*this)(groups) : *this;
    }
    [[nodiscard]] bool isBefore(Release release) const { return m_release < release; }
    std::string take() { return std::move(m_text); }

private:
    void put(std::string_view group) {
        const std::size_t blank = group.find(' ');
        const int code = static_cast<int>(parseInteger(group.substr(0, blank)).value_or(0));
        const std::string_view value =
            blank == std::string_view::npos ? "" : group.substr(blank + 1);
        if (isInteger(codeKind(code)))
            m_text += m_form.bytes(Group(code, parseInteger(value).value_or(0)));
        else
            m_text += m_form.bytes(code, value);
    }

    Release m_release;
    DxfForm m_form;
    std::string m_text;
};

std::string oldDrawing(std::string_view lineEnd) {
    Writer write(Release::R12, lineEnd);
    write(
        "0 SECTION|2 HEADER|9 $ACADVER|1 AC1009|9 $DWGCODEPAGE|3 ANSI_1252|9 $INSBASE|10 0.0|20 "
        "0.0|30 0.0");
    write("9 $HANDLING|70 1|9 $HANDSEED|5 1|0 ENDSEC|0 SECTION|2 TABLES");
    write("0 TABLE|2 VPORT|70 0|0 ENDTAB|0 TABLE|2 LTYPE|70 1");
    write("0 LTYPE|2 CONTINUOUS|70 0|3 Solid line|72 65|73 0|40 0.0|0 ENDTAB");
    write("0 TABLE|2 LAYER|70 1|0 LAYER|2 0|70 0|62 7|6 CONTINUOUS|0 ENDTAB");
    write(
        "0 TABLE|2 STYLE|70 1|0 STYLE|2 STANDARD|70 0|40 0.0|41 1.0|50 0.0|71 0|42 2.5|3 txt|4 |0 "
        "ENDTAB");
    write("0 TABLE|2 VIEW|70 0|0 ENDTAB|0 TABLE|2 UCS|70 0|0 ENDTAB|0 TABLE|2 APPID|70 1");
    write("0 APPID|2 ACAD|70 0|0 ENDTAB|0 TABLE|2 DIMSTYLE|70 0|0 ENDTAB|0 ENDSEC");
    write("0 SECTION|2 BLOCKS|0 ENDSEC|0 SECTION|2 ENTITIES|0 ENDSEC|0 EOF");
    return write.take();
}

/// One table; `record` begins each of its records behind the handle and names the owner where
/// owners are kept.
class Tables {
public:
    explicit Tables(Writer& write) : m_write(write) {}

    void open(std::string_view name, std::string_view handle, int count) {
        m_handle = handle;
        m_write("0 TABLE")("2 " + std::string(name))("5 " + std::string(handle))
            .since(Release::R2000, "330 0");
        m_write("100 AcDbSymbolTable")("70 " + std::to_string(count));
    }
    void record(std::string_view type, std::string_view handle, std::string_view subclass,
                std::string_view name) {
        const std::string code = type == "DIMSTYLE" ? "105 " : "5 ";
        m_write("0 " + std::string(type))(code + std::string(handle));
        m_write.since(Release::R2000, "330 " + std::string(m_handle));
        m_write("100 AcDbSymbolTableRecord")("100 " + std::string(subclass))("2 " +
                                                                             std::string(name));
    }
    void close() { m_write("0 ENDTAB"); }

private:
    Writer& m_write;
    std::string_view m_handle;
};

void writeTables(Writer& write) {
    Tables table(write);
    write("0 SECTION|2 TABLES");
    table.open("VPORT", "8", 1);
    table.record("VPORT", "10", "AcDbViewportTableRecord", "*Active");
    write(
        "70 0|10 0.0|20 0.0|11 1.0|21 1.0|12 0.0|22 0.0|13 0.0|23 0.0|14 1.0|24 1.0|15 0.0|25 0.0");
    write(
        "16 0.0|26 0.0|36 1.0|17 0.0|27 0.0|37 0.0|40 10.0|41 1.5|42 50.0|43 0.0|44 0.0|50 0.0|51 "
        "0.0");
    write("71 0|72 1000|73 1|74 3|75 0|76 0|77 0|78 0").since(Release::R2000, "281 0|65 0");
    table.close();
    table.open("LTYPE", "2", 3);
    for (const auto& [handle, name] :
         {std::pair{"11", "ByBlock"}, {"12", "ByLayer"}, {"13", "Continuous"}}) {
        table.record("LTYPE", handle, "AcDbLinetypeTableRecord", name);
        write("70 0|3 |72 65|73 0|40 0.0");
    }
    table.close();
    table.open("LAYER", "1", 1);
    table.record("LAYER", "14", "AcDbLayerTableRecord", "0");
    write("70 0|62 7|6 Continuous").since(Release::R2000, "370 -3|390 F");
    table.close();
    table.open("STYLE", "5", 1);
    table.record("STYLE", "15", "AcDbTextStyleTableRecord", "Standard");
    write("70 0|40 0.0|41 1.0|50 0.0|71 0|42 2.5|3 txt|4 ");
    table.close();
    table.open("VIEW", "7", 0);
    table.close();
    table.open("UCS", "6", 0);
    table.close();
    table.open("APPID", "3", 1);
    table.record("APPID", "16", "AcDbRegAppTableRecord", "ACAD");
    write("70 0");
    table.close();
    table.open("DIMSTYLE", "4", 1);
    write.since(Release::R2000, "100 AcDbDimStyleTable|71 0");
    table.record("DIMSTYLE", "17", "AcDbDimStyleTableRecord", "Standard");
    write("70 0");
    table.close();
    table.open("BLOCK_RECORD", "9", 2);
    for (const auto& [handle, name, layout] :
         {std::tuple{"18", "*Model_Space", "340 1E"}, {"1B", "*Paper_Space", "340 1F"}}) {
        table.record("BLOCK_RECORD", handle, "AcDbBlockTableRecord", name);
        write.since(Release::R2000, layout).since(Release::R2007, "70 0|280 1|281 0");
    }
    table.close();
    write("0 ENDSEC");
}

void writeBlocks(Writer& write) {
    write("0 SECTION|2 BLOCKS");
    for (const auto& [name, begin, end, owner] :
         {std::tuple{"*Model_Space", "5 19", "5 1A", "330 18"},
          {"*Paper_Space", "5 1C", "5 1D", "330 1B"}}) {
        write("0 BLOCK")(begin).since(Release::R2000,
                                      owner)("100 AcDbEntity|8 0|100 AcDbBlockBegin");
        write("2 " + std::string(name))("70 0|10 0.0|20 0.0|30 0.0")("3 " +
                                                                     std::string(name))("1 ");
        write("0 ENDBLK")(end).since(Release::R2000, owner)("100 AcDbEntity|8 0|100 AcDbBlockEnd");
    }
    write("0 ENDSEC");
}

void writeLayout(Writer& write, std::string_view handle, std::string_view name,
                 std::string_view flags, std::string_view order, std::string_view block) {
    write("0 LAYOUT")("5 " + std::string(handle))("330 C|100 AcDbPlotSettings|1 |2 |4 |6 ");
    write(
        "40 0.0|41 0.0|42 0.0|43 0.0|44 0.0|45 0.0|46 0.0|47 0.0|48 0.0|49 0.0|140 0.0|141 0.0|142 "
        "1.0|143 1.0");
    write("70 " +
          std::string(flags))("72 0|73 0|74 5|7 |75 16|147 1.0|148 0.0|149 0.0|100 AcDbLayout");
    write("1 " + std::string(name))("70 1")("71 " + std::string(order));
    write(
        "10 0.0|20 0.0|11 12.0|21 9.0|12 0.0|22 0.0|32 0.0|14 0.0|24 0.0|34 0.0|15 0.0|25 0.0|35 "
        "0.0|146 0.0");
    write("13 0.0|23 0.0|33 0.0|16 1.0|26 0.0|36 0.0|17 0.0|27 1.0|37 0.0|76 0")(
        "330 " + std::string(block));
}

void writeObjects(Writer& write) {
    write("0 SECTION|2 OBJECTS|0 DICTIONARY|5 A")
        .since(Release::R2000, "330 0")("100 AcDbDictionary");
    write.since(Release::R2000, "281 1")("3 ACAD_GROUP|350 B");
    write.since(Release::R2000, "3 ACAD_LAYOUT|350 C|3 ACAD_PLOTSTYLENAME|350 E");
    write("0 DICTIONARY|5 B")
        .since(Release::R2000, "330 A")("100 AcDbDictionary")
        .since(Release::R2000, "281 1");
    if (write.isBefore(Release::R2000)) {
        write("0 ENDSEC");
        return;
    }
    write("0 DICTIONARY|5 C|330 A|100 AcDbDictionary|281 1|3 Model|350 1E|3 Layout1|350 1F");
    write("0 ACDBDICTIONARYWDFLT|5 E|330 A|100 AcDbDictionary|281 1|3 Normal|350 F");
    write("100 AcDbDictionaryWithDefault|340 F|0 ACDBPLACEHOLDER|5 F|330 E");
    writeLayout(write, "1E", "Model", "1024", "0", "18");
    writeLayout(write, "1F", "Layout1", "0", "1", "1B");
    write("0 ENDSEC");
}

}  // namespace

std::string newDrawingText(Release release, std::string_view lineEnd) {
    if (release == Release::R12) return oldDrawing(lineEnd);
    Writer write(release, lineEnd);
    write("0 SECTION|2 HEADER|9 $ACADVER")("1 " + versionOf(release))("9 $DWGCODEPAGE|3 ANSI_1252");
    write("9 $INSBASE|10 0.0|20 0.0|30 0.0").before(Release::R2000, "9 $HANDLING|70 1");
    write("9 $HANDSEED|5 20|0 ENDSEC|0 SECTION|2 CLASSES|0 ENDSEC");
    writeTables(write);
    writeBlocks(write);
    write("0 SECTION|2 ENTITIES|0 ENDSEC");
    writeObjects(write);
    write("0 EOF");
    return write.take();
}

}  // namespace mor::host
