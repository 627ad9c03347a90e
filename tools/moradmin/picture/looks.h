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

/// How an entity shows: its own properties, or those that it takes from its layer or insert.
struct Look {
    int colour = kForeground;  ///< as the drawing has it
    float opacity = 1.0F;
    float weight = 0.25F;  ///< millimetres
    std::string lineType;  ///< qualified; empty for a whole line
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

/// What the symbol tables say of how things look, each read once. Names are qualified as the
/// drawing knows them.
class Looks {
public:
    explicit Looks(AcApDocument* document) : m_document(document) {}

    [[nodiscard]] const LayerLook& layer(const std::string& name);
    /// Lengths of dashes, gaps below 0, dots 0; empty for a whole line.
    [[nodiscard]] const std::vector<double>& lineType(const std::string& name);
    [[nodiscard]] const TextStyle& textStyle(const std::string& name);
    /// The record of a dimension style.
    [[nodiscard]] const EntityRecord* dimensionStyle(const std::string& name);
    /// The look of an entity, or of a part of one that says less.
    [[nodiscard]] Look lookOf(const EntityRecord& record, const LayerLook& layer,
                              const Look& insert, const std::string& reference) const;

    /// A name within a reference as the drawing knows it.
    [[nodiscard]] static std::string qualified(const std::string& reference,
                                               const std::string& name);

private:
    [[nodiscard]] std::optional<EntityRecord> symbol(std::string_view table,
                                                     const std::string& name) const;

    AcApDocument* m_document;
    std::map<std::string, LayerLook> m_layers;
    std::map<std::string, std::vector<double>> m_lineTypes;
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
