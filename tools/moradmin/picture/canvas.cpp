#include "tools/moradmin/picture/canvas.h"

#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/colours.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <utility>

namespace mor::tool {

namespace {

constexpr double kMargin = 0.02;  ///< of the longer side, all around
constexpr double kPage = 265.0;   ///< millimetres of the longer side where nobody says
constexpr double kLeastPixels = 16.0;
constexpr double kMostPixels = 16384.0;
constexpr double kLargestPage = 5080.0;  ///< millimetres
constexpr double kLargestShare = 1e7;    ///< of a scale

/// Millimetres of a unit of the drawing, by $INSUNITS; one where it says nothing.
double millimetres(int unit) {
    static constexpr std::array<double, 21> all = {
        1.0,  25.4, 304.8, 1609344.0, 1.0, 10.0, 1000.0, 1e6,      2.54e-5,  0.0254,  914.4,
        1e-7, 1e-6, 1e-3,  100.0,     1e4, 1e5,  1e12,   1.496e14, 9.461e18, 3.086e19};
    return unit > 0 && static_cast<std::size_t>(unit) < all.size()
               ? all[static_cast<std::size_t>(unit)]
               : 1.0;
}

double readScale(const std::string& text) {
    const std::size_t colon = text.find(':');
    const auto paper = readReal(text.substr(0, colon));
    const auto real =
        colon == std::string::npos ? std::optional(1.0) : readReal(text.substr(colon + 1));
    if (!paper || !real || !(*paper > 0.0) || !(*real > 0.0) || *paper / *real > kLargestShare ||
        *real / *paper > kLargestShare)
        throw Failure(kUsage, "--scale wants two numbers such as 1:100 or 2:1, not \"" +
                                  oneLine(text) + "\"");
    return *paper / *real;
}

Extent readWindow(const std::string& text) {
    std::vector<double> numbers;
    std::size_t at = 0;
    bool good = true;
    while (at <= text.size()) {
        const std::size_t end = std::min(text.find(',', at), text.size());
        const auto number = readReal(text.substr(at, end - at));
        good = good && number && std::fabs(*number) < kFarthest;
        numbers.push_back(number.value_or(0.0));
        at = end + 1;
    }
    Extent window;
    if (numbers.size() == 4) {
        window.include(numbers[0], numbers[1]);
        window.include(numbers[2], numbers[3]);
    }
    if (!good || numbers.size() != 4 || !(window.width() > 0.0) || !(window.height() > 0.0))
        throw Failure(kUsage,
                      "--window wants two corners as X1,Y1,X2,Y2, not \"" + oneLine(text) + "\"");
    return window;
}

/// The area with whole pixels on both sides: no strip is left at the edge.
void wholePixels(Canvas& canvas) {
    const double scale = canvas.pixels / longerSide(canvas.area);
    const auto whole = [scale](double length) {
        return std::max(std::ceil(length * scale - 1e-6), 1.0) / scale;
    };
    canvas.area.right = canvas.area.left + whole(canvas.area.width());
    canvas.area.bottom = canvas.area.top - whole(canvas.area.height());
}

void refuseLargePage(const Canvas& canvas) {
    const double side = longerSide(canvas.area) / canvas.unitsPerMillimetre;
    if (side <= kLargestPage) return;
    throw Failure(kUsage, "the page would be " + realText(std::round(side / 100.0) / 10.0) +
                              " m long, and a PDF page ends at 5.08 m; give a smaller --scale, "
                              "such as 1:1000, or a --window");
}

}  // namespace

Form formOf(const Options& options) {
    static constexpr std::array<std::pair<const char*, Form>, 3> all = {
        {{"svg", Form::Svg}, {"png", Form::Png}, {"pdf", Form::Pdf}}};
    std::string name = options.picture.form;
    if (name.empty()) {
        name = std::filesystem::path(options.output).extension().string();
        if (!name.empty()) name.erase(0, 1);
    }
    for (const auto& [word, form] : all)
        if (sameName(name, word)) return form;
    if (!options.picture.form.empty())
        throw Failure(kUsage, "--form is one of svg, png and pdf, not \"" + oneLine(name) + "\"");
    if (!name.empty())
        throw Failure(kUsage, options.output + ": pictures are svg, png and pdf, not \"" +
                                  oneLine(name) + "\"; --form says which one it is to be");
    return Form::Svg;
}

PictureWish::PictureWish(const Options& options) : form(formOf(options)) {
    const PictureOptions& given = options.picture;
    if (!given.size.empty()) {
        const auto size = readReal(given.size);
        if (!size || *size < kLeastPixels || *size > kMostPixels)
            throw Failure(kUsage, "--size is the longer side in pixels, 16 to 16384, not \"" +
                                      oneLine(given.size) + "\"");
        pixels = std::floor(*size);
    }
    background = readColour(given.background);
    if (background < -1)
        throw Failure(kUsage,
                      "--background is white, black, grey, transparent, or #rrggbb, not \"" +
                          oneLine(given.background) + "\"");
    if (!given.scale.empty()) {
        scale = readScale(given.scale);
        if (form == Form::Png)
            throw Failure(kUsage, "--scale belongs to SVG and PDF; a PNG has a --size in pixels");
    }
    if (!given.window.empty()) window = readWindow(given.window);
}

Canvas canvasOf(const PictureWish& wish, const Scene& scene, const Layout& layout,
                const host::DrawingSettings& settings) {
    Canvas canvas;
    canvas.pixels = wish.pixels;
    canvas.background = wish.background;
    const Extent paper = layout.model ? Extent{} : layout.paper();
    if (wish.window) {
        canvas.area = *wish.window;
        canvas.area.left -= scene.shift()[0];
        canvas.area.right -= scene.shift()[0];
        canvas.area.bottom -= scene.shift()[1];
        canvas.area.top -= scene.shift()[1];
    } else {
        canvas.area = scene.extent();
        canvas.area.include(paper);
        const bool onPaper = !paper.empty && canvas.area.width() <= paper.width() &&
                             canvas.area.height() <= paper.height();
        const double margin = onPaper ? 0.0 : longerSide(canvas.area) * kMargin;
        Extent& area = canvas.area;
        area = {area.left - margin, area.bottom - margin, area.right + margin, area.top + margin,
                false};
    }
    const bool measured = !layout.model && (!paper.empty || wish.scale);
    if (measured)
        canvas.unitsPerMillimetre = 1.0 / (layout.perUnit * wish.scale.value_or(1.0));
    else if (layout.model && wish.scale)
        canvas.unitsPerMillimetre = 1.0 / (millimetres(settings.insertionUnits) * *wish.scale);
    else
        canvas.unitsPerMillimetre = longerSide(canvas.area) / kPage;
    if (wish.form != Form::Pdf) wholePixels(canvas);
    if (wish.form == Form::Pdf) refuseLargePage(canvas);
    return canvas;
}

Layout chosenLayout(const std::vector<Layout>& layouts, const std::string& name) {
    Layout model;
    model.name = "Model";
    model.block = "*Model_Space";
    model.model = true;
    if (name.empty()) {
        const auto found =
            std::ranges::find_if(layouts, [](const Layout& layout) { return !layout.empty(); });
        return found == layouts.end() ? model : *found;
    }
    std::string all;
    for (const Layout& layout : layouts) {
        if (sameName(layout.name, name)) return layout;
        all += (all.empty() ? "" : ", ") + layout.name;
    }
    if (sameName(name, model.name)) return model;
    throw Failure(kRefused, "there is no layout \"" + oneLine(name) + "\"" +
                                (all.empty() ? "" : "; there are: " + oneLine(all)));
}

}  // namespace mor::tool
