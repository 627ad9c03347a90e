#include "tests/support/dxf_records.h"
#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>

namespace mor::test {
namespace {

namespace fs = std::filesystem;

// ---- the records that storing one value makes, as each release of the file format has them ------

/// What decides about the form of new records.
struct FileFacts {
    explicit FileFacts(const DxfFile& file)
        : version(file.variable("$ACADVER")), markers(since("AC1012")), owners(since("AC1015")) {
        for (const DxfRecord& record : file.records) {
            if (record.section == "OBJECTS" || record.section.empty()) continue;
            const bool marked = record.first(100).has_value();
            markers = markers || marked;
            m_plain[record.type()] = m_plain[record.type()] || !marked;
            m_marked[record.type()] = m_marked[record.type()] || marked;
            const std::string kind = record.section == "TABLES" ? "table" : "entity";
            if (!record.isEdge()) m_plain[kind] = m_plain[kind] || !marked;
            if (!record.isEdge()) m_marked[kind] = m_marked[kind] || marked;
            m_owned = m_owned || (record.owner() != 0 && record.section != "CLASSES");
        }
        owners = owners || (marks("BLOCK", "entity") && m_owned);
    }
    [[nodiscard]] bool since(std::string_view release) const { return version >= release; }
    /// Whether a new record of the type has subclass markers: as those of the file, else as its
    /// table records or entities ("table", "entity").
    [[nodiscard]] bool marks(const std::string& type, const std::string& kind) const {
        const auto has = [](const auto& forms, const std::string& name) {
            const auto found = forms.find(name);
            return found != forms.end() && found->second;
        };
        const std::string& judge = has(m_plain, type) || has(m_marked, type) ? type : kind;
        return since("AC1012") || (has(m_marked, judge) && !has(m_plain, judge));
    }
    [[nodiscard]] bool marksTable(const std::string& type) const { return marks(type, "table"); }
    [[nodiscard]] bool ownsTable(const std::string& type) const {
        return since("AC1015") || (marksTable(type) && m_owned);
    }

    std::string version;   ///< empty when the file has none
    bool markers = false;  ///< some record has them, or the release wants them
    bool owners = false;   ///< of blocks and entities

private:
    std::map<std::string, bool> m_plain;
    std::map<std::string, bool> m_marked;
    bool m_owned = false;
};

/// Writes down the new records as `DxfRecord::text` shows them, with the handles found in the file
/// as written; whether these are good ones is tested apart.
class ExpectedRecords {
public:
    ExpectedRecords(const DxfFile& before, const DxfFile& after)
        : m_before(before), m_after(after), m_facts(before) {}

