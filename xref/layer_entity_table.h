#pragma once

#include "platform/lisp.h"
#include "platform/runtime.h"
#include "platform/string_list.h"
#include "platform/types.h"
#include "xref/entity_set.h"

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

class MOR_Letter_XRefSpaceIterator;

/// The entities of an external reference by layer. Layers are told apart without regard to case.
class MOR_LayerXRefEntityTable {
public:
    MOR_LayerXRefEntityTable();
    MOR_LayerXRefEntityTable(const MOR_LayerXRefEntityTable&) = delete;
    MOR_LayerXRefEntityTable& operator=(const MOR_LayerXRefEntityTable&) = delete;
    virtual ~MOR_LayerXRefEntityTable();

    /// Files the entity under the layer, once; always true. A new layer's name is kept in upper
    /// case.
    bool add(const ads_name entity, const wchar_t* layer);
    void add(const mor::EntityName& entity, std::wstring_view layer);

    /// A new iterator, owned by the caller, over the entities on all layers whose whole name
    /// matches one of the qualified wildcard patterns, without regard to case; it may have nothing
    /// to deliver. Null when the list has no entries, when the value is no list.
    [[nodiscard]] MOR_Letter_XRefSpaceIterator* iteratorForLayers(
        const CMORStringList& patterns) const;
    [[nodiscard]] MOR_Letter_XRefSpaceIterator* iteratorForLayers(
        const CMORAdsLispVar& patterns) const;

private:
    struct TextHash {
        using is_transparent = void;
        [[nodiscard]] std::size_t operator()(std::wstring_view text) const noexcept {
            return std::hash<std::wstring_view>{}(text);
        }
    };

    std::map<std::wstring, mor::EntitySet, mor::LessNoCase> m_layers;
    /// The sets in `m_layers` by the very texts that were given: there are many more entities than
    /// layers.
    std::unordered_map<std::wstring, mor::EntitySet*, TextHash, std::equal_to<>> m_given;
    /// The one that was given last: neighbours mostly lie on the same layer.
    const std::pair<const std::wstring, mor::EntitySet*>* m_last = nullptr;
};
