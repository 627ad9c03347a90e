#include "host/dwg/header_variables.h"

#include <algorithm>
#include <string_view>

namespace mor::host {

namespace {

constexpr std::string_view kMark("\xCF\x7B\x1F\x23\xFD\xDE\x38\xA9\x5F\x7C\x68\xB8\x4E\x6D\x33\x5F",
                                 16);

/// Passes over the header variables in their order and keeps those that are wanted.
class HeaderReader {
public:
    explicit HeaderReader(Fields fields) : m_fields(fields) {}

    DwgHeader run() {
        readSettings();
        readCurrent();
        readSpaces();
        readDimensions();
        readTables();
        readLayouts();
        readLast();
        return m_header;
    }
    [[nodiscard]] bool failed() const { return m_fields.failed(); }

private:
    /// Passes over fields: b bit, s short, l long, q 64 bits, d real, 2 plain point, 3 point, c
    /// byte, t text, m colour, h handle; a number behind ':' says how many of the kind before it.
    void pass(std::string_view kinds);
    void passOld(std::string_view kinds) {
        if (m_fields.upTo(Release::R14)) pass(kinds);
    }
    void passSince(Release release, std::string_view kinds) {
        if (m_fields.since(release)) pass(kinds);
    }
    void passOne(char kind);
    std::uint64_t handle() { return m_fields.handle().value; }

    void readSettings();
    void readCurrent();
    void readSpaces();
    void readSpace(Point3& base, DrawingSettings& settings);
    void readDimensions();
    void readTables();
    void readLayouts();
    void readLast();

