#include "tests/host/host_fixture.h"
#include "tests/support/dwg_drawing.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <map>
#include <random>
#include <set>

namespace mor::test {
namespace {

namespace fs = std::filesystem;

/// A small drawing with a store-like list of extended data, as DXF and as DWG.
class Dwg : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        create(host::Release::R2000);
        makeLine(L"WALLS");
        makeLine();
        CMOREntity entity;
        ASSERT_TRUE(entity.Connect(lastEntity()));
        ASSERT_TRUE(entity.SetAttribute(L"note", host::readLisp("\"a\u00E9\"").value()));
        ASSERT_TRUE(entity.Flush());
        m_dxf = savedBytes();
        close();
        m_dwg = DwgDrawing(splitDxf(m_dxf)).build();
    }
    /// What opening makes of the bytes: why they are refused, "damaged: " and what of it, or "".
    [[nodiscard]] std::string opening(std::string_view bytes) {
        writeFile(file("d.dwg"), bytes);
        auto opened = host::openDocument(file("d.dwg"));
        if (!opened) return opened.error().text;
        const auto damage = host::documentInfo(opened.value()).damage;
        readAll(opened.value());
        host::closeDocument(opened.value());
        return damage ? "damaged: " + damage->text : "";
    }
    /// Every group of every record; of lines alone when a type is named.
    static std::string readAll(const AcApDocument* document, const std::string& type = "") {
        std::string all;
        host::forEachRecord(document, [&](const host::RecordInfo& info) {
            const auto groups = host::recordGroups(document, info.name);
            if (!type.empty() && info.type != type) return;
            for (const host::RecordGroup& group : groups)
                all += std::to_string(group.code) + " " + group.value + "|";
        });
        return all;
    }
    [[nodiscard]] DwgFileBytes& dwg() { return m_dwg; }
    [[nodiscard]] const std::string& dxf() const { return m_dxf; }

private:
    std::string m_dxf;
    DwgFileBytes m_dwg;
};

TEST_F(Dwg, ShowsTheGroupsOfItsDxfTwin) {
    std::map<std::string, std::string> twin;
    open(dxf());
    for (const char* type : {"LINE", "LAYER", "LTYPE", "BLOCK", "ENDBLK", "DICTIONARY", "APPID"})
        twin[type] = readAll(document(), type);
    open(dwg().bytes);
    const host::DocumentInfo info = host::documentInfo(document());
    EXPECT_EQ(info.form, "DWG");
    EXPECT_EQ(info.version, "AC1015");
    EXPECT_EQ(info.codePage, "ANSI_1252");
    EXPECT_EQ(info.damage, std::nullopt);
    for (auto& [type, groups] : twin) {
        // The blocks of layouts carry the mark of paper space there.
        if (const std::size_t at = groups.find("5 1C|330 1B|100 AcDbEntity|8 0"); at != groups.npos)
            groups.insert(at + 27, "67 1|");
        if (const std::size_t at = groups.find("5 1D|330 1B|100 AcDbEntity|8 0"); at != groups.npos)
            groups.insert(at + 27, "67 1|");
        if (type == "DICTIONARY")  // items whose objects were left out stand in it all the same
            EXPECT_EQ(readAll(document(), type).substr(0, 60), groups.substr(0, 60));
        else
            EXPECT_EQ(readAll(document(), type), groups) << type;
    }
    CMOREntity entity;
    ASSERT_TRUE(entity.Connect(lastEntity()));
    CMORAdsLispVar value;
    ASSERT_TRUE(entity.GetAttribute(L"note", value));
    EXPECT_EQ(host::lispText(value), "\"a\u00E9\"");
    EXPECT_TRUE(host::verifySave(document()).empty());
}

