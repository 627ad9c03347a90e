#pragma once

#include "tools/moradmin/picture/path.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

/// What the elements of a layer, a type and a reference have in common.
struct Kin {
    const std::string* layer = nullptr;  ///< as the drawing knows it
    const std::string* type = nullptr;
    const std::string* reference = nullptr;  ///< its path; empty for the drawing itself

    friend bool operator==(const Kin&, const Kin&) = default;
};

/// From which record an element of a picture comes. A scene takes texts for the same where they lie
/// in the same place: there they stay as long as it is drawn.
struct Origin {
    std::uint64_t handle = 0;  ///< 0 for none
    Kin kin;
};

/// How a line is drawn, or an area filled.
struct Style {
    int rgb = 0;
    float opacity = 1.0F;
    float width = 0.0F;      ///< in units of the picture; 0: by its weight
    float weight = 0.25F;    ///< in millimetres of paper
    std::uint32_t dash = 0;  ///< of the scene's dashes; 0 for a whole line
    bool flat = false;       ///< ends are cut off where the line ends

    friend bool operator==(const Style&, const Style&) = default;
};

/// Where a text stands: its matrix without the position, and the position.
struct TextRun {
    std::string text;
    std::uint32_t font = 0;  ///< of the fonts
    Point right{};
    Point down{};
    Point at{};           ///< where its base line begins, without the scene's shift
    double size = 0.0;    ///< of the font
    double width = 0.0;   ///< to be filled
    bool spaced = false;  ///< by room between letters, not by wider ones
    double rise = 0.0;    ///< how far letters reach above the base line, and below it
    double fall = 0.0;
};

/// Everything that a picture shows, in plan view, in the order in which it is drawn. Coordinates
/// are those of the drawing, y upwards; where they are large, `shift` is taken away from all of
/// them. Forms of pictures are written from it.
class Scene {
public:
    enum class Kind : std::uint8_t { Stroke, Fill, Mask, Text, Open, Clip, Close };
    struct Element {
        Kind kind = Kind::Stroke;
        std::uint32_t origin = 0;
        std::uint32_t style = 0;
        std::uint32_t text = 0;  ///< of a text; of a group: the name of its block
        std::size_t op = 0;
        std::size_t number = 0;
        std::uint32_t ops = 0;
    };
    struct Owner {
        std::uint64_t handle = 0;
        std::uint32_t kin = 0;  ///< of the scene's kins, whose texts it holds itself
    };

    explicit Scene(const Point& shift);

    [[nodiscard]] const Point& shift() const { return m_shift; }
    [[nodiscard]] Path path() const { return Path(m_shift); }

    /// Lengths of dashes and gaps by turns, a dash first; 0 is a dot. The number to put in a style.
    [[nodiscard]] std::uint32_t dash(const std::vector<float>& lengths);
    /// What is drawn next belongs to that record.
    void setOrigin(const Origin& origin);
    void stroke(const Path& path, const Style& style) { add(Kind::Stroke, path, style); }
    void fill(const Path& path, const Style& style) { add(Kind::Fill, path, style); }
    /// Hides what was drawn there before.
    void mask(const Path& path) { add(Kind::Mask, path, {}); }
    void text(TextRun run, const Style& style);
    /// A line that goes on to the edge of the picture, to one side or to both.
    void ray(const Point& at, const Point& direction, bool both, const Style& style);
    /// A mark for a point, by $PDMODE and $PDSIZE.
    void mark(const Point& at, const Point& right, const Point& up, const Style& style);
    /// A dashed box at a place where something is missing, with a text in it.
    /// `share`: how large the box is, of the usual size.
    void missing(const Point& place, const std::string& text, double share = 1.0);

    /// Makes room for so many elements of the usual size.
    void expect(std::size_t elements);

    /// What follows, up to `close`, belongs to that record. Leaves no trace when nothing follows.
    /// With a path only what lies within it shows.
    struct Group {
        std::size_t begin = 0;
        bool clips = false;
    };
    [[nodiscard]] Group open(const Origin& origin, const std::string& block);
    [[nodiscard]] Group clip(const Path& path);
    void close(const Group& group);

    /// Draws what could not be drawn before the extent was known: once, at the end.
    struct Marks {
        int mode = 0;
        double size = 0.0;
    };
    void finish(const Marks& marks, const std::optional<Extent>& window);

