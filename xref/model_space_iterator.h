#pragma once

#include "platform/lisp.h"
#include "platform/owned.h"
#include "platform/string_list.h"
#include "platform/types.h"
#include "space/letter_iterator.h"

#include <cstdint>
#include <string>
#include <vector>

/// Steps through a selection of the drawing's entities. Holds the selection set until its end.
class CMORCadLetterModelSpaceIterator : public CMORCadLetterSpaceIterator {
public:
    CMORCadLetterModelSpaceIterator();
    ~CMORCadLetterModelSpaceIterator() override;

    /// Selects the entities of model space and all layouts that lie on a layer matching one of the
    /// wildcard patterns; all entities when the list has no elements. Replaces a former selection.
    /// False, and nothing selected, when nothing matches; for a LISP value that is no list (or a
    /// dotted pair), which leaves a former selection; and for an element that is no string, which
    /// prints "string expected".
    bool selectEntitiesByLayer(const CMORAdsLispVar& layers);
    bool selectEntitiesByLayer(const CMORStringList& layers);

    void reset() override;
    [[nodiscard]] ads_name* next() override;

private:
    void release();
    bool select(const std::vector<std::wstring>& layers);

    std::int32_t m_count = 0;
    std::int32_t m_index = 0;  // of the next entity
    ads_name m_current{};
    mor::SelectionSet m_set;
};