// What a DXF and a DWG of one drawing come to when the same is done to both.
TEST_F(Dwg, ChangesLikeItsDxfTwin) {
    const auto change = [&](std::string_view bytes) {
        open(bytes);
        makeLine(L"NEW LAYER");
        const double from[] = {1.0, 2.0, 3.0};
        EXPECT_EQ(make(acutBuildList(RTDXF0, L"CIRCLE", 8, L"WALLS", 10, from, 40, 2.5, 0)),
                  RTNORM);
        EXPECT_EQ(make(acutBuildList(RTDXF0, L"TEXT", 8, L"0", 10, from, 40, 2.5, 1, L"caf\u00E9",
                                     50, 0.5, 0)),
                  RTNORM);
        CMOREntity line;
        EXPECT_TRUE(line.Connect(lastEntity()) && line.SetLayer(L"NEW LAYER"));
        EXPECT_TRUE(line.SetAttribute(L"far", host::readLisp("(1 2.5 \"x\")").value()));
        EXPECT_TRUE(line.Flush());
        ads_name name = {};
        EXPECT_EQ(acdbEntNext(nullptr, name), RTNORM);
        EXPECT_EQ(acdbEntDel(name), RTNORM);
        CMORAdsLayer layer;
        EXPECT_TRUE(layer.Connect(L"WALLS") && layer.IsLocked(true) && layer.Flush());
        const std::string saved = savedBytes();
        open(saved);
        EXPECT_TRUE(host::verifySave(document()).empty());
        std::string all;
        for (const char* type : {"LINE", "CIRCLE", "TEXT", "LAYER", "APPID"})
            all += readAll(document(), type) + "\n";
        return all + walk();
    };
    EXPECT_EQ(change(dwg().bytes), change(dxf()));
}

TEST_F(Dwg, IsNotSavedWhenItIsDamaged) {
    std::string bytes = dwg().bytes;
    const std::size_t place = dwg().places.rbegin()->second;
    bytes[place + 9] = static_cast<char>(bytes[place + 9] ^ 1);
    open(bytes);
    const auto saved = host::saveDocument(document());
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().kind, host::ErrorKind::Unwritable);
    EXPECT_TRUE(holds(saved.error().text, "damaged"));
}

// Every byte that is read is covered by a sum.
TEST_F(Dwg, TellsEveryDamagedByte) {
    const std::string whole = dwg().bytes;
    ASSERT_EQ(opening(whole), "");
    for (std::size_t at = 0; at < whole.size(); at += 3) {
        const bool covered = at < 0x58 || (at >= 0x100 && at < whole.size() - 4);
        if (!covered) continue;
        std::string bytes = whole;
        bytes[at] = static_cast<char>(bytes[at] ^ 0x10);
        EXPECT_NE(opening(bytes), "") << at;
    }
    EXPECT_TRUE(holds(opening(whole.substr(0, 6)), "breaks off"));
    for (std::size_t size = 0x100; size < whole.size() - 4; size += 7)
        EXPECT_NE(opening(whole.substr(0, size)), "") << size;
    EXPECT_TRUE(holds(opening("AC1009" + whole.substr(6)), "save it as R2000 or later"));
    EXPECT_TRUE(holds(opening("AC1032" + whole.substr(6)), "the block that leads to its pages"));
}

TEST_F(Dwg, ReadsOnWhereAnObjectIsDamaged) {
    const std::size_t last = dwg().places.rbegin()->second;
    dwg().bytes[last + 12] = static_cast<char>(dwg().bytes[last + 12] ^ 1);
    const std::string handle = host::handleText(dwg().places.rbegin()->first);
    EXPECT_EQ(opening(dwg().bytes), "damaged: object " + handle + ": its checksum is wrong");
    open(dwg().bytes);
    EXPECT_EQ(host::documentInfo(document()).damage->places, 1u);
    EXPECT_TRUE(holds(readAll(document(), "LAYER"), "WALLS"));
}

// So many objects are shared by two threads.
TEST_F(Dwg, ReadsManyObjectsInTheirOrder) {
    open(dxf());
    for (int i = 0; i < 5000; ++i) makeLine(i % 3 == 0 ? L"WALLS" : L"0");
    const std::string many = savedBytes();
    open(many);
    const std::string expected = walk();
    DwgFileBytes twin = DwgDrawing(splitDxf(many)).build();
    open(twin.bytes);
    EXPECT_EQ(host::documentInfo(document()).damage, std::nullopt);
    EXPECT_EQ(walk(), expected);
    std::string damaged;
    for (const std::size_t nth : {40UL, 2400UL, 2900UL, twin.places.size() - 1}) {
        const auto [handle, place] = *std::next(twin.places.begin(), static_cast<long>(nth));
        twin.bytes[place + 14] = static_cast<char>(twin.bytes[place + 14] ^ 1);
        if (damaged.empty()) damaged = host::handleText(handle);
    }
    open(twin.bytes);
    const auto damage = host::documentInfo(document()).damage;
    ASSERT_TRUE(damage);
    EXPECT_EQ(damage->places, 4U);
    EXPECT_EQ(damage->text, "object " + damaged + ": its checksum is wrong");
    EXPECT_EQ(walk(), expected);
}