    [[nodiscard]] std::string layer(const DxfRecord& made) const {
        const DxfRecord* zero = nullptr;
        for (const DxfRecord& record : m_before.records)
            if (record.is("LAYER") && record.section == "TABLES" && record.first(2) == "0")
                zero = &record;
        std::string text = tableRecord(made, "LAYER", "AcDbLayerTableRecord");
        const std::string line = zero == nullptr ? "" : zero->first(6).value_or("");
        const bool marked = m_facts.marksTable("LAYER");
        const std::string plain = marked ? "Continuous" : "CONTINUOUS";
        text += "|2 MOR_CONTROL_LAYER|70 5|62 7|6 " + (line.empty() ? plain : line);
        for (const int code : {370, 390, 347, 348})
            if (zero != nullptr && marked && zero->first(code))
                text += "|" + std::to_string(code) + " " + *zero->first(code);
        return text;
    }
    [[nodiscard]] std::string application(const DxfRecord& made) const {
        const std::string name = made.first(2).value_or("");
        // Readers take a file without a version for R12 and look for names without markers.
        const std::string begin = m_facts.version.empty()
                                      ? "0 APPID" + handleOf(made, "APPID") + ownerOf("APPID")
                                      : tableRecord(made, "APPID", "AcDbRegAppTableRecord");
        return begin + "|2 " + name + "|70 0";
    }
    [[nodiscard]] std::string blockRecord(const DxfRecord& made) const {
        std::string text = tableRecord(made, "BLOCK_RECORD", "AcDbBlockTableRecord");
        text += "|2 MOR_DWGFILES";
        if (m_facts.since("AC1015")) text += "|340 0";
        if (m_facts.since("AC1021")) text += "|70 0|280 1|281 0";
        return text;
    }
    [[nodiscard]] std::string block(const DxfRecord& made) const {
        const bool marked = m_facts.marks("BLOCK", "entity");
        return "0 BLOCK" + (marked ? "|5 " + made.first(5).value_or("?") : "") + blockOwner() +
               marker("AcDbEntity") + "|8 0" + marker("AcDbBlockBegin") +
               "|2 MOR_DWGFILES|70 0|10 0.0|20 0.0|30 0.0" + "|3 MOR_DWGFILES|1 ";
    }
    [[nodiscard]] std::string definition(const DxfRecord& made, const std::string& root) const {
        std::string text = "0 ATTDEF|5 " + *made.first(5) + blockOwner() + marker("AcDbEntity") +
                           "|8 0" + marker("AcDbText") + "|10 0.0|20 0.0|30 0.0|40 1.0|1 " +
                           marker("AcDbAttributeDefinition");
        if (m_facts.since("AC1024")) text += "|280 0";
        text += "|3 mor|2 mor|70 3";
        if (m_facts.since("AC1021")) text += "|280 0";
        return text + "|1001 MOR_ATTRIBUTES|1070 1|1000 \\U+005EDWG_FILESYSTEM_ROOT|1000 " + root;
    }
    [[nodiscard]] std::string blockEnd(const DxfRecord& made) const {
        return "0 ENDBLK|5 " + *made.first(5) + blockOwner() + marker("AcDbEntity") + "|8 0" +
               marker("AcDbBlockEnd");
    }
    /// `attributes` are the groups behind $INFO.
    [[nodiscard]] std::string insert(const DxfRecord& made, const std::string& path,
                                     const std::string& attributes) const {
        std::string owner;
        for (const DxfRecord& record : m_before.records) {
            if (!record.is("BLOCK_RECORD") || record.section != "TABLES") continue;
            const std::string name = record.first(2).value_or("");
            if (m_facts.owners && (name == "*Model_Space" || name == "*MODEL_SPACE"))
                owner = "|330 " + record.first(5).value_or("");
        }
        return "0 INSERT|5 " + *made.first(5) + owner + marker("AcDbEntity") +
               "|8 MOR_CONTROL_LAYER" + marker("AcDbBlockReference") +
               "|2 MOR_DWGFILES|10 0.0|20 0.0|30 0.0|1001 MOR_ATTRIBUTES|1070 1|1000 $ID" +
               "|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 " + path + attributes;
    }
    [[nodiscard]] const FileFacts& facts() const { return m_facts; }

private:
    /// Of entities and blocks.
    [[nodiscard]] std::string marker(const std::string& name) const {
        return m_facts.marks("INSERT", "entity") ? "|100 " + name : "";
    }
    [[nodiscard]] std::string handleOf(const DxfRecord& made, const std::string& type) const {
        const bool has = m_facts.marksTable(type) || type == "BLOCK_RECORD";
        return has ? "|5 " + made.first(5).value_or("?") : "";
    }
    [[nodiscard]] std::string ownerOf(const std::string& table) const {
        if (!m_facts.ownsTable(table)) return {};
        if (const DxfRecord* stray = m_before.stray(table))  // a table without head: as its records
            return "|330 " + stray->first(330).value_or("");
        const DxfRecord* head = m_after.table(table);
        return head == nullptr || head->handle() == 0 ? "" : "|330 " + *head->first(5);
    }
    [[nodiscard]] std::string tableRecord(const DxfRecord& made, const std::string& type,
                                          const std::string& subclass) const {
        const std::string markers = "|100 AcDbSymbolTableRecord|100 " + subclass;
        return "0 " + type + handleOf(made, type) + ownerOf(type) +
               (m_facts.marksTable(type) ? markers : "");
    }
    [[nodiscard]] std::string blockOwner() const {
        const DxfRecord* record = m_after.named("BLOCK_RECORD", "MOR_DWGFILES");
        return m_facts.owners && record != nullptr ? "|330 " + *record->first(5) : "";
    }

