#pragma once

#include "host/calls/wildcard.h"
#include "host/drawing/drawing.h"
#include "platform/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace mor::host {

/// The text of an element of a filter list, whatever its value's type.
[[nodiscard]] std::wstring filterText(const resbuf& item);

/// A filter list, ready to be asked about one entity after the other. Without operators all groups
/// must hold;
/// `-4` elements bracket AND, OR, XOR and NOT or give a relation for the number behind them, one
/// for each coordinate of a point; what is left out there may be anything. Texts
/// of types and symbols are wildcard patterns without regard to case, evaluated once per distinct
/// text. `-3` tests for extended data, of the application in a 1001 right behind it when there is
/// one.
class SelectionFilter {
public:
    SelectionFilter(Drawing& drawing, const resbuf* filter);

    /// False for unbalanced operators and relations without a number.
    [[nodiscard]] bool isValid() const { return m_valid; }
    /// Whether the record is a main entity of a space, not erased, for which the filter holds.
    [[nodiscard]] bool matches(RecordNumber number);

private:
    enum class Kind { All, Any, Xor, Not, Text, Number, Point, Name, Application, Space, Always };
    enum class Relation {
        Any,
        Equal,
        NotEqual,
        Less,
        LessEqual,
        Greater,
        GreaterEqual,
        AnyBit,
        AllBits
    };
    struct Node {
        Kind kind = Kind::All;
        int code = 0;
        std::size_t end = 0;  ///< index behind its last descendant
        std::optional<Wildcard> pattern;
        std::unordered_map<std::string, bool> answers;  ///< of the pattern, by undecoded text
        std::vector<std::optional<bool>> byLayer;       ///< the same, by number of a layer's text
        std::array<double, 3> number{};
        std::uint64_t handle = 0;  ///< of the record that is named
        std::array<Relation, 3> relation{Relation::Equal, Relation::Equal, Relation::Equal};
    };

    bool parse(const resbuf* filter);
    bool openOrClose(std::wstring_view word, std::vector<std::size_t>& open);
    void addTest(const resbuf& item, const std::array<Relation, 3>& relation);
    [[nodiscard]] static std::optional<std::array<Relation, 3>> relationsOf(std::wstring_view word);
    [[nodiscard]] static bool holds(Relation relation, double value, double wanted);
    [[nodiscard]] bool evaluate(std::size_t& at, RecordNumber number);
    [[nodiscard]] bool test(Node& node, RecordNumber number);
    [[nodiscard]] bool testText(Node& node, std::string_view text);
    [[nodiscard]] bool testLayer(Node& node, RecordNumber number);
    [[nodiscard]] bool testNumbers(const Node& node, RecordNumber number);
    [[nodiscard]] bool testMarkers(Node& node, RecordNumber number);
    [[nodiscard]] bool matchesLayer(RecordNumber number);
    [[nodiscard]] const GroupList& record(RecordNumber number);

    Drawing& m_drawing;
    bool m_valid = true;
    bool m_layersAlone = false;                  ///< nothing else is tested
    std::vector<std::optional<bool>> m_byLayer;  ///< the answers then, by number of its text
    std::vector<Node> m_nodes;                   ///< in reading order; the first holds all
    RecordNumber m_recordOf = 0;
    GroupList m_record;
};

}  // namespace mor::host
