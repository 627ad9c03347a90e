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
std::string attribute(std::string_view name, std::string_view value) {
    return " " + std::string(name) + "=\"" + xmlText(value) + "\"";
}
std::string attribute(std::string_view name, double value) {
    return " " + std::string(name) + "=\"" + numberText(value) + "\"";
}

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

void writeArc(std::string& data, const double* n) {
    const Axes axes = axesOf(n);
    const double from = n[6];
    const double to = n[7];
    // Pieces of at most a quarter: no doubt then which of two arcs is meant.
    const double quarters = std::fabs(to - from) / (std::numbers::pi / 2);
    const int pieces = std::max(1, static_cast<int>(std::ceil(quarters)));
    const std::string arc = "A" + numberText(axes.longer) + " " + numberText(axes.shorter) + " " +
                            numberText(axes.turn) + " 0 " +
                            (axes.forwards == (to >= from) ? "1 " : "0 ");
    std::array<double, Path::kArcNumbers> piece{};
    std::copy(n, n + Path::kArcNumbers, piece.begin());
    for (int i = 1; i <= pieces; ++i) {
        piece[7] = i == pieces ? to : from + (to - from) * i / pieces;
        const Spot end = endOfArc(piece.data());
        data += arc + numberText(end.x) + " " + numberText(end.y);
    }
}

std::string pathData(std::string_view ops, const double* n) {
    std::string data;
    for (const char op : ops) {
        if (op == Path::kClose) {
            data += 'Z';
        } else if (op == Path::kArc) {
            writeArc(data, n);
            n += Path::kArcNumbers;
        } else {
            data += op + numberText(n[0]) + " " + numberText(n[1]);
            n += 2;
        }
    }
    return data;
}

class SvgWriter {
public:
    SvgWriter(std::ostream& out, const Scene& scene, const Fonts& fonts, const Canvas& canvas)
        : m_out(out), m_scene(scene), m_fonts(fonts), m_canvas(canvas) {}

    void write() {
        const Extent& area = m_canvas.area;
        const double side = longerSide(area);
        const double scale = m_canvas.pixels / side;
        m_usual = lineWidth({}, m_canvas);
        const std::string x = numberText(area.left);
        const std::string y = numberText(-area.top);
        const std::string box =
            x + " " + y + " " + numberText(area.width()) + " " + numberText(area.height());
        m_out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              << "<svg xmlns=\"http://www.w3.org/2000/svg\"" << attribute("viewBox", box)
              << attribute("width", std::ceil(area.width() * scale - kRounding))
              << attribute("height", std::ceil(area.height() * scale - kRounding)) << ">\n<title>"
              << xmlText(m_canvas.title) << "</title>\n";

        if (m_canvas.background >= 0)
            m_out << "<rect x=\"" << x << "\" y=\"" << y << "\"" << attribute("width", area.width())
                  << attribute("height", area.height())
                  << attribute("fill", colourText(m_canvas.background)) << "/>\n";
        m_out << "<g transform=\"scale(1 -1)\" data-shift=\"" << numberText(m_scene.shift()[0])
              << " " << numberText(m_scene.shift()[1]) << "\" fill=\"none\""
              << attribute("stroke-width", m_usual)
              << " stroke-linecap=\"round\" stroke-linejoin=\"round\""
              << attribute("font-family", m_fonts.families(0)) << ">\n";
        for (const Scene::Element& element : m_scene.elements()) writeElement(element);
        m_out << "</g>\n</svg>\n";
    }

private:
    const std::string& ownerAttributes(const Scene::Element& element) {
        const Scene::Owner& owner = m_scene.ownerOf(element);
        if (m_layerText.empty() || owner.layer != m_layer) {
            m_layer = owner.layer;
            m_layerText = attribute("data-layer", *owner.layer);
        }
        m_owner = attribute("data-handle", owner.handle) + m_layerText +
                  attribute("data-type", *owner.type);
        if (!owner.reference->empty()) m_owner += attribute("data-reference", *owner.reference);
        return m_owner;
    }

