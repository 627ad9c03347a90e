#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct FT_FaceRec_;
struct FT_LibraryRec_;

namespace mor::tool {

/// UTF-8 as characters; what is no UTF-8 as U+FFFD.
[[nodiscard]] std::u32string characters(std::string_view text);
[[nodiscard]] std::string utf8Of(std::u32string_view text);

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
    Fonts();
    ~Fonts();
    Fonts(const Fonts&) = delete;
    Fonts& operator=(const Fonts&) = delete;

    /// Never fails: where no font is found, letters of a usual width are taken.
    [[nodiscard]] std::uint32_t find(const FontWish& wish);

    /// For a size of 1.
    [[nodiscard]] double width(std::uint32_t font, std::string_view text);
    [[nodiscard]] double capitalHeight(std::uint32_t font) const;
    [[nodiscard]] double descent(std::uint32_t font) const;
    /// For a style sheet: the font, others of its kind, and the generic one.
    [[nodiscard]] const std::string& families(std::uint32_t font) const;
    [[nodiscard]] bool isBold(std::uint32_t font) const;
    [[nodiscard]] bool isItalic(std::uint32_t font) const;

    /// A letter as a face of the system has it; null face where none has it.
    struct Letter {
        FT_FaceRec_* face = nullptr;
        unsigned glyph = 0;
        double advance = 0.0;  ///< for a size of 1
    };
    [[nodiscard]] Letter letter(std::uint32_t font, char32_t character);

    /// Which font stands for which name, for those who want to know.
    [[nodiscard]] const std::map<std::string, std::string>& substitutes() const {
        return m_substitutes;
    }

private:
    struct Face;
    [[nodiscard]] Face* load(const std::string& family, bool bold, bool italic, char32_t needed);
    [[nodiscard]] Face* fallback(const Face& face, char32_t character);

    FT_LibraryRec_* m_library = nullptr;
    std::vector<std::unique_ptr<Face>> m_loaded;  ///< of the machine
    std::vector<std::unique_ptr<Face>> m_faces;   ///< as wished, each with loaded ones
    std::map<FontWish, std::uint32_t> m_known;
    std::map<std::string, Face*> m_byFile;
    std::map<std::string, std::string> m_substitutes;
};

}  // namespace mor::tool
