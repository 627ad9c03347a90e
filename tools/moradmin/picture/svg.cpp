#include "tools/moradmin/picture/colours.h"
#include "tools/moradmin/picture/forms.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <ostream>

namespace mor::tool {

namespace {

constexpr double kRounding = 1e-6;
constexpr std::size_t kPiece = std::size_t{1} << 18U;  ///< that is written at once
constexpr std::size_t kLongestNumber = 40;

/// An ellipse as it is seen from above: axes of its own.
struct Axes {
    double longer = 0.0;
    double shorter = 0.0;
    double turn = 0.0;     // of the longer axis, in degrees
    bool forwards = true;  // whether growing angles run counterclockwise
};

/// Radii and directions from two conjugate ones (singular values of the matrix that they form).
Axes axesOf(const double* n) {
    const double e = (n[2] + n[5]) / 2;
    const double f = (n[2] - n[5]) / 2;
    const double g = (n[3] + n[4]) / 2;
    const double h = (n[3] - n[4]) / 2;
    const double q = std::hypot(e, h);
    const double r = std::hypot(f, g);
    const double turn = (std::atan2(h, e) + std::atan2(g, f)) / 2;
    return {q + r, std::fabs(q - r), turn * 180.0 / std::numbers::pi, q >= r};
}

/// Writes it into the buffer, as `numberText` does; answers where it ends.
char* putNumber(std::array<char, kLongestNumber>& buffer, double value) {
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value == 0.0 ? 0.0 : value);
    static_cast<void>(error);  // the buffer is large enough for every double
    return end;
}

/// Text that is gathered and written in large pieces.
class Sheaf {
public:
    explicit Sheaf(std::ostream& out) : m_out(out) {}

    Sheaf& operator<<(std::string_view text) {
        m_text += text;
        return *this;
    }
    Sheaf& operator<<(char c) {
        m_text += c;
        return *this;
    }
    Sheaf& operator<<(double number) {
        const char* const end = putNumber(m_number, number);
        m_text.append(m_number.data(), static_cast<std::size_t>(end - m_number.data()));
        return *this;
    }
    Sheaf& escaped(std::string_view text) {
        addXmlText(m_text, text);
        return *this;
    }
    void attribute(std::string_view name, std::string_view value) {
        *this << ' ' << name << "=\"";
        escaped(value) << '"';
    }
    void attribute(std::string_view name, double value) {
        *this << ' ' << name << "=\"" << value << '"';
    }
    void writeWhenFull() {
        if (m_text.size() >= kPiece) write();
    }
    void write() {
        m_out.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
        m_text.clear();
    }

private:
    std::ostream& m_out;
    std::string m_text;
    std::array<char, kLongestNumber> m_number{};
};

void putArc(Sheaf& to, const double* n) {
    const Axes axes = axesOf(n);
    const double from = n[6];
    const double end = n[7];
    // Pieces of at most a quarter: no doubt then which of two arcs is meant.
    const double quarters = std::fabs(end - from) / (std::numbers::pi / 2);
    const int pieces = std::max(1, static_cast<int>(std::ceil(quarters)));
    std::array<double, Path::kArcNumbers> piece{};
    std::copy(n, n + Path::kArcNumbers, piece.begin());
    for (int i = 1; i <= pieces; ++i) {
        piece[7] = i == pieces ? end : from + (end - from) * i / pieces;
        const Spot spot = endOfArc(piece.data());
        to << 'A' << axes.longer << ' ' << axes.shorter << ' ' << axes.turn << " 0 "
           << (axes.forwards == (end >= from) ? "1 " : "0 ") << spot.x << ' ' << spot.y;
    }
}

void putPath(Sheaf& to, std::string_view ops, const double* n) {
    for (const char op : ops) {
        if (op == Path::kClose) {
            to << 'Z';
        } else if (op == Path::kArc) {
            putArc(to, n);
            n += Path::kArcNumbers;
        } else {
            to << op << n[0] << ' ' << n[1];
            n += 2;
        }
    }
}

class SvgWriter {
public:
    SvgWriter(std::ostream& out, const Scene& scene, const Fonts& fonts, const Canvas& canvas)
        : m_to(out), m_scene(scene), m_fonts(fonts), m_canvas(canvas) {}

    void write() {
        putHead();
        for (const Scene::Element& element : m_scene.elements()) {
            putElement(element);
            m_to.writeWhenFull();
        }
        m_to << "</g>\n</svg>\n";
        m_to.write();
    }

private:
    void putHead() {
        const Extent& area = m_canvas.area;
        const double scale = m_canvas.pixels / longerSide(area);
        m_usual = lineWidth({}, m_canvas);
        m_to << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
             << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" << area.left << ' '
             << -area.top << ' ' << area.width() << ' ' << area.height() << '"';
        m_to.attribute("width", std::ceil(area.width() * scale - kRounding));
        m_to.attribute("height", std::ceil(area.height() * scale - kRounding));
        m_to << ">\n<title>";
        m_to.escaped(m_canvas.title) << "</title>\n";
        if (m_canvas.background >= 0) {
            m_to << "<rect";
            m_to.attribute("x", area.left);
            m_to.attribute("y", -area.top);
            m_to.attribute("width", area.width());
            m_to.attribute("height", area.height());
            m_to.attribute("fill", colourText(m_canvas.background));
            m_to << "/>\n";
        }
        m_to << "<g transform=\"scale(1 -1)\" data-shift=\"" << m_scene.shift()[0] << ' '
             << m_scene.shift()[1] << "\" fill=\"none\"";
        m_to.attribute("stroke-width", m_usual);
        m_to << " stroke-linecap=\"round\" stroke-linejoin=\"round\"";
        m_to.attribute("font-family", m_fonts.families(0));
        m_to << ">\n";
    }