    Fields m_fields;
    DwgHeader m_header;
};

void HeaderReader::passOne(char kind) {
    switch (kind) {
        case 'b':
            static_cast<void>(m_fields.bit());
            break;
        case 's':
            static_cast<void>(m_fields.bitShort());
            break;
        case 'l':
            static_cast<void>(m_fields.bitLong());
            break;
        case 'q':
            static_cast<void>(m_fields.data().bitLongLong());
            break;
        case 'd':
            static_cast<void>(m_fields.bitReal());
            break;
        case '2':
            static_cast<void>(m_fields.point2());
            break;
        case '3':
            static_cast<void>(m_fields.bitPoint3());
            break;
        case 'c':
            static_cast<void>(m_fields.byte());
            break;
        case 't':
            static_cast<void>(m_fields.text());
            break;
        case 'm':
            static_cast<void>(m_fields.colour());
            break;
        default:
            static_cast<void>(m_fields.handle());
            break;
    }
}

void HeaderReader::pass(std::string_view kinds) {
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        int count = kinds[i] == ' ' ? 0 : 1;
        const char kind = kinds[i];
        if (i + 1 < kinds.size() && kinds[i + 1] == ':') {
            count = 0;
            for (i += 2; i < kinds.size() && kinds[i] >= '0' && kinds[i] <= '9'; ++i)
                count = count * 10 + (kinds[i] - '0');
            --i;
        }
        for (; count > 0; --count) passOne(kind);
    }
}

/// Switches and numbers, up to the times.
void HeaderReader::readSettings() {
    passSince(Release::R2013, "q");
    pass("d:4 t:4 l:2");
    passOld("s");
    if (m_fields.upTo(Release::R2000)) pass("h");
    pass("b:2");
    passOld("b");
    pass("b:3");
    m_header.settings.filled = m_fields.bit();
    pass("b:3");
    passOld("b");
    passSince(Release::R2004, "b");
    pass("b:4");
    passOld("b:2");
    pass("b:2");
    passOld("b");
    m_header.tileMode = m_fields.bit();
    pass("b:2");
    passOld("b");
    pass("b:2s");
    passOld("s");
    pass("s:5");
    passOld("s");
    pass("s");
    passOld("s");
    m_header.settings.pointMode = m_fields.bitShort();
    passOld("s");
    passSince(Release::R2004, "l:3");
    pass("s:19");
    m_header.settings.lineTypeScale = m_fields.bitReal();
    pass("d:6");
    m_header.settings.pointSize = m_fields.bitReal();
    pass("d:13");
    if (m_fields.upTo(Release::R2004)) pass("t");
}

/// Times, and what is current.
void HeaderReader::readCurrent() {
    pass("l:4");
    passSince(Release::R2004, "l:3");
    pass("l:4m");
    m_header.seedBegin = m_fields.data().position();
    m_header.seed = m_fields.data().handle().value;
    m_header.seedEnd = m_fields.data().position();
    m_header.currentLayer = handle();
    pass("h:2");
    passSince(Release::R2007, "h");
    pass("h:2");
    passSince(Release::R2000, "d");
}

void HeaderReader::readSpace(Point3& base, DrawingSettings& settings) {
    base = m_fields.bitPoint3();
    for (Point3& corner : settings.extents.emplace()) corner = m_fields.bitPoint3();
    for (Point2& corner : settings.limits.emplace()) corner = m_fields.point2();
    pass("d3:3 h");
    passSince(Release::R2000, "hsh3:6");
}

void HeaderReader::readSpaces() {
    DrawingSettings paper;
    readSpace(m_header.paperInsertionBase, paper);
    readSpace(m_header.insertionBase, m_header.settings);
}

void HeaderReader::readDimensions() {
    passSince(Release::R2000, "t:2");
    passOld("b:11 c:2 b:2 c:3 bc:4 s:6 h");
    pass("d:9");
    passSince(Release::R2007, "d:2 sm");
    passSince(Release::R2000, "b:6 s:3");
    passSince(Release::R2007, "s");
    pass("d:8");
    passOld("t:5");
    passSince(Release::R2000, "dbsb:4");
    pass("m:3");
    passSince(Release::R2000, "s:11 b:2 s:4 bs");
    passSince(Release::R2007, "b");
    passSince(Release::R2010, "bdtdt");
    passSince(Release::R2000, "h:5");
    passSince(Release::R2007, "h:3");
    passSince(Release::R2000, "s:2");
}

void HeaderReader::readTables() {
    m_header.blocks = handle();
    m_header.layers = handle();
    m_header.styles = handle();
    m_header.lineTypes = handle();
    m_header.views = handle();
    m_header.coordinateSystems = handle();
    m_header.viewports = handle();
    m_header.applications = handle();
    m_header.dimensionStyles = handle();
    if (m_fields.upTo(Release::R2000)) m_header.viewportEntities = handle();
    pass("h:2");
    m_header.dictionary = handle();
}

void HeaderReader::readLayouts() {
    if (!m_fields.since(Release::R2000)) return;
    pass("s:2 t:2");
    m_header.layouts = handle();
    pass("h:2");
    if (m_fields.since(Release::R2004)) m_header.materials = handle();
    passSince(Release::R2004, "h");
    passSince(Release::R2007, "h");
    passSince(Release::R2013, "h");
    pass("l");
    m_header.insertionUnits = m_fields.bitShort();
    constexpr int kByPlotStyleHandle = 3;
    if (m_fields.bitShort() == kByPlotStyleHandle) pass("h");
    pass("t:2");
    passSince(Release::R2004, "c:6 s:2 c:2 t");
}

void HeaderReader::readLast() {
    m_header.paperSpace = handle();
    m_header.modelSpace = handle();
    m_header.byLayer = handle();
    m_header.byBlock = handle();
    m_header.continuous = handle();
}

}  // namespace

std::optional<DwgHeader> readHeaderVariables(const DwgSections& sections) {
    const auto data = markedData(sections.header, kMark, sections.hasHighSizes());
    if (!data) return std::nullopt;
    HeaderReader reader(Fields::ofSection(sections.start.release, *data));
    const DwgHeader header = reader.run();
    if (reader.failed() || header.blocks == 0 || header.layers == 0 || header.modelSpace == 0)
        return std::nullopt;
    return header;
}

}  // namespace mor::host