    [[nodiscard]] const std::vector<Element>& elements() const { return m_elements; }
    [[nodiscard]] std::size_t strokes() const { return m_strokes; }  ///< all but groups
    /// Those that lie outside of a clip too, which leave no mark.
    [[nodiscard]] std::size_t offered() const { return m_offered; }
    [[nodiscard]] std::size_t records() const { return m_drawn; }  ///< those that left a mark
    /// How long the picture is so far as SVG; about.
    [[nodiscard]] std::size_t bytes() const { return m_bytes; }
    [[nodiscard]] std::string_view opsOf(const Element& element) const {
        return std::string_view(m_ops).substr(element.op, element.ops);
    }
    [[nodiscard]] const double* numbersOf(const Element& element) const {
        return m_numbers.data() + element.number;
    }
    [[nodiscard]] const Style& styleOf(const Element& element) const {
        return m_styles[element.style];
    }
    [[nodiscard]] const TextRun& textOf(const Element& element) const {
        return m_texts[element.text];
    }
    [[nodiscard]] const std::string& blockOf(const Element& element) const {
        return *m_blocks[element.text];
    }
    [[nodiscard]] const Owner& ownerOf(const Element& element) const {
        return m_owners[element.origin];
    }
    [[nodiscard]] const Kin& kinOf(const Owner& owner) const { return m_kins[owner.kin].kin; }
    [[nodiscard]] const std::vector<float>& dashOf(const Style& style) const {
        return m_dashes[style.dash];
    }
    [[nodiscard]] const Extent& extent() const { return m_extent; }

private:
    struct Deferred {
        enum class Kind : std::uint8_t { Ray, Line, Mark, Box };
        Kind kind = Kind::Ray;
        std::uint32_t origin = 0;
        Point at{};
        Point first{};
        Point second{};
        Style style;
        std::string text;
        Extent clip;
    };
    void add(Kind kind, const Path& path, const Style& style);
    Element& push(Kind kind);
    /// Whether a thing of that extent is seen at all; what is seen of it counts.
    bool noteExtent(const Extent& extent);
    /// The record to which what is drawn now belongs.
    std::uint32_t useOwner();
    [[nodiscard]] std::uint32_t numberOf(const Kin& kin);
    [[nodiscard]] std::uint32_t numberOf(const Style& style);
    void countStroke();
    void defer(Deferred deferred);
    void drawRay(const Deferred& ray, const Extent& all);
    void drawMark(const Deferred& point, const Marks& marks, double size);
    void drawBox(const Deferred& box, double width);
    [[nodiscard]] const std::string* kept(const std::string& text);

    Point m_shift;
    std::vector<Element> m_elements;
    std::string m_ops;
    std::vector<double> m_numbers;
    std::vector<Style> m_styles;
    std::vector<TextRun> m_texts;
    std::vector<const std::string*> m_blocks;
    std::vector<Owner> m_owners;
    struct KnownKin {
        Kin kin;
        std::size_t bytes = 0;  ///< as SVG, with each element; about
    };
    std::vector<KnownKin> m_kins;
    std::map<std::array<const std::string*, 3>, std::uint32_t> m_kinNumbers;
    struct RecentKin {
        Kin given;
        std::uint32_t number = 0;
    };
    static constexpr std::size_t kRecent = 256;
    std::array<RecentKin, kRecent> m_recentKins{};  ///< by where their texts lie
    RecentKin m_lastKin;
    std::array<std::uint32_t, kRecent> m_recentStyles{};
    std::vector<std::vector<float>> m_dashes;
    std::map<std::vector<float>, std::uint32_t> m_dashNumbers;
    std::set<std::string, std::less<>> m_kept;
    std::vector<Deferred> m_deferred;
    std::vector<Extent> m_clips;
    Extent m_extent;
    std::size_t m_strokes = 0;
    std::size_t m_offered = 0;
    std::size_t m_drawn = 0;
    std::size_t m_bytes = 0;
    std::uint32_t m_lastDrawn = 0;
    std::uint32_t m_used = 0;  ///< the last owner that an element has
    std::size_t m_ownerBytes = 0;
};

}  // namespace mor::tool
