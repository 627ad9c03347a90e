#pragma once

#include "tests/support/dxf_records.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

/// The records that storing one value makes, as each release of the file format has them.
namespace mor::test {

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

}  // namespace mor::test
