#pragma once

#include "host/dwg/classes.h"
#include "host/dwg/header_variables.h"
#include "host/dwg/object_frame.h"
#include "host/dwg/object_map.h"
#include "host/dwg/sections.h"
#include "host/result.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace mor::host {

/// A DWG file with its tables of contents read: objects by handle, types by name.
class DwgFile {
public:
    /// Errors: those of `readSections`, and damage of what leads to the objects.
    static Result<std::unique_ptr<DwgFile>> open(std::shared_ptr<Source> source,
                                                 const std::string& file);
    /// One without objects, which decodes those of others.
    static std::unique_ptr<DwgFile> withoutObjects(Release release, std::vector<DwgClass> classes);

    [[nodiscard]] const Source& source() const { return *m_source; }
    [[nodiscard]] Release release() const { return m_sections.start.release; }
    [[nodiscard]] const DwgStart& start() const { return m_sections.start; }
    [[nodiscard]] const DwgSections& sections() const { return m_sections; }
    [[nodiscard]] const DwgHeader& header() const { return m_header; }
    [[nodiscard]] const ObjectMap& map() const { return m_map; }
    [[nodiscard]] const std::vector<DwgClass>& classes() const { return m_classes; }
    [[nodiscard]] DamageNotes& damage() { return m_sections.damage; }

    [[nodiscard]] ObjectFrame frame(std::uint64_t place, bool testSum = false) const {
        return frameAt(m_sections.objects, place, release(), m_entityClasses, testSum);
    }
    [[nodiscard]] const std::vector<bool>& entityClasses() const { return m_entityClasses; }
    /// Nothing when there is no such object, or it is damaged or another one.
    [[nodiscard]] std::optional<ObjectFrame> frameOf(std::uint64_t handle) const;
    /// The type as DXF names it; null for a class that is not known.
    [[nodiscard]] const DwgClass* classOf(std::uint16_t type) const;

    /// The name of a record of a table as the file has it, of a block as DXF names it; empty when
    /// there is none. It stays where it is.
    [[nodiscard]] const std::string& nameOf(std::uint64_t handle) const;
    /// The name that a block has in DXF, where the file has only its kind.
    void setName(std::uint64_t handle, std::string name) const {
        m_names[handle] = std::move(name);
    }
    /// Completes the colour of an entity by the object that defines it.
    void completeColour(std::uint64_t handle, DwgColour& colour) const;
    /// The material that entities get from their block; 0 when there is none.
    [[nodiscard]] std::uint64_t byBlockMaterial() const;

private:
    DwgFile(std::shared_ptr<Source> source, DwgSections sections)
        : m_source(std::move(source)), m_sections(std::move(sections)) {}
    [[nodiscard]] std::string readContents();
    void keepClasses(std::vector<DwgClass> classes);
    [[nodiscard]] std::string readName(std::uint64_t handle) const;

    std::shared_ptr<Source> m_source;
    DwgSections m_sections;
    DwgHeader m_header;
    ObjectMap m_map;
    std::vector<DwgClass> m_classes;
    std::vector<bool> m_entityClasses;               ///< from class number 500 on
    std::vector<const DwgClass*> m_classesByNumber;  ///< the same way
    mutable std::unordered_map<std::uint64_t, std::string> m_names;
    mutable std::optional<std::uint64_t> m_byBlockMaterial;
};

}  // namespace mor::host
