#include "host/dwg/common_data.h"
#include "host/dwg/decoders.h"
#include "host/text/group_codes.h"

#include <utility>

namespace mor::host {

namespace {

constexpr int kSoftItem = 350;
constexpr int kHardItem = 360;

}  // namespace

void decodeDictionary(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    const std::uint32_t count = in.handleCount();
    if (in.release() == Release::R14) static_cast<void>(in.byte());
    const bool newer = in.since(Release::R2000);
    const std::int64_t merging = newer ? in.bitShort() : 0;
    const bool hard = newer && in.byte() == 1;
    out.marker("AcDbDictionary");
    if (hard) out.integer(280, 1);
    if (newer) out.integer(281, merging);
    for (std::uint32_t i = 0; i < count && !in.failed(); ++i) {
        out.text(3, in.text());
        out.handle(hard ? kHardItem : kSoftItem, record.handle());
    }
}

void decodeDictionaryWithDefault(RecordReader& record) {
    decodeDictionary(record);
    record.out.marker("AcDbDictionaryWithDefault");
    record.out.handle(340, record.handle());
}

void decodeDictionaryVariable(RecordReader& record) {
    record.out.marker("DictionaryVariables");
    record.out.integer(280, record.in.byte());
    record.out.text(1, record.in.text());
}

// ---- extension records --------------------------------------------------------------------------

namespace {

/// Turns the items of an extension record into groups; false when they break off or mean nothing.
class XrecordItems {
public:
    XrecordItems(std::string_view bytes, GroupWriter& out, Release release)
        : m_in(bytes), m_out(out), m_wide(release >= Release::R2007) {}

    void run() {
        while (m_in.remaining() >= 2 && !m_in.failed()) {
            const int code = static_cast<std::int16_t>(m_in.word());
            item(code);
        }
    }

private:
    /// Whether three reals follow, whatever records of other types have under that code.
    [[nodiscard]] static bool isPoint(int code) {
        return (code >= 10 && code < 40) || (code >= 110 && code < 140) ||
               (code >= 210 && code < 240);
    }
    void item(int code) {
        if (isPoint(code)) {
            for (int axis = 0; axis < 3; ++axis) m_out.real(code + 10 * axis, m_in.real());
            return;
        }
        switch (codeKind(code)) {
            case CodeKind::Text:
                text(code);
                break;
            case CodeKind::Handle:
                m_out.handle(code, m_in.number(8));
                break;
            case CodeKind::Point:
            case CodeKind::Real:
                m_out.real(code, m_in.real());
                break;
            case CodeKind::Integer16:
                small(code);
                break;
            case CodeKind::Integer32:
                m_out.integer(code, static_cast<std::int32_t>(m_in.longWord()));
                break;
            case CodeKind::Integer64:
                m_out.integer(code, static_cast<std::int64_t>(m_in.number(8)));
                break;
            case CodeKind::Flag:
                m_out.integer(code, m_in.byte());
                break;
            case CodeKind::Chunk:
                writeBytes(m_out, m_in.bytes(m_in.byte()), 0, code);
                break;
            case CodeKind::Unknown:
                m_in.fail();
                break;
        }
    }
    /// 280 to 289 have one byte.
    void small(int code) {
        if (code >= 280 && code < 290)
            m_out.integer(code, m_in.byte());
        else
            m_out.integer(code, static_cast<std::int16_t>(m_in.word()));
    }
    void text(int code) {
        const std::size_t count = m_in.word();
        if (m_wide) {
            m_out.text(code, utf8Of(m_in.bytes(count * 2)));
            return;
        }
        static_cast<void>(m_in.byte());
        m_out.text(code, std::string(m_in.bytes(count)));
    }