    void writeElement(const Scene::Element& element) {
        switch (element.kind) {
            case Scene::Kind::Stroke:
                m_out << "<path" << ownerAttributes(element) << strokeAttributes(element)
                      << dataOf(element);
                break;
            case Scene::Kind::Fill:
            case Scene::Kind::Mask:
                m_out << "<path" << ownerAttributes(element) << fillAttributes(element)
                      << dataOf(element);
                break;
            case Scene::Kind::Text:
                writeText(element);
                break;
            case Scene::Kind::Open:
                m_out << "<g" << ownerAttributes(element)
                      << attribute("data-block", m_scene.blockOf(element)) << ">\n";
                break;
            case Scene::Kind::Clip:
                ++m_clips;
                m_out << "<clipPath id=\"clip" << m_clips << "\"><path clip-rule=\"evenodd\""
                      << dataOf(element) << "</clipPath>\n<g clip-path=\"url(#clip" << m_clips
                      << ")\">\n";
                break;
            case Scene::Kind::Close:
                m_out << "</g>\n";
                break;
        }
    }

    [[nodiscard]] std::string dataOf(const Scene::Element& element) const {
        return attribute("d", pathData(m_scene.opsOf(element), m_scene.numbersOf(element))) +
               "/>\n";
    }
    [[nodiscard]] std::string strokeAttributes(const Scene::Element& element) const {
        const Style& style = m_scene.styleOf(element);
        std::string text = attribute("stroke", colourText(style.rgb));
        const double width = lineWidth(style, m_canvas);
        if (width != m_usual) text += attribute("stroke-width", width);
        if (style.flat) text += " stroke-linecap=\"butt\" stroke-linejoin=\"miter\"";
        if (style.opacity < 1.0F)
            text += attribute("stroke-opacity", static_cast<double>(style.opacity));
        const std::vector<float>* dashes = shownDashes(m_scene, style, m_canvas);
        if (dashes == nullptr) return text;
        std::string lengths;
        for (const float length : *dashes)
            lengths += (lengths.empty() ? "" : " ") + numberText(static_cast<double>(length));
        return text + attribute("stroke-dasharray", lengths) +
               (style.flat || std::ranges::find(*dashes, 0.0F) != dashes->end()
                    ? ""
                    : " stroke-linecap=\"butt\"");
    }
    [[nodiscard]] std::string fillAttributes(const Scene::Element& element) const {
        const Style& style = m_scene.styleOf(element);
        const bool mask = element.kind == Scene::Kind::Mask;
        const int behind = m_canvas.background < 0 ? kWhite : m_canvas.background;
        std::string text = attribute("fill", colourText(mask ? behind : style.rgb));
        if (style.opacity < 1.0F)
            text += attribute("fill-opacity", static_cast<double>(style.opacity));
        return text + " fill-rule=\"evenodd\"";
    }

    void writeText(const Scene::Element& element) {
        const TextRun& run = m_scene.textOf(element);
        const Style& style = m_scene.styleOf(element);
        std::string matrix = "matrix(";
        for (const Point* column : {&run.right, &run.down, &run.at})
            matrix += numberText((*column)[0]) + " " + numberText((*column)[1]) +
                      (column == &run.at ? ")" : " ");
        m_out << "<text" << ownerAttributes(element) << attribute("transform", matrix)
              << attribute("font-size", run.size) << attribute("fill", colourText(style.rgb));
        if (style.opacity < 1.0F)
            m_out << attribute("fill-opacity", static_cast<double>(style.opacity));
        if (run.font != 0) m_out << attribute("font-family", m_fonts.families(run.font));
        if (m_fonts.isBold(run.font)) m_out << " font-weight=\"bold\"";
        if (m_fonts.isItalic(run.font)) m_out << " font-style=\"italic\"";
        m_out << attribute("textLength", run.width)
              << attribute("lengthAdjust", run.spaced ? "spacing" : "spacingAndGlyphs")
              << " xml:space=\"preserve\">" << xmlText(run.text) << "</text>\n";
    }

    std::ostream& m_out;
    const Scene& m_scene;
    const Fonts& m_fonts;
    const Canvas& m_canvas;
    double m_usual = 0.0;
    std::size_t m_clips = 0;
    const std::string* m_layer = nullptr;  ///< of the element before, and what is written of it
    std::string m_layerText;
    std::string m_owner;
};

}  // namespace

std::string numberText(double value) {
    std::array<char, 40> buffer{};
    const auto [end, error] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value == 0.0 ? 0.0 : value);
    static_cast<void>(error);  // the buffer is large enough for every double
    return {buffer.data(), end};
}

void writeSvg(std::ostream& out, const Scene& scene, const Fonts& fonts, const Canvas& canvas) {
    SvgWriter(out, scene, fonts, canvas).write();
}

}  // namespace mor::tool
