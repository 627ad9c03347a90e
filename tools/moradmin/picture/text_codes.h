#pragma once

#include "tools/moradmin/picture/fonts.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

/// A stretch of a text of one line.
struct TextPart {
    std::string text;
    bool under = false;
    bool over = false;
    bool struck = false;
};
/// What a text shows: %%d is a degree sign, %%nnn the character of that number, %%u begins and ends
/// a line below, and so on.
[[nodiscard]] std::vector<TextPart> textParts(const std::string& text);

/// How a stretch of a text of many lines looks.
struct TextFormat {
    FontWish font;
    double height = 1.0;
    double widened = 1.0;
    double oblique = 0.0;   ///< degrees
    double tracking = 1.0;  ///< factor of the room that letters take
    std::optional<int> colour;
    bool under = false;
    bool over = false;
    bool struck = false;
    int raised = 0;  ///< of stacked parts: 0 on the line, 1 centred, 2 at the top
    // Of paragraphs.
    char across = ' ';  ///< l, c, r; a blank for as the whole text
    double indent = 0.0;
    double left = 0.0;
    double right = 0.0;
    std::vector<double> tabs;
};

/// A word, or what stands between words.
struct TextPiece {
    enum class Kind { Word, Blank, Tab, Paragraph, Column, Stack };
    Kind kind = Kind::Word;
    std::string text;
    std::string below;   ///< of stacked parts
    char between = '/';  ///< '/' a line, '#' a slanted one, '^' none
    std::size_t format = 0;
};
struct FormattedText {
    std::vector<TextFormat> formats;
    std::vector<TextPiece> pieces;
};
/// Reads the format codes of a text of many lines; what is no code stays as it is. `colours` of
/// formats are as the drawing has them; `byLayer` stands for number 256, `byBlock` for 0.
[[nodiscard]] FormattedText readFormats(const std::string& text, const TextFormat& first,
                                        int byLayer, int byBlock);

}  // namespace mor::tool
