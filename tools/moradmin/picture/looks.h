#pragma once

#include "host/host.h"
#include "tools/moradmin/picture/colours.h"
#include "tools/moradmin/picture/fonts.h"
#include "tools/moradmin/references/entity_record.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

struct LineType;

/// How an entity shows: its own properties, or those that it takes from its layer or insert.
struct Look {
    int colour = kForeground;  ///< as the drawing has it
    float opacity = 1.0F;
    float weight = 0.25F;                ///< millimetres
    const LineType* lineType = nullptr;  ///< null for a whole line
    double lineTypeScale = 1.0;
};

struct LayerLook {
    bool off = false;
    bool frozen = false;
    bool plotted = true;
    Look look;
    const std::string* name = nullptr;
};

struct TextStyle {
    FontWish font;
    double height = 0.0;  ///< 0 for any
    double widened = 1.0;
    double oblique = 0.0;  ///< degrees
    bool vertical = false;
};

/// A text that stands in every pattern of a line.
struct LineText {
    std::string text;
    TextStyle style;
    double along = 0.0;    ///< where in the pattern
    double size = 1.0;     ///< of the height of its style, or of 1
    double turn = 0.0;     ///< degrees, from the line
    bool upright = false;  ///< from the drawing's x axis instead
    double x = 0.0;        ///< from there, along the line and to its left
    double y = 0.0;
};
struct LineType {
    std::vector<double> lengths;  ///< of dashes, gaps below 0, dots 0; none for a whole line
    std::vector<LineText> texts;
};

/// What the symbol tables say of how things look, each read once. Names are qualified as the
/// drawing knows them.
class Looks {
public:
    explicit Looks(AcApDocument* document) : m_document(document) {}

    [[nodiscard]] const LayerLook& layer(const std::string& name);
    [[nodiscard]] const LineType& lineType(const std::string& name);
    [[nodiscard]] const TextStyle& textStyle(const std::string& name);
    /// The record of a dimension style.
    [[nodiscard]] const EntityRecord* dimensionStyle(const std::string& name);
    /// The look of an entity, or of a part of one that says less.
    [[nodiscard]] Look lookOf(const EntityRecord& record, const LayerLook& layer,
                              const Look& insert, const std::string& reference);

    /// A name within a reference as the drawing knows it.
    [[nodiscard]] static std::string qualified(const std::string& reference,
                                               const std::string& name);

private:
    [[nodiscard]] std::optional<mor::EntityName> symbol(std::string_view table,
                                                        const std::string& name) const;
    [[nodiscard]] TextStyle styleOf(mor::EntityName name) const;
    void readLineType(mor::EntityName name, LineType& type) const;

    AcApDocument* m_document;
    std::map<std::string, LayerLook> m_layers;
    std::map<std::string, LineType> m_lineTypes;
    std::map<std::string, TextStyle> m_textStyles;
    std::map<std::string, std::optional<EntityRecord>> m_dimensionStyles;
};

/// A colour from groups 62 and 420 of a record or a part of one: what neither says is `otherwise`.
[[nodiscard]] int colourOf(const EntityRecord& record, int byLayer, int byBlock);
/// A colour as multileaders and tables hold it, in one number; nothing where it is not their own.
[[nodiscard]] std::optional<int> packedColour(int packed);
/// The reals behind 1000 "NAME" and the like in the extended data of an application.
[[nodiscard]] std::vector<host::RecordGroup> extendedData(const AcApDocument* document,
                                                          mor::EntityName name,
                                                          std::string_view application);

}  // namespace mor::tool