// Up to R2000 each entity names those before and behind it: what cannot be read costs no other.
TEST_F(Dwg, GoesOnBehindWhatIsMissingInAList) {
    open(dxf());
    for (int i = 0; i < 20; ++i) makeLine();
    const std::string many = savedBytes();
    open(many);
    std::string rest = walk();
    const std::string last = titleOf(lastEntity());
    DwgFileBytes twin = DwgDrawing(splitDxf(many)).build();
    const std::string lost = rest.substr(rest.find("LINE", rest.size() / 2), 23);  // three lines
    for (const char* c = lost.c_str(); (c = std::strchr(c, ':')) != nullptr; ++c) {
        const std::size_t place = twin.places.at(std::strtoull(c + 1, nullptr, 16));
        twin.bytes[place + 2] = static_cast<char>(twin.bytes[place + 2] ^ 0x40);  // its type
    }
    rest.erase(rest.find(lost), lost.size() + 1);
    open(twin.bytes);
    EXPECT_EQ(walk(), rest);
    EXPECT_EQ(titleOf(lastEntity()), last);
    EXPECT_EQ(host::documentInfo(document()).damage->places, 4U);
}

// With the sums out of the way, nothing that stands in a file may lead astray.
TEST_F(Dwg, SurvivesAnyByteBehindItsSums) {
    host::faults::trustSums(true);
    for (std::size_t at = 0x15; at < dwg().bytes.size(); at += 5)
        for (const char value : {'\0', '\x7F', '\x80', '\xFF'}) {
            std::string bytes = dwg().bytes;
            bytes[at] = value;
            static_cast<void>(opening(bytes));
        }
}

TEST_F(Dwg, EndsAChainThatLeadsBackIntoItself) {
    const DxfFile twin = splitDxf(dxf());
    const auto line = std::ranges::find_if(
        twin.records, [](const DxfRecord& record) { return record.is("LINE"); });
    const std::string handle = host::handleText(line->handle());
    EXPECT_EQ(opening(DwgDrawing(twin).follow(line->handle(), line->handle()).build().bytes),
              "damaged: a list of entities breaks off before " + handle);
}

TEST_F(Dwg, RefusesAChangeThatHasNoPlaceInItsBits) {
    open(dwg().bytes);
    ASSERT_TRUE(host::renewHandle(document(), lastEntity()));
    const auto saved = host::saveDocument(document());
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error().kind, host::ErrorKind::Unwritable);
    EXPECT_TRUE(holds(saved.error().text, "a change of group 5 of a LINE is not written to DWG"));
    EXPECT_EQ(readFile(file()), dwg().bytes);
}

// ---- real drawings ------------------------------------------------------------------------------

class DwgCorpus : public HostTest {
protected:
    void SetUp() override {
        HostTest::SetUp();
        const char* folder = std::getenv("MORADMIN_CORPUS_DWG");
        if (folder == nullptr) GTEST_SKIP() << "MORADMIN_CORPUS_DWG names no folder of drawings";
        for (const auto& entry : fs::recursive_directory_iterator(folder))
            if (entry.path().extension() == ".dwg") m_drawings.push_back(entry.path());
        ASSERT_FALSE(m_drawings.empty());
        std::ranges::sort(m_drawings);
    }
    /// What a DXF has beside a DWG: of the same name, or that and its form.
    [[nodiscard]] static fs::path twinOf(const fs::path& drawing) {
        const fs::path folders[] = {
            drawing.parent_path(),
            drawing.parent_path().parent_path() / "../corpus" / drawing.parent_path().filename()};
        for (const fs::path& folder : folders)
            for (const char* ending : {".dxf", "_binary.dxf", "_ascii.dxf"}) {
                const fs::path twin = folder / (drawing.stem().string() + ending);
                if (fs::exists(twin)) return twin;
            }
        return {};
    }
    [[nodiscard]] const std::vector<fs::path>& drawings() const { return m_drawings; }
    AcApDocument* openFile(const fs::path& path) {
        auto opened = host::openDocument(path);
        EXPECT_TRUE(opened) << opened.error().message();
        return opened ? use(opened.value()) : nullptr;
    }

private:
    std::vector<fs::path> m_drawings;
};

