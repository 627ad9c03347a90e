#pragma once

#include "tests/support/dwg_extended.h"
#include "tests/support/dwg_file.h"
#include "tests/support/dxf_records.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// Makes DWG files of R2000 without the help of the program that is tested.
namespace mor::test {

/// A DWG file of R2000 with the tables, blocks, inserts, lines and dictionaries of a DXF file of
/// that release, under the same handles. Other records are left out.
class DwgDrawing {
public:
    explicit DwgDrawing(const DxfFile& file) : m_file(file) {}

    /// The entity names another one than its own as the next of its block.
    DwgDrawing& follow(std::uint64_t entity, std::uint64_t next) {
        m_next[entity] = next;
        return *this;
    }
    DwgFileBytes build() {
        for (const DxfRecord& record : m_file.records) note(record);
        for (const DxfRecord& record : m_file.records) add(record);
        const DxfRecord* header = m_file.section("HEADER");
        for (std::size_t i = 1; i < header->tags.size(); ++i)
            if (header->tags[i - 1].value == "$HANDSEED")
                m_seed = handleNumber(header->tags[i].value);
        return dwgFile(m_objects, headerVariables());
    }

private:
    struct Block {
        std::vector<std::uint64_t> members;
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
    };

    [[nodiscard]] std::uint64_t table(const char* name) const {
        return m_file.table(name)->handle();
    }
    [[nodiscard]] std::uint64_t named(const char* type, const std::string& name) const {
        const DxfRecord* found = m_file.named(type, name);
        return found == nullptr ? 0 : found->handle();
    }
    [[nodiscard]] static double real(const DxfRecord& record, int code, double missing) {
        const auto text = record.first(code);
        return text ? std::strtod(text->c_str(), nullptr) : missing;
    }
    [[nodiscard]] static int integer(const DxfRecord& record, int code, int missing) {
        return static_cast<int>(real(record, code, missing));
    }
    [[nodiscard]] static bool isMember(const DxfRecord& record) {
        return record.is("INSERT") || record.is("LINE") || record.is("ATTDEF");
    }

    void note(const DxfRecord& record) {
        if (record.is("BLOCK")) m_blocks[record.owner()].begin = record.handle();
        if (record.is("ENDBLK")) m_blocks[record.owner()].end = record.handle();
        if (isMember(record)) m_blocks[record.owner()].members.push_back(record.handle());
    }

