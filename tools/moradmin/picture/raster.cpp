#include "tools/moradmin/failure.h"
#include "tools/moradmin/picture/characters.h"
#include "tools/moradmin/picture/colours.h"
#include "tools/moradmin/picture/paint_library.h"

#include <algorithm>
#include <cairo-ft.h>
#include <cairo-pdf.h>
#include <cairo.h>
#include <cmath>
#include <map>
#include <memory>
#include <numbers>
#include <ostream>

namespace mor::tool {

namespace {

constexpr double kFarPixels = 4e6;       ///< the library counts pixels with few digits
constexpr double kSmallestLetter = 0.7;  ///< pixels; smaller ones are drawn as a line
constexpr double kPointsPerMillimetre = 72.0 / 25.4;

struct Release {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_font_face_t* face) const { cairo_font_face_destroy(face); }
};
using Surface = std::unique_ptr<cairo_surface_t, Release>;
using Context = std::unique_ptr<cairo_t, Release>;
using FontFace = std::unique_ptr<cairo_font_face_t, Release>;

/// Draws a scene with cairo. Coordinates are turned into those of the device here.
class CairoWriter {
public:
    CairoWriter(cairo_surface_t* surface, const Scene& scene, Fonts& fonts, const Canvas& canvas,
                double scale, double thinnest)
        : m_context(cairo_create(surface)),
          m_scene(scene),
          m_fonts(fonts),
          m_canvas(canvas),
          m_scale(scale),
          m_thinnest(thinnest) {}

    void draw() {
        cairo_t* to = m_context.get();
        if (m_canvas.background >= 0) {
            colour(m_canvas.background, 1.0F);
            cairo_paint(to);
        }
        cairo_set_fill_rule(to, CAIRO_FILL_RULE_EVEN_ODD);
        for (const Scene::Element& element : m_scene.elements()) drawElement(element);
    }

private:
    [[nodiscard]] double x(double value) const {
        return std::clamp((value - m_canvas.area.left) * m_scale, -kFarPixels, kFarPixels);
    }
    [[nodiscard]] double y(double value) const {
        return std::clamp((m_canvas.area.top - value) * m_scale, -kFarPixels, kFarPixels);
    }
    void colour(int rgb, float opacity) {
        cairo_set_source_rgba(m_context.get(), (rgb / 0x10000 % 0x100) / 255.0,
                              (rgb / 0x100 % 0x100) / 255.0, (rgb % 0x100) / 255.0,
                              static_cast<double>(opacity));
    }

    void drawElement(const Scene::Element& element) {
        cairo_t* to = m_context.get();
        switch (element.kind) {
            case Scene::Kind::Stroke:
                stroke(element);
                break;
            case Scene::Kind::Fill: {
                const Style& style = m_scene.styleOf(element);
                path(element);
                colour(style.rgb, style.opacity);
                cairo_fill(to);
                break;
            }
            case Scene::Kind::Mask:
                path(element);
                colour(m_canvas.background < 0 ? kWhite : m_canvas.background, 1.0F);
                cairo_fill(to);
                break;
            case Scene::Kind::Text:
                text(element);
                break;
            case Scene::Kind::Open:
                cairo_save(to);
                break;
            case Scene::Kind::Clip:
                cairo_save(to);
                path(element);
                cairo_clip(to);
                break;
            case Scene::Kind::Close:
                cairo_restore(to);
                break;
        }
    }

    void path(const Scene::Element& element) {
        cairo_t* to = m_context.get();
        const double* n = m_scene.numbersOf(element);
        cairo_new_path(to);
        for (const char op : m_scene.opsOf(element)) {
            if (op == Path::kClose) {
                cairo_close_path(to);
            } else if (op == Path::kArc) {
                arc(n);
                n += Path::kArcNumbers;
            } else {
                op == Path::kMove ? cairo_move_to(to, x(n[0]), y(n[1]))
                                  : cairo_line_to(to, x(n[0]), y(n[1]));
                n += 2;
            }
        }
    }
    /// A piece of an ellipse as curves of a quarter at most.
    void arc(const double* n) {
        const double span = n[7] - n[6];
        const int pieces = std::max(
            1, static_cast<int>(std::ceil(std::fabs(span) / (std::numbers::pi / 2) - 1e-9)));
        const double step = span / pieces;
        const double reach = 4.0 / 3.0 * std::tan(step / 4);
        const auto at = [n](double angle, double side) {
            const double c = std::cos(angle) - side * std::sin(angle);
            const double s = std::sin(angle) + side * std::cos(angle);
            return Spot{n[0] + c * n[2] + s * n[4], n[1] + c * n[3] + s * n[5]};
        };
        for (int i = 0; i < pieces; ++i) {
            const double begin = n[6] + step * i;
            const Spot first = at(begin, reach);
            const Spot second = at(begin + step, -reach);
            const Spot end = at(begin + step, 0.0);
            cairo_curve_to(m_context.get(), x(first.x), y(first.y), x(second.x), y(second.y),
                           x(end.x), y(end.y));
        }
    }

    void stroke(const Scene::Element& element) {
        cairo_t* to = m_context.get();
        const Style& style = m_scene.styleOf(element);
        path(element);
        colour(style.rgb, style.opacity);
        cairo_set_line_width(to, std::max(lineWidth(style, m_canvas) * m_scale, m_thinnest));
        const std::vector<float>* dashes = shownDashes(m_scene, style, m_canvas);
        std::vector<double> lengths;
        if (dashes != nullptr)
            for (const float length : *dashes)
                lengths.push_back(static_cast<double>(length) * m_scale);
        const bool dots = std::ranges::find(lengths, 0.0) != lengths.end();
        const bool round = !style.flat && (lengths.empty() || dots);
        cairo_set_line_cap(to, round ? CAIRO_LINE_CAP_ROUND : CAIRO_LINE_CAP_BUTT);
        cairo_set_line_join(to, style.flat ? CAIRO_LINE_JOIN_MITER : CAIRO_LINE_JOIN_ROUND);
        cairo_set_dash(to, lengths.data(), static_cast<int>(lengths.size()), 0.0);
        cairo_stroke(to);
    }

