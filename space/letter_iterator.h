#pragma once

#include "platform/types.h"

/// The implementation behind an entity iterator. Owned by the iterator that holds it.
class CMORCadLetterSpaceIterator {
public:
    CMORCadLetterSpaceIterator() = default;
    CMORCadLetterSpaceIterator(const CMORCadLetterSpaceIterator&) = delete;
    CMORCadLetterSpaceIterator& operator=(const CMORCadLetterSpaceIterator&) = delete;
    virtual ~CMORCadLetterSpaceIterator() = default;

    /// The next `next` starts at the first entity again.
    virtual void reset() = 0;
    /// The name of the next entity, null after the last one. The address is the same at every call;
    /// what stands there is valid until the next call.
    [[nodiscard]] virtual ads_name* next() = 0;
};