TEST_F(DwgCorpus, EverySumAndEveryBitOfWhatIsDecodedIsRight) {
    std::map<std::string, int> types;
    for (const fs::path& drawing : drawings()) {
        ASSERT_NE(openFile(drawing), nullptr);
        EXPECT_EQ(host::documentInfo(document()).damage, std::nullopt) << drawing;
        for (const std::string& lost : host::verifySave(document()))
            ADD_FAILURE() << drawing << ": " << lost;
        host::forEachRecord(document(), [&](const host::RecordInfo& info) {
            EXPECT_NE(info.handle, 0u) << drawing;
            if (!info.opaque) ++types[info.type];
            const auto groups = host::recordGroups(document(), info.name);
            EXPECT_EQ(std::ranges::count(groups, 1001, &host::RecordGroup::code) > 0, info.extended)
                << drawing << " " << info.handle;
        });
    }
    for (const char* type : {"LINE", "INSERT", "ATTRIB", "DIMENSION", "HATCH", "SPLINE", "LAYOUT",
                             "VIEWPORT", "MTEXT", "LWPOLYLINE", "VERTEX", "XRECORD", "DIMSTYLE"})
        EXPECT_GT(types[type], 9) << type;
}

// But for bytes in gaps, in what fills pages up, and in copies.
TEST_F(DwgCorpus, DamagedPagesOfR2007AreTold) {
    const auto found = std::ranges::find_if(drawings(), [](const fs::path& drawing) {
        return readFile(drawing).starts_with("AC1021") && fs::file_size(drawing) > 500000;
    });
    ASSERT_NE(found, drawings().end());
    const std::string whole = readFile(*found);
    std::mt19937 random(7);
    int told = 0;
    for (int i = 0; i < 20; ++i) {
        std::string bytes = whole;
        char& c = bytes[0x80 + random() % (bytes.size() - 0x80)];
        c = static_cast<char>(c ^ 0x24);
        writeFile(file("d.dwg"), bytes);
        auto opened = host::openDocument(file("d.dwg"));
        if (!opened || host::documentInfo(opened.value()).damage) ++told;
        if (opened) host::closeDocument(opened.value());
    }
    EXPECT_GE(told, 18);
}

/// By handle, every record with all its groups.
std::map<std::string, std::string> shownRecords(const AcApDocument* document) {
    std::map<std::string, std::string> all;
    host::forEachRecord(document, [&](const host::RecordInfo& info) {
        if (info.type == "TABLE") return;  // counts its records
        std::string text = info.type + " " + info.container + "|";
        for (const host::RecordGroup& group : host::recordGroups(document, info.name))
            text += std::to_string(group.code) + " " + group.value + "|";
        all.emplace(host::handleText(info.handle), std::move(text));
    });
    return all;
}

TEST_F(DwgCorpus, AValueGoesInAndNothingElseChanges) {
    std::size_t written = 0;
    for (const fs::path& drawing : drawings()) {
        writeFile(file("d.dwg"), readFile(drawing));
        ASSERT_NE(openFile(file("d.dwg")), nullptr);
        const auto before = shownRecords(document());
        const bool writable = host::documentInfo(document()).unwritable.empty();
        makeLine(L"A NEW LAYER");
        CMOREntity entity;
        ASSERT_TRUE(entity.Connect(lastEntity()));
        ASSERT_TRUE(entity.SetAttribute(L"x", host::readLisp("(1 \"\u00E9\")").value()));
        ASSERT_TRUE(entity.Flush());
        const std::wstring handle = static_cast<const wchar_t*>(entity.Handle());
        const auto saved = host::saveDocument(document());
        EXPECT_EQ(static_cast<bool>(saved), writable)
            << drawing << (saved ? "" : saved.error().text);
        if (!saved) continue;
        ++written;
        EXPECT_LT(saved.value().bytes, fs::file_size(drawing) + 40960) << drawing;
        const auto wide = [](std::string_view text) {
            std::string units;
            for (const char c : text) units += {c, '\0'};
            return units;
        };
        const std::string bytes = readFile(file("d.dwg"));
        const bool tells = holds(readFile(drawing), wide("AppInfoDataList"));
        EXPECT_TRUE(!tells || holds(bytes, wide("Written by moradmin."))) << drawing;
        ASSERT_NE(openFile(file("d.dwg")), nullptr);
        EXPECT_EQ(host::documentInfo(document()).damage, std::nullopt) << drawing;
        const auto after = shownRecords(document());
        for (const auto& [other, text] : before) {
            ASSERT_TRUE(after.contains(other)) << drawing << " " << other;
            EXPECT_EQ(after.at(other), text) << drawing << " " << other;
        }
        EXPECT_EQ(after.size(), before.size() + 3) << drawing;  // layer, application, line
        CMORAdsLispVar value;
        ASSERT_TRUE(entity.Connect(named(handle)) && entity.GetAttribute(L"x", value));
        EXPECT_EQ(host::lispText(value), "(1 \"\u00E9\")");
    }
    EXPECT_GT(written, 30u);
}

