#include "host/dwg/dwg_file.h"

#include "host/dwg/common_data.h"
#include "host/dwg/record_groups.h"

#include <utility>

namespace mor::host {

Result<std::unique_ptr<DwgFile>> DwgFile::open(std::shared_ptr<Source> source,
                                               const std::string& file) {
    auto sections = readSections(*source, file);
    if (!sections) return sections.error();
    std::unique_ptr<DwgFile> opened(new DwgFile(std::move(source), std::move(sections.value())));
    if (const std::string wrong = opened->readContents(); !wrong.empty())
        return Error{ErrorKind::Damaged, file, 0, "the DWG file is damaged: " + wrong};
    return opened;
}

std::unique_ptr<DwgFile> DwgFile::withoutObjects(Release release, std::vector<DwgClass> classes) {
    DwgSections sections;
    sections.start.release = release;
    std::unique_ptr<DwgFile> file(new DwgFile(makeBufferSource({}), std::move(sections)));
    file->keepClasses(std::move(classes));
    return file;
}

void DwgFile::keepClasses(std::vector<DwgClass> classes) {
    m_classes = std::move(classes);
    for (const DwgClass& known : m_classes) {
        if (known.number < kDwgFirstClass) continue;
        const std::size_t index = known.number - std::size_t{kDwgFirstClass};
        m_entityClasses.resize(index + 1);
        m_classesByNumber.resize(index + 1);
        m_entityClasses[index] = known.entity;
        m_classesByNumber[index] = &known;
    }
}

std::string DwgFile::readContents() {
    auto classes = readClasses(m_sections);
    if (!classes) return "its classes cannot be read";
    keepClasses(std::move(*classes));
    const auto header = readHeaderVariables(m_sections);
    if (!header) return "its header variables cannot be read";
    m_header = *header;
    return m_map.read(m_sections, m_sections.damage);
}

std::optional<ObjectFrame> DwgFile::frameOf(std::uint64_t handle) const {
    const MapEntry* entry = handle == 0 ? nullptr : m_map.find(handle);
    if (entry == nullptr) return std::nullopt;
    const ObjectFrame found = frame(entry->place);
    if (found.wrong != nullptr || found.handle != handle) return std::nullopt;
    return found;
}

const DwgClass* DwgFile::classOf(std::uint16_t type) const {
    const std::size_t index = type - std::size_t{kDwgFirstClass};
    return type >= kDwgFirstClass && index < m_classesByNumber.size() ? m_classesByNumber[index]
                                                                      : nullptr;
}

const std::string& DwgFile::nameOf(std::uint64_t handle) const {
    const auto [known, added] = m_names.try_emplace(handle);
    if (added) known->second = readName(handle);
    return known->second;
}

/// Records of tables, and the few others that are referred to by name, begin with it.
std::string DwgFile::readName(std::uint64_t handle) const {
    const auto found = frameOf(handle);
    if (!found || found->entity) return {};
    Fields fields = found->fields(release());
    static_cast<void>(readObjectData(fields, *found));
    return fields.text();
}

void DwgFile::completeColour(std::uint64_t handle, DwgColour& colour) const {
    const auto found = frameOf(handle);
    const DwgClass* known = found ? classOf(found->type) : nullptr;
    if (known == nullptr || known->dxfName != "DBCOLOR") return;
    Fields fields = found->fields(release());
    static_cast<void>(readObjectData(fields, *found));
    const DwgColour defined = fields.colour();
    if (fields.failed()) return;
    colour.trueColour = defined.trueColour;
    colour.name = defined.name;
    colour.book = defined.book;
}

std::uint64_t DwgFile::byBlockMaterial() const {
    if (m_byBlockMaterial) return *m_byBlockMaterial;
    m_byBlockMaterial = 0;
    const auto dictionary = frameOf(m_header.materials);
    if (!dictionary || dictionary->type != kDwgDictionary) return 0;
    GroupList groups = decodeRecord(*this, *dictionary).groups;
    bool next = false;
    for (const Group& group : groups) {
        if (next) m_byBlockMaterial = group.handle();
        next = group.code() == 3 && group.text() == "ByBlock";
    }
    return *m_byBlockMaterial;
}

}  // namespace mor::host
