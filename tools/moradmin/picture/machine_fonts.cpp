#include "tools/moradmin/picture/characters.h"
#include "tools/moradmin/picture/paint_library.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>
#include FT_FREETYPE_H
#include FT_ADVANCES_H
#include FT_TRUETYPE_TABLES_H

namespace mor::tool {

namespace {

// Where there is no font at all.
constexpr double kUsualAdvance = 0.6;
constexpr double kUsualCapital = 0.72;
constexpr double kUsualDescent = 0.21;

enum class Kind { Sans, Serif, Mono, Stick };

/// What is looked for on the machine, and what stands behind it in a style sheet.
struct Stock {
    const char* family;
    const char* others;
};
const Stock& stockOf(Kind kind) {
    static constexpr std::array<Stock, 4> all = {
        {{"Liberation Sans", "Arial, Helvetica, sans-serif"},
         {"Liberation Serif", "'Times New Roman', Times, serif"},
         {"Liberation Mono", "'Courier New', Courier, monospace"},
         {"DejaVu Sans", "Verdana, sans-serif"}}};
    return all[static_cast<std::size_t>(kind)];
}

/// Beginnings of names of fonts. Letters drawn with a stick are wide: those are the fonts of
/// shapes.
constexpr std::array<std::pair<std::string_view, Kind>, 27> kNames = {
    {{"times", Kind::Serif},    {"roman", Kind::Stick},    {"georgia", Kind::Serif},
     {"garamond", Kind::Serif}, {"cambria", Kind::Serif},  {"bookman", Kind::Serif},
     {"palatino", Kind::Serif}, {"century", Kind::Serif},  {"cour", Kind::Mono},
     {"consola", Kind::Mono},   {"monotxt", Kind::Mono},   {"lucida console", Kind::Mono},
     {"txt", Kind::Stick},      {"simplex", Kind::Stick},  {"complex", Kind::Stick},
     {"italic", Kind::Stick},   {"iso", Kind::Sans},       {"gothic", Kind::Stick},
     {"script", Kind::Stick},   {"ltypeshp", Kind::Stick}, {"standard", Kind::Stick},
     {"verdana", Kind::Stick},  {"tahoma", Kind::Sans},    {"dejavu sans mono", Kind::Mono},
     {"dejavu", Kind::Stick},   {"gdt", Kind::Stick},      {"bold", Kind::Stick}}};

std::string lower(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// A file's name without folder, in lower case.
std::string bareName(const std::string& file) {
    return lower(file.substr(file.find_last_of("/\\") + 1));
}

Kind kindOf(const FontWish& wish) {
    const std::string name = wish.family.empty() ? bareName(wish.file) : lower(wish.family);
    for (const auto& [beginning, kind] : kNames)
        if (name.starts_with(beginning)) return kind;
    const bool trueType =
        name.ends_with(".ttf") || name.ends_with(".ttc") || name.ends_with(".otf");
    return trueType || !wish.family.empty() ? Kind::Sans : Kind::Stick;
}

class MachineFonts : public Fonts {
public:
    MachineFonts();
    ~MachineFonts() override;
    MachineFonts(const MachineFonts&) = delete;
    MachineFonts& operator=(const MachineFonts&) = delete;

    [[nodiscard]] std::uint32_t find(const FontWish& wish) override;
    [[nodiscard]] double width(std::uint32_t font, std::string_view text) override;
    [[nodiscard]] double capitalHeight(std::uint32_t font) const override {
        return m_faces[font]->capital;
    }
    [[nodiscard]] double descent(std::uint32_t font) const override {
        return m_faces[font]->descent;
    }
    [[nodiscard]] const std::string& families(std::uint32_t font) const override {
        return m_faces[font]->families;
    }
    [[nodiscard]] bool isBold(std::uint32_t font) const override { return m_faces[font]->bold; }
    [[nodiscard]] bool isItalic(std::uint32_t font) const override { return m_faces[font]->italic; }
    [[nodiscard]] Letter letter(std::uint32_t font, char32_t character) override;
    [[nodiscard]] const std::map<std::string, std::string>& substitutes() const override {
        return m_substitutes;
    }

private:
    struct Face {
        FT_Face face = nullptr;
        std::string families;
        bool bold = false;
        bool italic = false;
        double capital = kUsualCapital;
        double descent = kUsualDescent;
        std::unordered_map<char32_t, Letter> letters;
        std::vector<Face*> others;  ///< that have letters which this one lacks
    };
    [[nodiscard]] Face* load(const std::string& family, bool bold, bool italic, char32_t needed);
    [[nodiscard]] Face* fallback(const Face& face, char32_t character);

    FT_Library m_library = nullptr;
    std::vector<std::unique_ptr<Face>> m_loaded;  ///< of the machine
    std::vector<std::unique_ptr<Face>> m_faces;   ///< as wished, each with loaded ones
    std::map<FontWish, std::uint32_t> m_known;
    std::map<std::string, Face*> m_byFile;
    std::map<std::string, std::string> m_substitutes;
};

MachineFonts::MachineFonts() {
    if (FT_Init_FreeType(&m_library) != 0) m_library = nullptr;
    static_cast<void>(MachineFonts::find({}));  // number 0
}

MachineFonts::~MachineFonts() {
    for (const auto& face : m_loaded)
        if (face->face != nullptr) FT_Done_Face(face->face);
    if (m_library != nullptr) FT_Done_FreeType(m_library);
    FcFini();  // what it has read of the machine's fonts
}

MachineFonts::Face* MachineFonts::load(const std::string& family, bool bold, bool italic,
                                       char32_t needed) {
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    FcPatternAddInteger(pattern, FC_WEIGHT, bold ? FC_WEIGHT_BOLD : FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern, FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    FcPatternAddBool(pattern, FC_SCALABLE, FcTrue);
    if (needed != 0) {
        FcCharSet* set = FcCharSetCreate();
        FcCharSetAddChar(set, needed);
        FcPatternAddCharSet(pattern, FC_CHARSET, set);
        FcCharSetDestroy(set);
    }
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result{};
    FcPattern* match = FcFontMatch(nullptr, pattern, &result);
    FcPatternDestroy(pattern);
    auto face = std::make_unique<Face>();
    if (match != nullptr) {
        FcChar8* file = nullptr;
        int index = 0;
        FcPatternGetInteger(match, FC_INDEX, 0, &index);
        if (FcPatternGetString(match, FC_FILE, 0, &file) == FcResultMatch && m_library != nullptr) {
            const std::string name = reinterpret_cast<const char*>(file);
            const std::string key = name + "#" + std::to_string(index);
            if (const auto known = m_byFile.find(key); known != m_byFile.end()) {
                FcPatternDestroy(match);
                return known->second;
            }
            if (FT_New_Face(m_library, name.c_str(), index, &face->face) != 0) face->face = nullptr;
            m_byFile[key] = face.get();
        }
        FcPatternDestroy(match);
    }
    if (face->face != nullptr && face->face->units_per_EM > 0) {
        const double unit = face->face->units_per_EM;
        const auto* table = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face->face, FT_SFNT_OS2));
        if (table != nullptr && table->version >= 2 && table->sCapHeight > 0)
            face->capital = table->sCapHeight / unit;
        else if (FT_Load_Char(face->face, 'H', FT_LOAD_NO_SCALE) == 0 &&
                 face->face->glyph->metrics.height > 0)
            face->capital = static_cast<double>(face->face->glyph->metrics.height) / unit;
        face->descent = -face->face->descender / unit;
    }
    m_loaded.push_back(std::move(face));
    return m_loaded.back().get();
}

std::uint32_t MachineFonts::find(const FontWish& wish) {
    const auto [known, added] = m_known.try_emplace(wish, 0);
    if (!added) return known->second;
    const Stock& stock = stockOf(kindOf(wish));
    Face* loaded = load(stock.family, wish.bold, wish.italic, 0);
    // One face may stand for several wishes, which are told apart in a style sheet.
    auto face = std::make_unique<Face>();
    face->capital = loaded->capital;
    face->descent = loaded->descent;
    face->others = {loaded};
    face->bold = wish.bold;
    face->italic = wish.italic;
    face->families = "'" + std::string(stock.family) + "', " + stock.others;
    if (!wish.family.empty() && lower(wish.family) != lower(stock.family) &&
        wish.family.find_first_of("'\"<>&;{}\\") == std::string::npos)
        m_substitutes[wish.family] = stock.family;
    else if (wish.family.empty() && !wish.file.empty())
        m_substitutes[wish.file] = stock.family;
    known->second = static_cast<std::uint32_t>(m_faces.size());
    m_faces.push_back(std::move(face));
    return known->second;
}

MachineFonts::Face* MachineFonts::fallback(const Face& face, char32_t character) {
    for (Face* other : face.others)
        if (other->face != nullptr && FT_Get_Char_Index(other->face, character) != 0) return other;
    Face* found = load("DejaVu Sans", face.bold, face.italic, character);
    if (found->face != nullptr && FT_Get_Char_Index(found->face, character) != 0) return found;
    return face.others.front();
}

Fonts::Letter MachineFonts::letter(std::uint32_t font, char32_t character) {
    Face& face = *m_faces[font];
    const auto [known, added] = face.letters.try_emplace(character);
    Letter& letter = known->second;
    if (!added) return letter;
    letter.advance = kUsualAdvance;
    Face* with = fallback(face, character);
    if (std::ranges::find(face.others, with) == face.others.end()) face.others.push_back(with);
    if (with->face == nullptr) return letter;
    letter.face = with->face;
    letter.glyph = FT_Get_Char_Index(with->face, character);
    FT_Fixed advance = 0;
    if (FT_Get_Advance(with->face, letter.glyph, FT_LOAD_NO_SCALE, &advance) == 0)
        letter.advance = static_cast<double>(advance) / with->face->units_per_EM;
    return letter;
}

double MachineFonts::width(std::uint32_t font, std::string_view text) {
    double width = 0.0;
    for (const char32_t c : characters(text)) width += letter(font, c).advance;
    return width;
}

}  // namespace

std::unique_ptr<Fonts> machineFonts() { return std::make_unique<MachineFonts>(); }

}  // namespace mor::tool