    const DxfFile& m_before;
    const DxfFile& m_after;
    FileFacts m_facts;
};

// ---- what is compared ---------------------------------------------------------------------------

/// Why a drawing is refused; empty for a whole text drawing from R12 on with line ends that are
/// read.
std::string refusalOf(const std::string& bytes) {
    if (bytes.starts_with("AutoCAD Binary DXF")) return "binary";
    if (bytes.find('\n') == std::string::npos) return "line ends";
    const DxfFile file = splitDxf(bytes);
    if (!file.broken.empty()) return file.broken;
    const std::string version = file.variable("$ACADVER");
    return !version.empty() && version < "AC1009" ? "older than R12" : "";
}

/// What was done to the records of a drawing.
struct Comparison {
    std::vector<const DxfRecord*> made;
    std::vector<std::string> changed;  ///< texts of the changes
    std::string lost;                  ///< the first record that is missing, or differs unduly
};

bool sameButLineEnd(const std::string& before, const std::string& after) {
    return before == after ||
           (!before.ends_with('\n') && (after == before + "\n" || after == before + "\r\n"));
}

/// The groups of both records, compared by `judge` where they differ; false when one has others.
template <typename Judge>
bool sameGroups(const DxfRecord& before, const DxfRecord& after, Judge judge) {
    for (std::size_t i = 0; i < before.tags.size(); ++i) {
        if (i >= after.tags.size()) return false;
        if (before.tags[i].bytes != after.tags[i].bytes && !judge(i)) return false;
    }
    return true;
}

/// A header may get another seed, another $HANDLING, and both at its end where they are missing.
bool isHeaderChange(const DxfRecord& before, const DxfRecord& after) {
    const auto variable = [&](std::size_t i) { return withoutBlanks(before.tags[i - 1].value); };
    if (!sameGroups(before, after, [&](std::size_t i) {
            return i > 0 && before.tags[i].code == after.tags[i].code &&
                   (variable(i) == "$HANDSEED" || variable(i) == "$HANDLING");
        }))
        return false;
    for (std::size_t i = before.tags.size(); i < after.tags.size(); ++i)
        if (after.tags[i].code == 9 && after.tags[i].value != "$HANDSEED" &&
            after.tags[i].value != "$HANDLING")
            return false;
    return true;
}

/// A table's count may go up when it was exact.
bool isCountChange(const DxfRecord& before, const DxfRecord& after, long records) {
    return before.tags.size() == after.tags.size() && sameGroups(before, after, [&](std::size_t i) {
               return before.tags[i].code == 70 && std::stol(before.tags[i].value) == records;
           });
}

Comparison compare(const DxfFile& before, const DxfFile& after) {
    Comparison result;
    std::size_t old = 0;
    for (const DxfRecord& record : after.records) {
        const DxfRecord* wanted = old < before.records.size() ? &before.records[old] : nullptr;
        if (wanted == nullptr || wanted->type() != record.type() ||
            wanted->section != record.section) {
            result.made.push_back(&record);
        } else if (sameButLineEnd(wanted->bytes, record.bytes)) {
            ++old;
        } else if ((record.section == "HEADER" && isHeaderChange(*wanted, record)) ||
                   (record.is("TABLE") && wanted->container == record.container &&
                    isCountChange(*wanted, record, before.countIn(record.container)))) {
            result.changed.push_back(record.text());
            ++old;
        } else {
            result.made.push_back(&record);
        }
    }
    if (old < before.records.size()) result.lost = before.records[old].text().substr(0, 300);
    return result;
}

/// "TABLES/LAYER LAYER": where each new record stands and what it is.
std::string outline(const std::vector<const DxfRecord*>& made) {
    std::string all;
    for (const DxfRecord* record : made)
        all += record->section + (record->container.empty() ? "" : "/" + record->container) + " " +
               record->type() + "\n";
    return all;
}

/// The new records that a first value under /cfg/user makes in this drawing, in file order.
std::string expectedOutline(const DxfFile& before, const FileFacts& facts) {
    const bool blockRecords =
        facts.since("AC1012") ||
        (facts.marks("BLOCK", "entity") &&
         (facts.owners || (!facts.version.empty() && before.table("BLOCK_RECORD") != nullptr)));
    const auto table = [&](const std::string& name, const std::string& records) {
        const std::string in = "TABLES/" + name + " ";
        if (before.stray(name) != nullptr) return "TABLES " + name + "\n";
        return before.table(name) != nullptr ? records : in + "TABLE\n" + records + in + "ENDTAB\n";
    };
    const auto section = [&](const std::string& name, const std::string& records) {
        return before.section(name) != nullptr ? records
                                               : name + " SECTION\n" + records + name + " ENDSEC\n";
    };
    const bool acad = facts.markers && before.table("APPID") == nullptr;
    const std::string application = "TABLES/APPID APPID\n";
    std::string applications = table("APPID", (acad ? application : "") + application);
    std::string records =
        blockRecords ? table("BLOCK_RECORD", "TABLES/BLOCK_RECORD BLOCK_RECORD\n") : "";
    std::string layers = table("LAYER", "TABLES/LAYER LAYER\n");
    // The order of the tables that the file has is its own.
    std::vector<std::pair<std::ptrdiff_t, std::string>> tables = {
        {before.table("LAYER") - before.records.data(), layers},
        {before.table("APPID") - before.records.data(), applications},
        {before.table("BLOCK_RECORD") - before.records.data(), records}};
    if (before.table("LAYER") && before.table("APPID") && before.table("BLOCK_RECORD"))
        std::ranges::sort(tables);
    std::string all = before.section("HEADER") != nullptr ? "" : section("HEADER", "");
    all += section("TABLES", tables[0].second + tables[1].second + tables[2].second);
    all += section("BLOCKS",
                   "BLOCKS/MOR_DWGFILES BLOCK\nBLOCKS/MOR_DWGFILES ATTDEF\n"
                   "BLOCKS/MOR_DWGFILES ENDBLK\n");
    return all + section("ENTITIES", "ENTITIES INSERT\nENTITIES INSERT\nENTITIES INSERT\n");
}

void expectFields(const DxfFile& before, const DxfFile& after,
                  const std::vector<const DxfRecord*>& made) {
    const ExpectedRecords expected(before, after);
    std::vector<const DxfRecord*> inserts;
    for (const DxfRecord* record : made)
        if (record->is("INSERT")) inserts.push_back(record);
    ASSERT_EQ(inserts.size(), 3u);
    const auto handle = [&](std::size_t i) { return *inserts[i]->first(5); };
    for (const DxfRecord* record : made) {
        const std::string type = record->type();
        std::string wanted = record->text();
        if (type == "LAYER") wanted = expected.layer(*record);
        if (type == "APPID") wanted = expected.application(*record);
        if (type == "BLOCK_RECORD") wanted = expected.blockRecord(*record);
        if (type == "BLOCK") wanted = expected.block(*record);
        if (type == "ENDBLK") wanted = expected.blockEnd(*record);
        if (type == "ATTDEF") wanted = expected.definition(*record, handle(0));
        EXPECT_EQ(record->text(), wanted);
    }
    EXPECT_EQ(inserts[0]->text(),
              expected.insert(*inserts[0], "/", "|1000 \\U+005Ecfg|1000 " + handle(1)));
    EXPECT_EQ(inserts[1]->text(),
              expected.insert(*inserts[1], "/cfg", "|1000 \\U+005Euser|1000 " + handle(2)));
    EXPECT_EQ(inserts[2]->text(), expected.insert(*inserts[2], "/cfg/user",
                                                  "|1000 x|1002 {|1071 1|1071 2|1071 3|1002 }"));
}

void expectGoodHandles(const DxfFile& before, const DxfFile& after,
                       const std::vector<const DxfRecord*>& made) {
    std::set<std::uint64_t> used;
    for (const DxfRecord& record : before.records) used.insert(record.handle());
    const std::uint64_t highest = *used.rbegin();
    const std::uint64_t seed = handleNumber(after.variable("$HANDSEED"));
    for (const DxfRecord* record : made) {
        if (record->handle() == 0) continue;
        EXPECT_TRUE(used.insert(record->handle()).second) << record->text();
        EXPECT_GT(record->handle(), highest) << record->text();
        EXPECT_GE(record->handle(), handleNumber(before.variable("$HANDSEED"))) << record->text();
        EXPECT_LT(record->handle(), seed) << record->text();
    }
    const std::string handling = after.variable("$HANDLING");
    EXPECT_TRUE(after.variable("$ACADVER") >= "AC1015" || (handling != "" && handling != "0"));
}

/// Every table whose count was exact has an exact one; every new table too.
void expectGoodCounts(const DxfFile& before, const DxfFile& after) {
    for (const DxfRecord& record : after.records) {
        if (!record.is("TABLE") || record.section != "TABLES") continue;
        const DxfRecord* former = before.table(record.container);
        const bool exact = former == nullptr ||
                           former->first(70) == std::to_string(before.countIn(record.container));
        EXPECT_EQ(record.first(70),
                  exact ? std::to_string(after.countIn(record.container)) : former->first(70))
            << record.container;
    }
}

/// New lines end as those of the file.
void expectLineEnds(const std::string& before, const std::vector<const DxfRecord*>& made) {
    const std::size_t feed = before.find('\n');
    const bool crlf = feed > 0 && before[feed - 1] == '\r';
    for (const DxfRecord* record : made) {
        const auto feeds = std::ranges::count(record->bytes, '\n');
        EXPECT_EQ(std::ranges::count(record->bytes, '\r'), crlf ? feeds : 0) << record->text();
    }
}

class Corpus : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        const char* place = std::getenv("MORADMIN_CORPUS");
        if (place == nullptr || *place == '\0')
            GTEST_SKIP() << "MORADMIN_CORPUS names no folder with drawings";
        for (const auto& entry : fs::recursive_directory_iterator(place)) {
            std::string extension = entry.path().extension().string();
            std::ranges::transform(extension, extension.begin(),
                                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
            if (extension == ".dxf") m_drawings.push_back(entry.path());
        }
        std::ranges::sort(m_drawings);
        ASSERT_GT(drawings(false).size(), 0u) << place;
    }
    /// The drawings that are read or refused; each as bytes.
    [[nodiscard]] std::vector<fs::path> drawings(bool refused) const {
        std::vector<fs::path> result;
        for (const fs::path& path : m_drawings)
            if (refusalOf(readFile(path)).empty() != refused) result.push_back(path);
        return result;
    }
    /// A copy with a value stored in it.
    std::string stored(const fs::path& original) const {
        std::string copy = file(original.filename().string());
        writeFile(copy, readFile(original));
        const Outcome put = run({"put", copy, "/cfg/user/x", "(1 2 3)", "--no-backup"});
        EXPECT_EQ(put.code, 0) << put.err;
        EXPECT_EQ(put.out + put.err, "");
        return copy;
    }

private:
    std::vector<fs::path> m_drawings;
};

TEST_F(Corpus, KeepsAStoredValueAndEveryByteOfTheOthers) {
    for (const fs::path& original : drawings(false)) {
        SCOPED_TRACE(original.string());
        const std::string copy = stored(original);
        EXPECT_EQ(run({"cat", copy, "/cfg/user/x"}).out, "(1 2 3)\n");
        const std::string bytes = readFile(original);
        const DxfFile before = splitDxf(bytes);
        const DxfFile after = splitDxf(readFile(copy));
        EXPECT_EQ(after.broken, "");
        EXPECT_EQ(after.head, before.head);
        const Comparison compared = compare(before, after);
        EXPECT_EQ(compared.lost, "");
        EXPECT_EQ(outline(compared.made), expectedOutline(before, FileFacts(before)));
        expectFields(before, after, compared.made);
        expectGoodHandles(before, after, compared.made);
        expectGoodCounts(before, after);
        expectLineEnds(bytes, compared.made);
        fs::remove(copy);
    }
}

TEST_F(Corpus, ChangesOnlyTheDirectoryWhenAValueIsStoredAgain) {
    for (const fs::path& original : drawings(false)) {
        SCOPED_TRACE(original.string());
        const std::string copy = stored(original);
        const DxfFile before = splitDxf(readFile(copy));
        ASSERT_EQ(run({"put", copy, "/cfg/user/x", "4", "--no-backup"}).code, 0);
        const DxfFile after = splitDxf(readFile(copy));
        ASSERT_EQ(before.records.size(), after.records.size());
        std::string changed;
        for (std::size_t i = 0; i < before.records.size(); ++i)
            if (before.records[i].bytes != after.records[i].bytes)
                changed += after.records[i].text() + "\n";
        EXPECT_EQ(changed.find("0 INSERT|"), 0u) << changed;
        EXPECT_TRUE(changed.ends_with("|1000 /cfg/user|1000 x|1071 4\n")) << changed;
        EXPECT_EQ(std::ranges::count(changed, '\n'), 1) << changed;
        fs::remove(copy);
    }
}

TEST_F(Corpus, OfOtherFormsKeepsAStoredValueOrIsUntouched) {
    std::string codes;
    for (const fs::path& original : drawings(true)) {
        SCOPED_TRACE(original.string());
        const std::string bytes = readFile(original);
        const std::string copy = file(original.filename().string());
        writeFile(copy, bytes);
        const bool whole = run({"verify", copy}).code == 0;
        const bool old = holds(run({"info", copy}).out, "release   R2.6") ||
                         holds(run({"info", copy}).out, "release   R10");
        const Outcome put = run({"put", copy, "/cfg/user/x", "(1 2 3)", "--no-backup"});
        codes += std::to_string(put.code);
        EXPECT_EQ(put.code, whole && !old ? 0 : 5) << put.err;
        EXPECT_EQ(put.err.empty(), put.code == 0);
        if (put.code == 0) {
            EXPECT_EQ(run({"cat", copy, "/cfg/user/x"}).out, "(1 2 3)\n");
            EXPECT_EQ(run({"verify", copy}).code, 0);
        } else {
            EXPECT_EQ(readFile(copy), bytes);
            EXPECT_EQ(run({"check", copy}).code, whole ? 0 : 4);
            EXPECT_EQ(holds(run({"check", copy}).out, "drawing-damaged"), !whole);
        }
        fs::remove(copy);
        EXPECT_EQ(names(), "");
    }
    EXPECT_TRUE(holds(codes, "0") && holds(codes, "5")) << codes;
}

TEST_F(Corpus, HasNoMoreFaultsForAnotherReaderThanBefore) {
    const std::string python = "/usr/bin/python3";
    if (!fs::exists(python) || run({}).code < 0 ||
        runProgram({python, "-c", "import ezdxf"}, folder()).code != 0)
        GTEST_SKIP() << "there is no ezdxf to judge drawings";
    std::string pairs;
    for (const fs::path& original : drawings(false))
        pairs += original.string() + "\t" + stored(original) + "\n";
    const Outcome judged = runProgram({python, MORADMIN_AUDIT_SCRIPT}, folder(), pairs);
    ASSERT_EQ(judged.code, 0) << judged.err;
    std::istringstream lines{judged.out};
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        EXPECT_TRUE(line.starts_with("good\t")) << line;
    EXPECT_EQ(count, drawings(false).size());
}

}  // namespace
}  // namespace mor::test
