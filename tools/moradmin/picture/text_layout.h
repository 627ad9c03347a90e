#pragma once

#include "tools/moradmin/picture/text_codes.h"

#include <cstddef>
#include <string>
#include <vector>

namespace mor::tool {

/// How a text of many lines is to stand.
struct TextBox {
    double width = 0.0;    ///< where lines are broken; 0 for nowhere
    double height = 1.0;   ///< of letters
    double spacing = 1.0;  ///< of lines
    bool exactly = false;  ///< the same for all lines, however high their letters are
    int across = 0;        ///< 0 at the left, 1 centred, 2 at the right
    // Columns; their width is that of the lines.
    std::size_t columns = 1;
    double gutter = 0.0;
    std::vector<double> columnHeights;  ///< the last one counts for the others; none: as it comes
};

/// A text of many lines with each of its parts in its place: x to the right, y upwards, from the
/// upper left corner of what they take.
struct TextLayout {
    struct Part {
        std::string text;
        std::size_t format = 0;
        double x = 0.0;
        double y = 0.0;  ///< of the base line
        double width = 0.0;
    };
    struct Line {
        std::size_t format = 0;
        double x1 = 0.0;
        double y1 = 0.0;
        double x2 = 0.0;
        double y2 = 0.0;
    };
    std::vector<Part> parts;
    std::vector<Line> lines;
    double left = 0.0;    ///< where the first part begins
    double width = 0.0;   ///< from there
    double height = 0.0;  ///< from the top of the first line to the base line of the last
};

[[nodiscard]] TextLayout layOut(const FormattedText& text, const TextBox& box, Fonts& fonts);
/// How wide a text is in that format.
[[nodiscard]] double widthOf(const std::string& text, const TextFormat& format, Fonts& fonts);

}  // namespace mor::tool
