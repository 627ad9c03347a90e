#pragma once

#include "tools/moradmin/picture/looks.h"
#include "tools/moradmin/picture/path.h"

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Spaces of a drawing, and how one looks into the other.
namespace mor::tool {

/// Model space, or a sheet of paper.
struct Layout {
    std::string name;
    std::string block;  ///< that holds its entities
    int order = 0;      ///< of the tabs
    bool model = false;
    double width = 0.0;  ///< of the paper, in millimetres; 0 where it is not known
    double height = 0.0;
    std::string unit;      ///< "mm" or "in", in which the paper is measured
    double perUnit = 1.0;  ///< millimetres of a unit of the space
    double left = 0.0;     ///< where the paper begins from the origin, in millimetres
    double bottom = 0.0;
    std::size_t entities = 0;   ///< without viewports
    std::size_t viewports = 0;  ///< without the sheet's own

    [[nodiscard]] bool empty() const { return entities == 0 && viewports == 0; }

    /// The paper in units of the space; empty where its size is not known.
    [[nodiscard]] Extent paper() const;
};
/// All layouts of a drawing in the order of their tabs, model space first; what lies in each is
/// counted.
[[nodiscard]] std::vector<Layout> layoutsOf(AcApDocument* document);
/// The block of the layout in which an entity of a paper space stands.
[[nodiscard]] std::string layoutBlock(const host::RecordInfo& info);
/// The name of the layout whose entities stand in a block of the drawing itself; empty for any
/// other block.
[[nodiscard]] std::string layoutName(const AcApDocument* document, const std::string& block);
/// Without regard to case.
[[nodiscard]] bool sameName(const std::string& a, const std::string& b);

/// A window of a sheet through which model space is seen.
struct View {
    bool shown = false;        ///< it is on, and not the sheet's own
    bool perspective = false;  ///< drawn as if it were none
    Extent frame;              ///< on the sheet
    CMORMathTransMatrix matrix;
    std::set<std::string> frozen;  ///< names of layers
};
/// `number` counts the viewports of the sheet from 0: the first one may be the sheet's own.
[[nodiscard]] View viewOf(const AcApDocument* document, mor::EntityName name,
                          const EntityRecord& viewport, std::size_t number);

/// An entry of a dictionary in the drawing of the record `beside`.
[[nodiscard]] std::optional<mor::EntityName> dictionaryEntry(const AcApDocument* document,
                                                             mor::EntityName dictionary,
                                                             std::string_view key);
/// What a record's own dictionary holds under keys, one within the other.
[[nodiscard]] std::optional<mor::EntityName> extensionEntry(const AcApDocument* document,
                                                            mor::EntityName name,
                                                            const EntityRecord& record,
                                                            const std::vector<std::string>& keys);

/// What of an insert's block shows, in coordinates of the block.
struct BlockClip {
    std::vector<Point> corners;
    bool inverted = false;  ///< what lies within does not show
};
[[nodiscard]] std::optional<BlockClip> clipOf(const AcApDocument* document, mor::EntityName name,
                                              const EntityRecord& insert);

/// The order in which entities of a block are drawn where it is not that of the file: handles, and
/// the ones in whose place they come.
[[nodiscard]] std::map<std::uint64_t, std::uint64_t> drawOrder(const AcApDocument* document,
                                                               mor::EntityName blockRecord);

}  // namespace mor::tool
