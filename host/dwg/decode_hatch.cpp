#include "host/dwg/common_data.h"
#include "host/dwg/decoders.h"

namespace mor::host {

namespace {

/// Bits of a boundary path.
enum PathFlag : std::int64_t { kPolyline = 2, kDerived = 4 };

struct Gradient {
    std::int64_t on = 0;
    std::int64_t reserved = 0;
    double angle = 0.0;
    double shift = 0.0;
    std::int64_t single = 0;
    double tint = 0.0;
    std::vector<std::pair<double, DwgColour>> colours;
    std::string name;
};

Gradient readGradient(Fields& in) {
    Gradient gradient;
    gradient.on = in.bitLong();
    gradient.reserved = in.bitLong();
    gradient.angle = in.bitReal();
    gradient.shift = in.bitReal();
    gradient.single = in.bitLong();
    gradient.tint = in.bitReal();
    const std::uint32_t count = in.count(14);
    for (std::uint32_t i = 0; i < count && !in.failed(); ++i) {
        const double at = in.bitReal();
        gradient.colours.emplace_back(at, in.colour());
    }
    gradient.name = in.text();
    return gradient;
}

void writeGradient(GroupWriter& out, const Gradient& gradient) {
    out.integer(450, gradient.on);
    out.integer(451, gradient.reserved);
    out.real(460, gradient.angle);
    out.real(461, gradient.shift);
    out.integer(452, gradient.single);
    out.real(462, gradient.tint);
    out.integer(453, static_cast<std::int64_t>(gradient.colours.size()));
    for (const auto& [at, colour] : gradient.colours) {
        out.real(463, at);
        writeColour(out, colour, 63, 421);
    }
    out.text(470, gradient.name);
}

/// Reads the paths of a boundary and writes them as it goes.
class Paths {
public:
    explicit Paths(RecordReader& record) : m_record(record), m_in(record.in), m_out(record.out) {}

    /// Whether one of them was derived from what stands around.
    bool run(std::uint32_t count) {
        // Handles of boundary objects stand in a stream of their own, in the same order.
        for (std::uint32_t i = 0; i < count && !m_in.failed(); ++i) {
            const std::int64_t flags = m_in.bitLong();
            m_derived = m_derived || (flags & kDerived) != 0;
            m_out.integer(92, flags);
            (flags & kPolyline) != 0 ? polyline() : edges();
            const std::uint32_t objects = m_in.handleCount();
            m_out.integer(97, objects);
            for (const std::uint64_t object : m_record.handles(objects)) m_out.handle(330, object);
        }
        return m_derived;
    }

private:
    void polyline() {
        const bool bulges = m_in.bit();
        m_out.flag(72, bulges);
        m_out.flag(73, m_in.bit());
        const std::uint32_t points = m_in.count(128);
        m_out.integer(93, points);
        for (std::uint32_t i = 0; i < points && !m_in.failed(); ++i) {
            m_out.point(10, m_in.point2());
            if (bulges) m_out.real(42, m_in.bitReal());
        }
    }
    void edges() {
        const std::uint32_t count = m_in.count(8);
        m_out.integer(93, count);
        for (std::uint32_t i = 0; i < count && !m_in.failed(); ++i) edge(m_in.byte());
    }
    void edge(unsigned kind) {
        m_out.integer(72, kind);
        switch (kind) {
            case 1:
                m_out.point(10, m_in.point2());
                m_out.point(11, m_in.point2());
                break;
            case 2:
                m_out.point(10, m_in.point2());
                m_out.real(40, m_in.bitReal());
                angles();
                break;
            case 3:
                m_out.point(10, m_in.point2());
                m_out.point(11, m_in.point2());
                m_out.real(40, m_in.bitReal());
                angles();
                break;
            case 4:
                spline();
                break;
            default:
                m_in.fail();
                break;
        }
    }
    void angles() {
        m_out.angle(50, m_in.bitReal());
        m_out.angle(51, m_in.bitReal());
        m_out.flag(73, m_in.bit());
    }
    void spline() {
        m_out.integer(94, m_in.bitLong());
        const bool rational = m_in.bit();
        m_out.flag(73, rational);
        m_out.flag(74, m_in.bit());
        const std::uint32_t knots = m_in.count(2);
        const std::uint32_t points = m_in.count(128);
        m_out.integer(95, knots);
        m_out.integer(96, points);
        for (std::uint32_t i = 0; i < knots && !m_in.failed(); ++i) m_out.real(40, m_in.bitReal());
        for (std::uint32_t i = 0; i < points && !m_in.failed(); ++i) {
            m_out.point(10, m_in.point2());
            if (rational) m_out.real(42, m_in.bitReal());
        }
        if (!m_in.since(Release::R2010)) return;
        const std::uint32_t fits = m_in.count(128);
        m_out.integer(97, fits);
        if (fits == 0) return;
        for (std::uint32_t i = 0; i < fits && !m_in.failed(); ++i) m_out.point(11, m_in.point2());
        m_out.point(12, m_in.point2());
        m_out.point(13, m_in.point2());
    }

    RecordReader& m_record;
    Fields& m_in;
    GroupWriter& m_out;
    bool m_derived = false;
};

void decodePattern(Fields& in, GroupWriter& out) {
    out.angle(52, in.bitReal());
    out.real(41, in.bitReal());
    out.flag(77, in.bit());
    const auto lines = static_cast<std::uint16_t>(in.bitShort());
    out.integer(78, lines);
    for (unsigned i = 0; i < lines && !in.failed(); ++i) {
        out.angle(53, in.bitReal());
        for (const int code : {43, 44, 45, 46}) out.real(code, in.bitReal());
        const auto dashes = static_cast<std::uint16_t>(in.bitShort());
        out.integer(79, dashes);
        for (unsigned k = 0; k < dashes && !in.failed(); ++k) out.real(49, in.bitReal());
    }
}

}  // namespace

void decodeHatch(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    Gradient gradient;
    if (in.since(Release::R2004)) gradient = readGradient(in);
    out.marker("AcDbHatch");
    out.point(10, Point3{0.0, 0.0, in.bitReal()});
    out.point(210, in.bitPoint3());
    out.text(2, in.text());
    const bool solid = in.bit();
    out.flag(70, solid);
    out.flag(71, in.bit());
    const std::uint32_t paths = in.count(2);
    out.integer(91, paths);
    const bool derived = Paths(record).run(paths);
    out.integer(75, in.bitShort());
    out.integer(76, in.bitShort());
    if (!solid) decodePattern(in, out);
    if (derived) out.real(47, in.bitReal());
    const std::uint32_t seeds = in.count(128);
    out.integer(98, seeds);
    for (std::uint32_t i = 0; i < seeds && !in.failed(); ++i) out.point(10, in.point2());
    if (gradient.on != 0) writeGradient(out, gradient);
}

}  // namespace mor::host