    ByteReader m_in;
    GroupWriter& m_out;
    bool m_wide;
};

}  // namespace

void decodeXrecord(RecordReader& record) {
    Fields& in = record.in;
    const std::uint32_t size = in.count(8);
    const std::string bytes = in.data().bytes(size);
    const std::int64_t cloning = in.since(Release::R2000) ? in.bitShort() : 0;
    while (in.handles().remaining() >= 8 && !in.failed()) static_cast<void>(record.handle());
    record.out.marker("AcDbXrecord");
    if (in.since(Release::R2000)) record.out.integer(280, cloning);
    XrecordItems(bytes, record.out, in.release()).run();
}

// ---- layouts ------------------------------------------------------------------------------------

namespace {

struct PlotSettings {
    std::array<std::string, 6> texts;  ///< groups 1, 2, 4, 6, 7
    std::int64_t flags = 0;
    std::array<double, 6> margins{};      ///< 40 to 45
    std::array<double, 6> window{};       ///< 46, 47, 48, 49, 140, 141
    std::array<std::int64_t, 4> kinds{};  ///< 72 to 75
    std::array<double, 3> scale{};        ///< 142, 143, 147
    Point2 origin{};                      ///< 148, 149
    std::array<std::int64_t, 3> shade{};  ///< 76 to 78
};

PlotSettings readPlotSettings(Fields& in) {
    PlotSettings plot;
    auto& [page, device, paper, view, sheet, unused] = plot.texts;
    page = in.text();
    device = in.text();
    plot.flags = in.bitShort();
    for (double& margin : plot.margins) margin = in.bitReal();
    paper = in.text();
    plot.window[0] = in.bitReal();
    plot.window[1] = in.bitReal();
    for (std::size_t i = 0; i < 3; ++i) plot.kinds[i] = in.bitShort();
    for (std::size_t i = 2; i < plot.window.size(); ++i) plot.window[i] = in.bitReal();
    if (in.upTo(Release::R2000)) view = in.text();
    plot.scale[0] = in.bitReal();
    plot.scale[1] = in.bitReal();
    sheet = in.text();
    plot.kinds[3] = in.bitShort();
    plot.scale[2] = in.bitReal();
    plot.origin = in.bitPoint2();
    if (in.since(Release::R2004))
        for (std::int64_t& value : plot.shade) value = in.bitShort();
    static_cast<void>(unused);
    return plot;
}

void writePlotSettings(RecordReader& record, const PlotSettings& plot) {
    GroupWriter& out = record.out;
    static constexpr int windowCodes[] = {46, 47, 48, 49, 140, 141};
    out.marker("AcDbPlotSettings");
    out.text(1, plot.texts[0]);
    out.text(2, plot.texts[1]);
    out.text(4, plot.texts[2]);
    out.text(6, plot.texts[3]);
    for (std::size_t i = 0; i < plot.margins.size(); ++i)
        out.real(40 + static_cast<int>(i), plot.margins[i]);
    for (std::size_t i = 0; i < plot.window.size(); ++i) out.real(windowCodes[i], plot.window[i]);
    out.real(142, plot.scale[0]);
    out.real(143, plot.scale[1]);
    out.integer(70, plot.flags);
    for (std::size_t i = 0; i < 3; ++i) out.integer(72 + static_cast<int>(i), plot.kinds[i]);
    out.text(7, plot.texts[4]);
    out.integer(75, plot.kinds[3]);
    out.real(147, plot.scale[2]);
    if (record.since(Release::R2004))
        for (std::size_t i = 0; i < plot.shade.size(); ++i)
            out.integer(76 + static_cast<int>(i), plot.shade[i]);
    out.real(148, plot.origin[0]);
    out.real(149, plot.origin[1]);
}

/// The handles of plot settings: a view and a style to plot with.
void passPlotHandles(RecordReader& record) {
    if (record.since(Release::R2004)) static_cast<void>(record.handle());
    if (record.since(Release::R2007)) static_cast<void>(record.handle());
}

struct Layout {
    std::string name;
    std::int64_t order = 0;
    std::int64_t flags = 0;
    Point3 origin{};
    Point2 limitsLow{};
    Point2 limitsHigh{};
    Point3 insertionBase{};
    Point3 xAxis{};
    Point3 yAxis{};
    double elevation = 0.0;
    std::int64_t orthographic = 0;
    Point3 extentsLow{};
    Point3 extentsHigh{};
    std::uint32_t viewports = 0;
};

Layout readLayout(Fields& in) {
    Layout layout;
    layout.name = in.text();
    layout.order = in.bitLong();
    layout.flags = in.bitShort();
    layout.origin = in.bitPoint3();
    layout.limitsLow = in.point2();
    layout.limitsHigh = in.point2();
    layout.insertionBase = in.bitPoint3();
    layout.xAxis = in.bitPoint3();
    layout.yAxis = in.bitPoint3();
    layout.elevation = in.bitReal();
    layout.orthographic = in.bitShort();
    layout.extentsLow = in.bitPoint3();
    layout.extentsHigh = in.bitPoint3();
    if (in.since(Release::R2004)) layout.viewports = in.handleCount();
    return layout;
}

void writeLayout(GroupWriter& out, const Layout& layout) {
    out.marker("AcDbLayout");
    out.text(1, layout.name);
    out.integer(70, layout.flags);
    out.integer(71, layout.order);
    out.point(10, layout.limitsLow);
    out.point(11, layout.limitsHigh);
    out.point(12, layout.insertionBase);
    out.point(14, layout.extentsLow);
    out.point(15, layout.extentsHigh);
    out.real(146, layout.elevation);
    out.point(13, layout.origin);
    out.point(16, layout.xAxis);
    out.point(17, layout.yAxis);
    out.integer(76, layout.orthographic);
}

}  // namespace

void decodePlotSettings(RecordReader& record) {
    const PlotSettings plot = readPlotSettings(record.in);
    passPlotHandles(record);
    writePlotSettings(record, plot);
}

void decodeLayout(RecordReader& record) {
    const PlotSettings plot = readPlotSettings(record.in);
    const Layout layout = readLayout(record.in);
    passPlotHandles(record);
    writePlotSettings(record, plot);
    writeLayout(record.out, layout);
    record.out.handle(330, record.handle());
    if (const std::uint64_t viewport = record.handle(); viewport != 0)
        record.out.handle(331, viewport);
    const std::uint64_t base = record.handle();
    const std::uint64_t named = record.handle();
    if (named != 0) record.out.handle(345, named);
    if (base != 0) record.out.handle(346, base);
    static_cast<void>(record.handles(layout.viewports));
}

// ---- others -------------------------------------------------------------------------------------

void decodeGroup(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    out.marker("AcDbGroup");
    out.text(300, in.text());
    out.integer(70, in.bitShort());
    out.integer(71, in.bitShort());
    for (const std::uint64_t member : record.handles(in.handleCount())) out.handle(340, member);
}

void decodeSortTable(RecordReader& record) {
    Fields& in = record.in;
    const std::uint32_t count = in.count(8);
    std::vector<std::uint64_t> keys;
    for (std::uint32_t i = 0; i < count && !in.failed(); ++i)
        keys.push_back(in.data().handle().value);
    record.out.marker("AcDbSortentsTable");
    record.out.handle(330, record.handle());
    for (const std::uint64_t key : keys) {
        record.out.handle(331, record.handle());
        record.out.handle(5, key);
    }
}

void decodeScale(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    out.marker("AcDbScale");
    out.integer(70, in.bitShort());
    out.text(300, in.text());
    out.real(140, in.bitReal());
    out.real(141, in.bitReal());
    out.flag(290, in.bit());
}

void decodeColourObject(RecordReader& record) {
    record.out.marker("AcDbColor");
    writeColour(record.out, record.in.colour(), 62, 420);
}

void decodeImageDefinition(RecordReader& record) {
    Fields& in = record.in;
    GroupWriter& out = record.out;
    out.marker("AcDbRasterImageDef");
    out.integer(90, in.bitLong());
    const Point2 size = in.point2();
    out.text(1, in.text());
    out.point(10, size);
    const bool loaded = in.bit();
    const std::int64_t units = in.byte();
    out.point(11, in.point2());
    out.flag(280, loaded);
    out.integer(281, units);
}

void decodeImageReactor(RecordReader& record) {
    record.out.marker("AcDbRasterImageDefReactor");
    record.out.integer(90, record.in.bitLong());
    record.out.handle(330, record.owner);
}

}  // namespace mor::host