    void add(const DxfRecord& record) {
        static const std::map<std::string, int> controls = {
            {"BLOCK_RECORD", 48}, {"LAYER", 50}, {"STYLE", 52}, {"LTYPE", 56},   {"VIEW", 60},
            {"UCS", 62},          {"VPORT", 64}, {"APPID", 66}, {"DIMSTYLE", 68}};
        if (record.is("TABLE")) {
            addControl(record, controls.at(record.container));
        } else if (record.is("LAYER")) {
            const int flags = integer(record, 70, 0);
            seal(record, 51,
                 start(record).bitShort((flags & 1) + (flags & 4) * 2 + 0x3F0).bitShort(7),
                 hooks(record)
                     .zeros('h')
                     .handle(5, handleNumber(record.first(390).value_or("0")))
                     .handle(5, named("LTYPE", "Continuous")));
        } else if (record.is("LTYPE")) {
            DwgBits data = start(record).text("").bitReal(0.0).byte('A').byte(0);
            for (int i = 0; i < 256; ++i) data.byte(0);
            seal(record, 57, data, hooks(record).zeros('h'));
        } else if (record.is("STYLE")) {
            seal(record, 53,
                 start(record)
                     .zeros('b', 2)
                     .zeros('d')
                     .bitReal(1.0)
                     .zeros('d')
                     .byte(0)
                     .bitReal(2.5)
                     .text("txt")
                     .text(""),
                 hooks(record).zeros('h'));
        } else if (record.is("APPID")) {
            seal(record, 67, start(record).byte(0), hooks(record).zeros('h'));
        } else if (record.is("BLOCK_RECORD")) {
            addBlockHeader(record);
        } else if (record.is("DICTIONARY")) {
            addDictionary(record);
        } else if (isMember(record) || record.is("BLOCK") || record.is("ENDBLK")) {
            addEntity(record);
        }
    }
    void addControl(const DxfRecord& record, int type) {
        const bool blocks = type == 48;
        const bool lineTypes = type == 56;
        std::vector<std::uint64_t> entries;
        DwgBits last;
        for (const DxfRecord& entry : m_file.records) {
            if (entry.isEdge() || entry.container != record.container || entry.section != "TABLES")
                continue;
            const std::string name = entry.first(2).value_or("");
            const bool fixed = (blocks && (name == "*Model_Space" || name == "*Paper_Space")) ||
                               (lineTypes && name != "Continuous");
            if (type == 64 || type == 68) continue;  // VPORT and DIMSTYLE are left out
            if (fixed)
                last.handle(3, entry.handle());
            else
                entries.push_back(entry.handle());
        }
        DwgBits data = DwgBits().bitLong(0).bitLong(static_cast<std::uint32_t>(entries.size()));
        if (type == 68) data.byte(0);
        DwgBits handles = DwgBits().handle(4, 0).handle(3, 0);
        for (const std::uint64_t entry : entries) handles.handle(2, entry);
        seal(record, type, data, handles.add(last));
    }
    void addBlockHeader(const DxfRecord& record) {
        const Block& block = m_blocks[record.handle()];
        const std::uint64_t first = block.members.empty() ? 0 : block.members.front();
        const std::uint64_t end = block.members.empty() ? 0 : block.members.back();
        seal(record, 49,
             start(record).zeros('b', 5).point(0, 0, 0).text("").byte(0).text("").bitLong(0),
             hooks(record)
                 .zeros('h')
                 .handle(3, block.begin)
                 .handle(4, first)
                 .handle(4, end)
                 .handle(3, block.end)
                 .zeros('h'));
    }
    void addDictionary(const DxfRecord& record) {
        std::vector<std::pair<std::string, std::uint64_t>> items;
        for (std::size_t i = 1; i < record.tags.size(); ++i)
            if (record.tags[i].code == 350 || record.tags[i].code == 360)
                items.emplace_back(record.tags[i - 1].value, handleNumber(record.tags[i].value));
        DwgBits data = DwgBits()
                           .bitLong(0)
                           .bitLong(static_cast<std::uint32_t>(items.size()))
                           .bitShort(1)
                           .byte(0);
        DwgBits handles = hooks(record);
        for (const auto& [key, item] : items) {
            data.text(key);
            handles.handle(2, item);
        }
        seal(record, 42, data, handles);
    }
    void addEntity(const DxfRecord& record) {
        DwgBits handles = entityHooks(record);
        if (record.is("BLOCK")) {
            seal(record, 4, entity(record).text("stale"), handles);
        } else if (record.is("ENDBLK")) {
            seal(record, 5, entity(record), handles);
        } else if (record.is("LINE")) {
            DwgBits data = entity(record).flag(false);
            for (const int code : {10, 20, 30})
                data.real(real(record, code, 0)).bits(3, 2).real(real(record, code + 1, 0));
            seal(record, 19, data.flag(true).flag(true), handles);
        } else if (record.is("INSERT")) {
            seal(record, 7,
                 entity(record)
                     .point(real(record, 10, 0), real(record, 20, 0), real(record, 30, 0))
                     .bits(3, 2)
                     .zeros('d')
                     .point(0, 0, 1)
                     .flag(false),
                 handles.handle(5, named("BLOCK_RECORD", record.first(2).value_or(""))));
        } else if (record.is("ATTDEF")) {
            seal(record, 3,
                 entity(record)
                     .byte(0xFF)
                     .real(0)
                     .real(0)
                     .flag(true)
                     .flag(true)
                     .real(1.0)
                     .text("")
                     .text("mor")
                     .bitShort(0)
                     .byte(static_cast<unsigned>(integer(record, 70, 0)))
                     .text("mor"),
                 handles.handle(5, named("STYLE", "Standard")));
        }
    }

