#include "tools/moradmin/picture/colours.h"
#include "tools/moradmin/picture/forms.h"
#include "tools/moradmin/picture/svg_text.h"
#include "tools/moradmin/running/ahead.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <numbers>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

namespace {

constexpr double kRounding = 1e-6;
constexpr std::size_t kStretch = 2048;  ///< elements that are written at once

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

void putArc(SvgText& to, const double* n) {
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

void putPath(SvgText& to, std::string_view ops, const double* n) {
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

/// The texts for some numbers, kept as long as no other number takes their place.
class KeptTexts {
public:
    template <typename Make>
    [[nodiscard]] std::string_view of(std::uint32_t number, const Make& make) {
        std::string& text = m_texts[number % kPlaces];
        std::optional<std::uint32_t>& kept = m_numbers[number % kPlaces];
        if (kept == number) return text;
        m_made.clear();
        make(m_made);
        text = m_made.text();
        kept = number;
        return text;
    }

private:
    static constexpr std::size_t kPlaces = 64;
    std::array<std::optional<std::uint32_t>, kPlaces> m_numbers;
    std::array<std::string, kPlaces> m_texts;
    SvgText m_made;
};

/// Elements of a scene as text.
class SvgElements {
public:
    SvgElements(const Scene& scene, const Fonts& fonts, const Canvas& canvas)
        : m_scene(scene), m_fonts(fonts), m_canvas(canvas), m_usual(lineWidth({}, canvas)) {}

    [[nodiscard]] std::string_view text() const { return m_to.text(); }
    /// Other elements; `clips`: how many clips there are before them.
    void put(std::span<const Scene::Element> elements, std::size_t clips) {
        m_to.clear();
        m_clips = clips;
        for (const Scene::Element& element : elements) putElement(element);
    }

private:
    void putOwner(const Scene::Element& element) {
        const Scene::Owner& owner = m_scene.ownerOf(element);
        m_to << " data-handle=\"";
        m_to.handle(owner.handle);
        m_to << "\"" << m_kinTexts.of(owner.kin, [&](SvgText& to) {
            const Kin& kin = m_scene.kinOf(owner);
            to.attribute("data-layer", *kin.layer);
            to.attribute("data-type", *kin.type);
            if (!kin.reference->empty()) to.attribute("data-reference", *kin.reference);
        });
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
        m_to << m_strokeTexts.of(
            element.style, [&](SvgText& to) { putStrokeStyle(to, m_scene.styleOf(element)); });
    }
    void putStrokeStyle(SvgText& to, const Style& style) const {
        to.attribute("stroke", colourText(style.rgb));
        const double width = lineWidth(style, m_canvas);
        if (width != m_usual) to.attribute("stroke-width", width);
        if (style.flat) to << " stroke-linecap=\"butt\" stroke-linejoin=\"miter\"";
        if (style.opacity < 1.0F)
            to.attribute("stroke-opacity", static_cast<double>(style.opacity));
        const std::vector<float>* dashes = shownDashes(m_scene, style, m_canvas);
        if (dashes == nullptr) return;
        to << " stroke-dasharray=\"";
        for (const float& length : *dashes)
            to << (&length == dashes->data() ? "" : " ") << static_cast<double>(length);
        to << '"';
        if (!style.flat && std::ranges::find(*dashes, 0.0F) == dashes->end())
            to << " stroke-linecap=\"butt\"";
    }
    void putFill(const Scene::Element& element) {
        const Style& style = m_scene.styleOf(element);
        const bool mask = element.kind == Scene::Kind::Mask;
        const int behind = m_canvas.background < 0 ? kWhite : m_canvas.background;
        m_to.attribute("fill", colourText(mask ? behind : style.rgb));
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
        m_to.attribute("fill", colourText(style.rgb));
        putOpacity(style);
        if (run.font != 0) m_to.attribute("font-family", m_fonts.families(run.font));
        if (m_fonts.isBold(run.font)) m_to << " font-weight=\"bold\"";
        if (m_fonts.isItalic(run.font)) m_to << " font-style=\"italic\"";
        m_to.attribute("textLength", run.width);
        m_to.attribute("lengthAdjust", run.spaced ? "spacing" : "spacingAndGlyphs");
        m_to << " xml:space=\"preserve\">";
        m_to.escaped(run.text) << "</text>\n";
    }

    SvgText m_to;
    const Scene& m_scene;
    const Fonts& m_fonts;
    const Canvas& m_canvas;
    double m_usual;  ///< width of most lines
    std::size_t m_clips = 0;
    KeptTexts m_kinTexts;
    KeptTexts m_strokeTexts;
};

void putHead(SvgText& to, const Scene& scene, const Fonts& fonts, const Canvas& canvas) {
    const Extent& area = canvas.area;
    const double scale = canvas.pixels / longerSide(area);
    to << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
       << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" << area.left << ' ' << -area.top
       << ' ' << area.width() << ' ' << area.height() << '"';
    to.attribute("width", std::ceil(area.width() * scale - kRounding));
    to.attribute("height", std::ceil(area.height() * scale - kRounding));
    to << ">\n<title>";
    to.escaped(canvas.title) << "</title>\n";
    if (canvas.background >= 0) {
        to << "<rect";
        to.attribute("x", area.left);
        to.attribute("y", -area.top);
        to.attribute("width", area.width());
        to.attribute("height", area.height());
        to.attribute("fill", colourText(canvas.background));
        to << "/>\n";
    }
    to << "<g transform=\"scale(1 -1)\" data-shift=\"" << scene.shift()[0] << ' '
       << scene.shift()[1] << "\" fill=\"none\"";
    to.attribute("stroke-width", lineWidth({}, canvas));
    to << " stroke-linecap=\"round\" stroke-linejoin=\"round\"";
    to.attribute("font-family", fonts.families(0));
    to << ">\n";
}

void write(std::ostream& out, std::string_view text) {
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

/// A stretch of a scene's elements.
struct Stretch {
    std::span<const Scene::Element> elements;
    std::size_t clips = 0;  ///< before them
};

std::vector<Stretch> stretchesOf(const Scene& scene) {
    const std::span<const Scene::Element> all = scene.elements();
    std::vector<Stretch> stretches;
    std::size_t clips = 0;
    for (std::size_t begin = 0; begin < all.size(); begin += kStretch) {
        const auto some = all.subspan(begin, std::min(kStretch, all.size() - begin));
        stretches.push_back({some, clips});
        clips += static_cast<std::size_t>(
            std::ranges::count(some, Scene::Kind::Clip, &Scene::Element::kind));
    }
    return stretches;
}

}  // namespace

void writeSvg(std::ostream& out, const Scene& scene, const Fonts& fonts, const Canvas& canvas) {
    SvgText head;
    putHead(head, scene, fonts, canvas);
    write(out, head.text());
    const std::vector<Stretch> stretches = stretchesOf(scene);
    std::vector<std::unique_ptr<SvgElements>> texts;
    for (std::size_t place = 0; place < Ahead::kPlaces; ++place)
        texts.push_back(std::make_unique<SvgElements>(scene, fonts, canvas));
    Ahead ahead(stretches.size(), [&](std::size_t number, std::size_t place) {
        texts[place]->put(stretches[number].elements, stretches[number].clips);
    });
    for (std::size_t i = 0; i < stretches.size() && out; ++i)
        write(out, texts[ahead.next()]->text());
    write(out, "</g>\n</svg>\n");
}

}  // namespace mor::tool
