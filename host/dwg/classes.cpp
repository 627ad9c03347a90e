#include "host/dwg/classes.h"

#include "host/dwg/fields.h"

#include <utility>

namespace mor::host {

namespace {

constexpr std::string_view kMark("\x8D\xA1\xC4\xB8\xC4\xA9\xF8\xC5\xC0\xDC\xF4\x5F\xE7\xCF\xB6\x8A",
                                 16);
constexpr std::int16_t kEntityClass = 0x1F2;
constexpr std::size_t kMostClasses = 0x8000;
/// A class takes at least so many bits.
constexpr std::uint64_t kClassBits = 20;

}  // namespace

std::optional<std::vector<DwgClass>> readClasses(const DwgSections& sections) {
    const Release release = sections.start.release;
    const auto data = markedData(sections.classes, kMark, sections.hasHighSizes());
    if (!data) return std::nullopt;
    Fields fields = Fields::ofSection(release, *data);
    std::uint16_t highest = 0;
    if (fields.since(Release::R2004)) {
        highest = static_cast<std::uint16_t>(fields.bitShort());
        static_cast<void>(fields.byte());
        static_cast<void>(fields.byte());
        static_cast<void>(fields.bit());
    }
    std::vector<DwgClass> classes;
    const auto more = [&] {
        if (fields.since(Release::R2004))
            return highest >= 500 && (classes.empty() || classes.back().number < highest);
        return fields.data().remaining() >= kClassBits;
    };
    while (more()) {
        DwgClass found;
        found.number = static_cast<std::uint16_t>(fields.bitShort());
        found.proxyFlags = static_cast<std::uint16_t>(fields.bitShort());
        found.application = fields.text();
        found.cppName = fields.text();
        found.dxfName = fields.text();
        found.wasZombie = fields.bit();
        found.entity = fields.bitShort() == kEntityClass;
        if (fields.since(Release::R2004)) {
            found.instances = fields.bitLong();
            for (int i = 0; i < 4; ++i) static_cast<void>(fields.bitLong());
        }
        const bool rises = classes.empty() || found.number > classes.back().number;
        if (fields.failed() || !rises || classes.size() > kMostClasses) return std::nullopt;
        classes.push_back(std::move(found));
    }
    return classes;
}

}  // namespace mor::host
