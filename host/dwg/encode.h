#pragma once

#include "host/drawing/group.h"
#include "host/dwg/dwg_file.h"
#include "host/dwg/object_edit.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// New records as objects.
namespace mor::host {

/// Finds records by their names.
class NameSource {
public:
    virtual ~NameSource() = default;
    /// The handle of the record of that table, of its first one for no name; 0 when there is none.
    /// Names are as the file has them; the case of ASCII letters does not count.
    [[nodiscard]] virtual std::uint64_t find(std::string_view table,
                                             std::string_view name) const = 0;
};

/// Where a new object stands.
struct ObjectPlace {
    std::uint64_t handle = 0;
    std::uint64_t owner = 0;
    std::uint64_t previous = 0;  ///< in its block; up to R2000, as is the next one
    std::uint64_t next = 0;
};

/// A new block as its record has it.
struct NewBlock {
    std::uint64_t block = 0;
    std::uint64_t end = 0;
    std::vector<std::uint64_t> members;
    std::vector<std::uint64_t> inserts;
    std::int64_t flags = 0;
    Point3 base{};
};

/// Makes the objects of one file.
class ObjectEncoder {
public:
    ObjectEncoder(const DwgFile& file, const NameSource& names) : m_file(file), m_names(names) {}

    /// Whether records of the type can be made.
    [[nodiscard]] static bool knows(std::string_view type);
    /// The object, size and sum included. `block` is that of a BLOCK_RECORD.
    [[nodiscard]] std::string encode(const GroupList& record, const ObjectPlace& place,
                                     const NewBlock& block = {}) const;
    /// The lists of extended data of groups that begin with a 1001, without the end mark.
    [[nodiscard]] BitWriter extendedData(const GroupList& record, std::size_t begin,
                                         std::size_t end) const;
    [[nodiscard]] BitWriter extendedData(const std::vector<NewGroup>& groups) const;

private:
    struct Making;
    [[nodiscard]] bool since(Release release) const { return m_file.release() >= release; }
    void text(Making& making, std::string_view text) const;
    void beginObject(Making& making, const ObjectPlace& place) const;
    static void addApplication(Making& making);
    static void addStrings(Making& making);
    void beginTableRecord(Making& making, const GroupList& record) const;
    void beginEntity(Making& making, const GroupList& record, const ObjectPlace& place) const;
    void addColour(Making& making, std::int64_t number) const;
    void addLayer(Making& making, const GroupList& record) const;
    void addBlockRecord(Making& making, const NewBlock& block) const;
    void addEntity(Making& making, const GroupList& record) const;
    void addInsert(Making& making, const GroupList& record) const;
    void addText(Making& making, const GroupList& record) const;
    void addAttributeEnd(Making& making, const GroupList& record) const;

    const DwgFile& m_file;
    const NameSource& m_names;
};

}  // namespace mor::host
