#pragma once

#include "platform/lisp.h"
#include "platform/string_list.h"
#include "platform/types.h"
#include "space/letter_iterator.h"

#include <memory>

class CMORCadSpace;
class CMORCadView;

/// Walks the entities of a space, all or those on the layers that match one of the wildcard
/// patterns. The patterns of an external reference are written without its name. A view is walked
/// as its space: coordinates are not transformed. Model space means the whole drawing, layouts
/// included. Empty when the space is empty, when the layers are unusable (a LISP element that is no
/// string is reported), and on model space when nothing matches.
class MOR_SpaceIterator {
public:
    explicit MOR_SpaceIterator(const CMORCadSpace& space);
    MOR_SpaceIterator(const CMORCadSpace& space, const CMORAdsLispVar& layers);
    MOR_SpaceIterator(const CMORCadSpace& space, const CMORStringList& layers);
    explicit MOR_SpaceIterator(const CMORCadView& view);
    MOR_SpaceIterator(const CMORCadView& view, const CMORAdsLispVar& layers);
    MOR_SpaceIterator(const CMORCadView& view, const CMORStringList& layers);

    virtual ~MOR_SpaceIterator();
    /// Back before the first entity; selects nothing anew.
    virtual void resetIterator();
    /// The name of the next entity, null after the last one. The address is the same at every call;
    /// what stands there is valid until the next call.
    virtual ads_name* operator()();

protected:
    [[nodiscard]] virtual bool isEmpty() const;

private:
    MOR_SpaceIterator(const MOR_SpaceIterator&) = delete;             // NOLINT(*equals-delete)
    MOR_SpaceIterator& operator=(const MOR_SpaceIterator&) = delete;  // NOLINT(*equals-delete)

    void initData();
    void cleanData();
    template <typename Layers>
    void start(const CMORCadSpace* space, const Layers& layers);

    std::unique_ptr<CMORCadLetterSpaceIterator> m_letter;
};