using Groups = std::vector<host::RecordGroup>;

/// By handle: type, container, and the groups of an entity that tell what it looks like.
std::map<std::string, std::pair<std::string, Groups>> recordsOf(const AcApDocument* document) {
    std::map<std::string, std::pair<std::string, Groups>> all;
    host::forEachRecord(document, [&](const host::RecordInfo& info) {
        if (info.handle == 0 || info.opaque || info.place == host::Place::Structure) return;
        Groups groups = host::recordGroups(document, info.name);
        // Made anew by every conversion: what hangs on a record, data of round trips, numbers of
        // nearest colours, the measured lengths of leaders.
        std::size_t bracket = 0;
        std::erase_if(groups, [&](const host::RecordGroup& group) {
            if (group.code == 102) bracket = group.value.starts_with('{') ? 1 : 2;
            const bool inside = bracket != 0;
            if (bracket == 2) bracket = 0;
            return inside || group.code >= 1000;
        });
        all.emplace(host::handleText(info.handle), std::pair(info.type, std::move(groups)));
    });
    return all;
}

bool saysTheSame(const host::RecordGroup& a, const host::RecordGroup& b) {
    if (a.code != b.code) return false;
    if (a.value == b.value) return true;
    char* endA = nullptr;
    char* endB = nullptr;
    const double x = std::strtod(a.value.c_str(), &endA);
    const double y = std::strtod(b.value.c_str(), &endB);
    // Text forms print sixteen digits.
    return *endA == '\0' && *endB == '\0' &&
           std::abs(x - y) <= 1e-12 * std::max({1.0, std::abs(x), std::abs(y)});
}

// Drawings that were saved in both forms by one program at one time.
TEST_F(DwgCorpus, DecodesWhatItsDxfTwinHas) {
    const std::set<std::string> wanted = {"sample_AC1015", "sample_AC1021", "sample_AC1024",
                                          "sample_AC1027", "BLOCKVISIBILITYPARAMETER"};
    // Conversion writes other things there than the drawing holds.
    const std::set<std::string> made = {"SHAPE",   "LEADER", "SPLINE", "DICTIONARY",
                                        "XRECORD", "VPORT",  "DBCOLOR"};
    std::size_t compared = 0;
    for (const fs::path& drawing : drawings()) {
        const fs::path twin = twinOf(drawing);
        if (twin.empty() || !wanted.contains(drawing.stem().string())) continue;
        ASSERT_NE(openFile(drawing), nullptr);
        const auto ours = recordsOf(document());
        ASSERT_NE(openFile(twin), nullptr);
        const auto theirs = recordsOf(document());
        for (const auto& [handle, record] : ours) {
            const auto found = theirs.find(handle);
            if (found == theirs.end() || made.contains(record.first)) continue;
            ++compared;
            EXPECT_EQ(record.first, found->second.first) << handle;
            const auto differs = [&] {
                const Groups& a = record.second;
                const Groups& b = found->second.second;
                if (a.size() != b.size()) return std::string("other groups");
                bool trueColour = false;
                for (const host::RecordGroup& group : b) trueColour |= group.code / 10 == 42;
                for (std::size_t i = 0; i < a.size(); ++i) {
                    const bool nearest = (a[i].code == 62 || a[i].code == 63) && trueColour;
                    const bool nearestStyle = record.first == "DIMSTYLE" && a[i].code / 10 == 17;
                    if (!nearest && !nearestStyle && !saysTheSame(a[i], b[i]))
                        return std::to_string(a[i].code) + " " + a[i].value + " for " + b[i].value;
                }
                return std::string();
            };
            EXPECT_EQ(differs(), "") << drawing.stem() << " " << record.first << " " << handle;
        }
    }
    EXPECT_GT(compared, 2000u);
}

}  // namespace
}  // namespace mor::test
