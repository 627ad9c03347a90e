#include "tools/moradmin/picture/picture.h"

#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace mor::tool {

namespace {

constexpr double kPixels = 1000.0;       // the longer side of the picture
constexpr double kMargin = 0.02;         // of the longer side, all around
constexpr double kStroke = 1.0 / 800.0;  // of the longer side
constexpr double kDot = 4.0;             // points, in strokes
constexpr double kBox = 0.25;            // width of a box for what is missing, of the longer side
constexpr std::size_t kBoxBytes = 200;   // about what a box takes besides its texts

std::string attribute(std::string_view name, std::string_view value) {
    return " " + std::string(name) + "=\"" + xmlText(value) + "\"";
}

std::string textElement(const std::string& origin, const Shape& shape, const std::string& colour) {
    std::string matrix = "matrix(";
    for (const Point* column : {&shape.right, &shape.down, &shape.at})
        matrix += numberText((*column)[0]) + " " + numberText((*column)[1]) +
                  (column == &shape.at ? ")" : " ");
    std::string text = "<text" + origin + attribute("transform", matrix) +
                       attribute("y", numberText(shape.drop)) +
                       attribute("font-size", numberText(shape.size)) + attribute("fill", colour);
    if (shape.anchor != "start") text += attribute("text-anchor", shape.anchor);
    if (shape.width > 0.0)
        text += attribute("textLength", numberText(shape.width)) +
                attribute("lengthAdjust", "spacingAndGlyphs");
    return text + " xml:space=\"preserve\">" + xmlText(shape.data) + "</text>\n";
}

double longerSide(const Extent& extent) {
    const double side = std::max(extent.right - extent.left, extent.top - extent.bottom);
    return side > 0.0 ? side : 1.0;
}

}  // namespace

std::string Picture::attributesOf(const Origin& origin) {
    if (m_layerAttribute.empty() || origin.layer != m_layer) {
        m_layer = origin.layer;
        m_layerAttribute = attribute("data-layer", origin.layer);
    }
    std::string text = attribute("data-handle", origin.handle) + m_layerAttribute +
                       attribute("data-type", origin.type);
    if (!origin.reference.empty()) text += attribute("data-reference", origin.reference);
    return text;
}

void Picture::add(const Origin& origin, const Shape& shape, const std::string& colour) {
    ++m_elements;
    m_extent.include(shape.extent);
    if (shape.kind == Shape::Kind::Text) {
        m_body += textElement(attributesOf(origin), shape, colour);
        return;
    }
    m_body += "<path" + attributesOf(origin);
    m_body += attribute(shape.kind == Shape::Kind::Area ? "fill" : "stroke", colour);
    m_body += attribute("d", shape.data) + "/>\n";
}

Picture::Group Picture::open(const Origin& origin, const std::string& block) {
    const Group group{m_body.size(), m_elements};
    m_body += "<g" + attributesOf(origin) + attribute("data-block", block) + ">\n";
    return group;
}

void Picture::close(const Group& group) {
    if (m_elements == group.elements)
        m_body.resize(group.begin);
    else
        m_body += "</g>\n";
}

void Picture::addMissing(const Origin& origin, const Point& place, const std::string& text) {
    ++m_elements;
    m_missing.push_back({attributesOf(origin), place - m_shift, text});
    // A box and a text.
    m_missingBytes += 2 * (m_missing.back().origin.size() + text.size() + kBoxBytes);
    m_extent.include(place[0] - m_shift[0], place[1] - m_shift[1]);
}

std::string Picture::missingBoxes(const Extent& drawn, Extent& all) const {
    const double width = longerSide(drawn) * kBox;
    const double height = width / 4;
    const double dash = width / 30;
    std::string boxes;
    for (const Missing& missing : m_missing) {
        const double x = missing.place[0];
        const double y = missing.place[1];
        all.include(x, y);
        all.include(x + width, y + height);
        const double letters = static_cast<double>(std::max<std::size_t>(missing.text.size(), 1));
        const double size = std::min(height / 3, 1.5 * width / letters);
        boxes +=
            "<path" + missing.origin + " stroke=\"#808080\"" +
            attribute("stroke-dasharray", numberText(dash)) +
            attribute("d", "M" + numberText(x) + " " + numberText(y) + "h" + numberText(width) +
                               "v" + numberText(height) + "h" + numberText(-width) + "Z") +
            "/>\n<text" + missing.origin + " fill=\"#808080\" text-anchor=\"middle\"" +
            attribute("font-size", numberText(size)) +
            attribute("transform", "matrix(1 0 0 -1 " + numberText(x + width / 2) + " " +
                                       numberText(y + height / 2 - size / 3) + ")") +
            ">" + xmlText(missing.text) + "</text>\n";
    }
    return boxes;
}

void Picture::write(std::ostream& out, const std::string& title) const {
    Extent all = m_extent;
    const std::string boxes = missingBoxes(m_extent, all);
    const double side = longerSide(all);
    const double margin = side * kMargin;
    const double width = all.right - all.left + 2 * margin;
    const double height = all.top - all.bottom + 2 * margin;
    const double scale = kPixels / std::max(width, height);
    const std::string x = numberText(all.left - margin);
    const std::string y = numberText(-all.top - margin);
    const std::string size =
        attribute("width", numberText(width)) + attribute("height", numberText(height));
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"" << x << " " << y << " "
        << numberText(width) << " " << numberText(height) << "\" width=\""
        << numberText(std::ceil(width * scale)) << "\" height=\""
        << numberText(std::ceil(height * scale)) << "\">\n<title>" << xmlText(title)
        << "</title>\n<style>[data-type=\"POINT\"]{stroke-width:"
        << numberText(kDot * kStroke * side) << "}</style>\n<rect x=\"" << x << "\" y=\"" << y
        << "\"" << size << " fill=\"#ffffff\"/>\n"
        << "<g transform=\"scale(1 -1)\" data-shift=\"" << numberText(m_shift[0]) << " "
        << numberText(m_shift[1]) << "\" fill=\"none\" stroke-width=\""
        << numberText(kStroke * side)
        << "\" stroke-linecap=\"round\" stroke-linejoin=\"round\" font-family=\"sans-serif\">\n"
        << m_body << boxes << "</g>\n</svg>\n";
}

}  // namespace mor::tool
