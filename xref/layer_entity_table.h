#pragma once

#include "platform/lisp.h"
#include "platform/runtime.h"
#include "platform/string_list.h"
#include "platform/types.h"
#include "xref/entity_set.h"

#include <map>
#include <string>

class MOR_Letter_XRefSpaceIterator;

/// The entities of an external reference by layer. Layers are told apart without regard to case.
class MOR_LayerXRefEntityTable {
public:
    MOR_LayerXRefEntityTable();
    virtual ~MOR_LayerXRefEntityTable();

    /// Files the entity under the layer, once; always true. A new layer's name is kept as it is
    /// given: the reference's letter gives it in upper case.
    bool add(const ads_name entity, const wchar_t* layer);

    /// A new iterator, owned by the caller, over the entities on all layers whose whole name
    /// matches one of the qualified wildcard patterns, without regard to case; it may have nothing
    /// to deliver. Null when the list has no entries, when the value is no list.
    [[nodiscard]] MOR_Letter_XRefSpaceIterator* iteratorForLayers(
        const CMORStringList& patterns) const;
    [[nodiscard]] MOR_Letter_XRefSpaceIterator* iteratorForLayers(
        const CMORAdsLispVar& patterns) const;

private:
    std::map<std::wstring, mor::EntitySet, mor::LessNoCase> m_layers;
};