    /// What all entities begin with.
    [[nodiscard]] DwgBits entity(const DxfRecord& record) const {
        const bool model = record.owner() == modelSpace();
        return DwgBits()
            .flag(false)
            .bits(model ? 2 : 0, 2)
            .bitLong(0)
            .flag(false)
            .bitShort(256)
            .bitReal(1.0)
            .bits(0, 2)
            .bits(0, 2)
            .bitShort(0)
            .byte(29);
    }
    [[nodiscard]] DwgBits entityHooks(const DxfRecord& record) const {
        DwgBits handles;
        if (record.owner() != modelSpace()) handles.handle(4, record.owner());
        handles.handle(3, 0);
        const auto& members = m_blocks.at(record.owner()).members;
        const auto at = std::ranges::find(members, record.handle());
        const bool linked = at != members.end();
        handles.handle(4, linked && at != members.begin() ? *(at - 1) : 0);
        const auto other = m_next.find(record.handle());
        const bool more = linked && at + 1 != members.end();
        handles.handle(4, other != m_next.end() ? other->second : more ? *(at + 1) : 0);
        return handles.handle(5, named("LAYER", record.first(8).value_or("0")));
    }
    [[nodiscard]] static DwgBits start(const DxfRecord& record) {
        return DwgBits()
            .bitLong(0)
            .text(record.first(2).value_or(""))
            .flag(true)
            .bitShort(0)
            .flag(false);
    }
    [[nodiscard]] static DwgBits hooks(const DxfRecord& record) {
        return DwgBits().handle(4, record.owner()).handle(3, 0);
    }
    [[nodiscard]] std::uint64_t modelSpace() const { return named("BLOCK_RECORD", "*Model_Space"); }

    void seal(const DxfRecord& record, int type, const DwgBits& data, const DwgBits& handles) {
        DwgBits own =
            DwgBits()
                .handle(0, record.handle())
                .add(dwgExtendedData(record,
                                     [&](const std::string& name) { return named("APPID", name); }))
                .add(data);
        DwgBits bits = DwgBits().bitShort(type);
        const auto dataBits = static_cast<std::uint32_t>(bits.size() + 32 + own.size());
        const std::string body = bits.number(dataBits, 4).add(own).add(handles).bytes();
        DwgBits size;
        if (body.size() >= 0x8000)
            size.number((body.size() & 0x7FFFU) | 0x8000U, 2).number(body.size() >> 15U, 2);
        else
            size.number(body.size(), 2);
        m_objects.emplace_back(record.handle(), dwgSealed(size.bytes() + body));
    }

    [[nodiscard]] std::string headerVariables() const {
        std::vector<std::uint64_t> tables;
        for (const char* name : {"BLOCK_RECORD", "LAYER", "STYLE", "LTYPE", "VIEW", "UCS", "VPORT",
                                 "APPID", "DIMSTYLE"})
            tables.push_back(table(name));
        std::vector<std::uint64_t> last = {named("BLOCK_RECORD", "*Paper_Space"), modelSpace()};
        for (const char* name : {"ByLayer", "ByBlock", "Continuous"})
            last.push_back(named("LTYPE", name));
        return dwgHeaderVariables(m_seed, tables, dictionary(), last);
    }
    [[nodiscard]] std::uint64_t dictionary() const {
        for (const DxfRecord& record : m_file.records)
            if (record.is("DICTIONARY")) return record.handle();
        return 0;
    }
    const DxfFile& m_file;
    std::map<std::uint64_t, std::uint64_t> m_next;
    std::map<std::uint64_t, Block> m_blocks;  // by their records' handles
    DwgObjects m_objects;
    std::uint64_t m_seed = 0;
};

}  // namespace mor::test
