#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

struct FT_FaceRec_;

namespace mor::tool {

/// What a text asks for.
struct FontWish {
    std::string file;    ///< as styles name it: arial.ttf, txt, romans.shx
    std::string family;  ///< as formats within texts name it: Arial; before the file
    bool bold = false;
    bool italic = false;

    friend auto operator<=>(const FontWish&, const FontWish&) = default;
};

/// The fonts of this machine that stand for those of drawings, and how wide their letters are.
class Fonts {
public:
    Fonts() = default;
    virtual ~Fonts() = default;
    Fonts(const Fonts&) = delete;
    Fonts& operator=(const Fonts&) = delete;

    /// Never fails: where no font is found, letters of a usual width are taken.
    [[nodiscard]] virtual std::uint32_t find(const FontWish& wish) = 0;

    /// For a size of 1.
    [[nodiscard]] virtual double width(std::uint32_t font, std::string_view text) = 0;
    [[nodiscard]] virtual double capitalHeight(std::uint32_t font) const = 0;
    [[nodiscard]] virtual double descent(std::uint32_t font) const = 0;
    /// For a style sheet: the font, others of its kind, and the generic one.
    [[nodiscard]] virtual const std::string& families(std::uint32_t font) const = 0;
    [[nodiscard]] virtual bool isBold(std::uint32_t font) const = 0;
    [[nodiscard]] virtual bool isItalic(std::uint32_t font) const = 0;

    /// A letter as a face of the system has it; null face where none has it.
    struct Letter {
        FT_FaceRec_* face = nullptr;
        unsigned glyph = 0;
        double advance = 0.0;  ///< for a size of 1
    };
    [[nodiscard]] virtual Letter letter(std::uint32_t font, char32_t character) = 0;

    /// Which font stands for which name, for those who want to know.
    [[nodiscard]] virtual const std::map<std::string, std::string>& substitutes() const = 0;
};

}  // namespace mor::tool