    void putOwner(const Scene::Element& element) {
        const Scene::Owner& owner = m_scene.ownerOf(element);
        m_to.attribute("data-handle", owner.handle);
        m_to.attribute("data-layer", *owner.layer);
        m_to.attribute("data-type", *owner.type);
        if (!owner.reference->empty()) m_to.attribute("data-reference", *owner.reference);
    }

    void putElement(const Scene::Element& element) {
        switch (element.kind) {
            case Scene::Kind::Stroke:
            case Scene::Kind::Fill:
            case Scene::Kind::Mask:
                m_to << "<path";
                putOwner(element);
                element.kind == Scene::Kind::Stroke ? putStroke(element) : putFill(element);
                return putData(element);
            case Scene::Kind::Text:
                return putText(element);
            case Scene::Kind::Open:
                m_to << "<g";
                putOwner(element);
                m_to.attribute("data-block", m_scene.blockOf(element));
                m_to << ">\n";
                return;
            case Scene::Kind::Clip:
                return putClip(element);
            case Scene::Kind::Close:
                m_to << "</g>\n";
                return;
        }
    }

    void putClip(const Scene::Element& element) {
        const std::string number = std::to_string(++m_clips);
        m_to << "<clipPath id=\"clip" << number << "\"><path clip-rule=\"evenodd\"";
        putData(element);
        m_to << "</clipPath>\n<g clip-path=\"url(#clip" << number << ")\">\n";
    }
    void putData(const Scene::Element& element) {
        m_to << " d=\"";
        putPath(m_to, m_scene.opsOf(element), m_scene.numbersOf(element));
        m_to << "\"/>\n";
    }
    void putStroke(const Scene::Element& element) {
        const Style& style = m_scene.styleOf(element);
        m_to.attribute("stroke", shownColour(style.rgb));
        const double width = lineWidth(style, m_canvas);
        if (width != m_usual) m_to.attribute("stroke-width", width);
        if (style.flat) m_to << " stroke-linecap=\"butt\" stroke-linejoin=\"miter\"";
        if (style.opacity < 1.0F)
            m_to.attribute("stroke-opacity", static_cast<double>(style.opacity));
        const std::vector<float>* dashes = shownDashes(m_scene, style, m_canvas);
        if (dashes == nullptr) return;
        m_to << " stroke-dasharray=\"";
        for (const float& length : *dashes)
            m_to << (&length == dashes->data() ? "" : " ") << static_cast<double>(length);
        m_to << '"';
        if (!style.flat && std::ranges::find(*dashes, 0.0F) == dashes->end())
            m_to << " stroke-linecap=\"butt\"";
    }
    void putFill(const Scene::Element& element) {
        const Style& style = m_scene.styleOf(element);
        const bool mask = element.kind == Scene::Kind::Mask;
        const int behind = m_canvas.background < 0 ? kWhite : m_canvas.background;
        m_to.attribute("fill", shownColour(mask ? behind : style.rgb));
        putOpacity(style);
        m_to << " fill-rule=\"evenodd\"";
    }
    void putOpacity(const Style& style) {
        if (style.opacity < 1.0F)
            m_to.attribute("fill-opacity", static_cast<double>(style.opacity));
    }

    void putText(const Scene::Element& element) {
        const TextRun& run = m_scene.textOf(element);
        const Style& style = m_scene.styleOf(element);
        m_to << "<text";
        putOwner(element);
        m_to << " transform=\"matrix(" << run.right[0] << ' ' << run.right[1] << ' ' << run.down[0]
             << ' ' << run.down[1] << ' ' << run.at[0] << ' ' << run.at[1] << ")\"";
        m_to.attribute("font-size", run.size);
        m_to.attribute("fill", shownColour(style.rgb));
        putOpacity(style);
        if (run.font != 0) m_to.attribute("font-family", m_fonts.families(run.font));
        if (m_fonts.isBold(run.font)) m_to << " font-weight=\"bold\"";
        if (m_fonts.isItalic(run.font)) m_to << " font-style=\"italic\"";
        m_to.attribute("textLength", run.width);
        m_to.attribute("lengthAdjust", run.spaced ? "spacing" : "spacingAndGlyphs");
        m_to << " xml:space=\"preserve\">";
        m_to.escaped(run.text) << "</text>\n";
    }
    /// Neighbours often have the same.
    const std::string& shownColour(int rgb) {
        if (m_colourText.empty() || rgb != m_colour) m_colourText = colourText(rgb);
        m_colour = rgb;
        return m_colourText;
    }

    Sheaf m_to;
    const Scene& m_scene;
    const Fonts& m_fonts;
    const Canvas& m_canvas;
    double m_usual = 0.0;
    std::size_t m_clips = 0;
    int m_colour = 0;
    std::string m_colourText;
};

}  // namespace

std::string numberText(double value) {
    std::array<char, kLongestNumber> buffer{};
    return {buffer.data(), putNumber(buffer, value)};
}

void writeSvg(std::ostream& out, const Scene& scene, const Fonts& fonts, const Canvas& canvas) {
    SvgWriter(out, scene, fonts, canvas).write();
}

}  // namespace mor::tool