    void text(const Scene::Element& element) {
        const TextRun& run = m_scene.textOf(element);
        const Style& style = m_scene.styleOf(element);
        const double size = run.size * m_scale;
        const double area = run.right[0] * run.down[1] - run.right[1] * run.down[0];
        const double height = size * std::hypot(run.down[0], run.down[1]);
        colour(style.rgb, style.opacity);
        if (!(std::fabs(area) * size * size > 1e-6) || height > kFarPixels) return;
        if (height < kSmallestLetter) return line(run);
        cairo_matrix_t matrix;
        cairo_matrix_init(&matrix, run.right[0] * size, -run.right[1] * size, run.down[0] * size,
                          -run.down[1] * size, 0.0, 0.0);
        cairo_set_font_matrix(m_context.get(), &matrix);
        const std::u32string letters = characters(run.text);
        const double natural = m_fonts.width(run.font, run.text) * run.size;
        const double extra = run.spaced && letters.size() > 1
                                 ? (run.width - natural) / static_cast<double>(letters.size() - 1)
                                 : 0.0;
        double along = 0.0;
        for (const char32_t letter : letters) {
            const Fonts::Letter shape = m_fonts.letter(run.font, letter);
            const Point at = run.at + along * run.right;
            if (shape.face != nullptr) glyph(shape, letter, x(at[0]), y(at[1]));
            along += shape.advance * run.size + extra;
        }
    }
    void glyph(const Fonts::Letter& shape, char32_t letter, double left, double base) {
        cairo_t* to = m_context.get();
        FontFace& face = m_faces[shape.face];
        if (!face)
            face.reset(cairo_ft_font_face_create_for_ft_face(shape.face, FT_LOAD_NO_HINTING));
        cairo_set_font_face(to, face.get());
        const cairo_glyph_t glyph{shape.glyph, left, base};
        const std::string text = utf8Of({&letter, 1});
        const cairo_text_cluster_t cluster{static_cast<int>(text.size()), 1};
        cairo_show_text_glyphs(to, text.c_str(), static_cast<int>(text.size()), &glyph, 1, &cluster,
                               1, static_cast<cairo_text_cluster_flags_t>(0));
    }
    /// Letters that are too small to be read.
    void line(const TextRun& run) {
        cairo_t* to = m_context.get();
        const Point from = run.at - (0.4 * run.size) * run.down;
        const Point end = from + run.width * run.right;
        cairo_new_path(to);
        cairo_move_to(to, x(from[0]), y(from[1]));
        cairo_line_to(to, x(end[0]), y(end[1]));
        cairo_set_dash(to, nullptr, 0, 0.0);
        cairo_set_line_width(to, m_thinnest / 2);
        cairo_stroke(to);
    }

    Context m_context;
    const Scene& m_scene;
    Fonts& m_fonts;
    const Canvas& m_canvas;
    double m_scale;
    double m_thinnest;
    std::map<FT_FaceRec_*, FontFace> m_faces;
};

cairo_status_t put(void* closure, const unsigned char* data, unsigned length) {
    auto& out = *static_cast<std::ostream*>(closure);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(length));
    return out.good() ? CAIRO_STATUS_SUCCESS : CAIRO_STATUS_WRITE_ERROR;
}

void refuseFailed(cairo_surface_t* surface) {
    const cairo_status_t status = cairo_surface_status(surface);
    if (status != CAIRO_STATUS_SUCCESS && status != CAIRO_STATUS_WRITE_ERROR)
        throw Failure(kUnwritable, std::string("the picture cannot be drawn: ") +
                                       cairo_status_to_string(status));
}

void writePng(std::ostream& out, const Scene& scene, Fonts& fonts, const Canvas& canvas) {
    const double scale = canvas.pixels / longerSide(canvas.area);
    const auto pixels = [scale](double length) {
        return std::max(1, static_cast<int>(std::ceil(length * scale - 1e-6)));
    };
    const Surface surface(
        cairo_image_surface_create(canvas.background < 0 ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24,
                                   pixels(canvas.area.width()), pixels(canvas.area.height())));
    refuseFailed(surface.get());
    CairoWriter(surface.get(), scene, fonts, canvas, scale, 1.0).draw();
    cairo_surface_write_to_png_stream(surface.get(), put, &out);
    refuseFailed(surface.get());
}

void writePdf(std::ostream& out, const Scene& scene, Fonts& fonts, const Canvas& canvas) {
    const double scale = kPointsPerMillimetre / canvas.unitsPerMillimetre;
    const Surface surface(cairo_pdf_surface_create_for_stream(
        put, &out, canvas.area.width() * scale, canvas.area.height() * scale));
    refuseFailed(surface.get());
    cairo_pdf_surface_set_metadata(surface.get(), CAIRO_PDF_METADATA_TITLE, canvas.title.c_str());
    CairoWriter(surface.get(), scene, fonts, canvas, scale, 0.1).draw();
    cairo_surface_finish(surface.get());
    refuseFailed(surface.get());
}

}  // namespace

}  // namespace mor::tool

extern "C" const mor::tool::PaintLibrary* moradminPaintLibrary() {
    static const mor::tool::PaintLibrary library{mor::tool::machineFonts, mor::tool::writePng,
                                                 mor::tool::writePdf};
    return &library;
}
