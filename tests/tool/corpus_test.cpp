#include "host/host.h"
#include "tests/support/dxf_records.h"
#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <set>
#include <sstream>

namespace mor::test {
namespace {

namespace fs = std::filesystem;

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

/// The types of the new records without those of sections and tables; of table records each once.
std::string outline(const std::vector<const DxfRecord*>& made) {
    std::set<std::string> tables;
    std::string others;
    for (const DxfRecord* record : made) {
        const bool ofBlock = record->is("BLOCK") || record->is("ENDBLK");
        if (record->isEdge() && !ofBlock) continue;
        if (record->section == "TABLES")
            tables.insert(record->type());
        else
            others += " " + record->type();
        EXPECT_TRUE(record->section != "BLOCKS" || record->container == "MOR_DWGFILES");
    }
    std::string all;
    for (const std::string& type : tables) all += type + " ";
    return all + "/" + others;
}

/// From R13 on new records have a handle and markers, from R2000 on those of blocks an owner;
/// before, markers where the file's own ones of their kind have them.
void expectForm(const DxfFile& before, const DxfFile& after,
                const std::vector<const DxfRecord*>& made) {
    const std::string version = before.variable("$ACADVER");
    for (const DxfRecord* record : made) {
        if (record->isEdge() && record->section != "BLOCKS") continue;
        std::set<bool> marked;
        for (const DxfRecord& one : before.records)
            if (one.type() == record->type() && one.section == record->section)
                marked.insert(one.first(100).has_value());
        if (version >= "AC1012") marked = {true};
        if (version.empty() && record->is("APPID")) marked = {false};  // readers take it for R12
        const bool same = marked.size() != 1 || marked.contains(record->first(100).has_value());
        EXPECT_TRUE(same) << record->text();
        EXPECT_TRUE(version < "AC1012" || record->handle() != 0) << record->text();
        if (version < "AC1015" || record->section != "BLOCKS") continue;
        EXPECT_EQ(record->owner(), after.named("BLOCK_RECORD", "MOR_DWGFILES")->handle());
    }
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
            if (extension != ".dxf") continue;
            const bool refused = !refusalOf(readFile(entry.path())).empty();
            m_drawings[refused ? 1 : 0].push_back(entry.path());
        }
        for (auto& drawings : m_drawings) std::ranges::sort(drawings);
        ASSERT_GT(drawings(false).size(), 0u) << place;
    }
    /// The drawings that are read or refused; each as bytes.
    [[nodiscard]] const std::vector<fs::path>& drawings(bool refused) const {
        return m_drawings[refused ? 1 : 0];
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
    std::array<std::vector<fs::path>, 2> m_drawings;
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
        const bool marked = std::ranges::any_of(before.records, [](const DxfRecord& record) {
            return record.is("BLOCK") && record.first(100);
        });
        const bool blockRecords =
            before.variable("$ACADVER") >= "AC1012" ||
            (marked && outline(compared.made).find("BLOCK_RECORD") != std::string::npos);
        EXPECT_EQ(outline(compared.made), std::string("APPID ") +
                                              (blockRecords ? "BLOCK_RECORD " : "") +
                                              "LAYER / BLOCK ATTDEF ENDBLK INSERT INSERT INSERT");
        expectForm(before, after, compared.made);
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

TEST_F(Corpus, CutAnywhereSaysWhereItEndsAndIsSalvaged) {
    std::mt19937 random(7);
    const fs::path part = file("part.dxf");
    for (const bool otherForm : {false, true})
        for (const fs::path& original : drawings(otherForm))
            for (int cut = fs::file_size(original) > 300'000 ? 2 : 0; cut < 3; ++cut) {
                std::string bytes = readFile(original);
                bytes.resize(random() % bytes.size());
                SCOPED_TRACE(original.string() + " cut at " + std::to_string(bytes.size()));
                writeFile(part, bytes);
                const auto opened = host::openDocument(part);
                if (!opened) {
                    EXPECT_FALSE(opened.error().text.empty());
                    continue;
                }
                const auto damage = host::documentInfo(opened.value()).damage;
                host::forEachRecord(opened.value(), [&](const host::RecordInfo& record) {
                    static_cast<void>(host::recordGroups(opened.value(), record.name));
                });
                host::closeDocument(opened.value());
                EXPECT_TRUE(otherForm || damage || splitDxf(bytes).broken.empty());
                if (!damage) continue;
                EXPECT_LE(damage->offset, bytes.size());
                EXPECT_FALSE(damage->text.empty());
                const auto salvaged = host::openDocument(part, host::Opening::Salvaged);
                ASSERT_TRUE(salvaged);
                EXPECT_FALSE(host::documentInfo(salvaged.value()).damage);
                EXPECT_EQ(host::verifySave(salvaged.value()), std::vector<std::string>());
                host::closeDocument(salvaged.value());
            }
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
