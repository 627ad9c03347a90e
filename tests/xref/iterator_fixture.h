#pragma once

#include "space/space.h"
#include "tests/xref/reference_fixture.h"
#include "xref/space_iterator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace mor::test {

[[nodiscard]] inline CMORStringList texts(const std::vector<const wchar_t*>& items) {
    CMORStringList list;
    for (const wchar_t* item : items) list.Append(item);
    return list;
}

[[nodiscard]] inline CMORAdsLispVar lisp(const char* text) { return host::readLisp(text).value(); }

struct OpenIterator : MOR_SpaceIterator {
    using MOR_SpaceIterator::isEmpty;
    using MOR_SpaceIterator::MOR_SpaceIterator;
};

class IteratorTest : public ReferenceTest {
protected:
    void SetUp() override {
        ReferenceTest::SetUp();
        ASSERT_TRUE(m_modelSpace.connect());
    }
    /// The handles of the entities that are still to come, sorted; "empty" without a letter.
    static std::wstring handles(OpenIterator& iterator) {
        if (iterator.isEmpty()) return L"empty";
        std::vector<std::wstring> found;
        while (const ads_name* name = iterator()) found.push_back(handleOf(*name));
        std::ranges::sort(found);
        std::wstring all;
        for (const std::wstring& handle : found) all += handle + L" ";
        return all;
    }
    template <typename... Arguments>
    static std::wstring walk(const Arguments&... arguments) {
        OpenIterator iterator{arguments...};
        return handles(iterator);
    }
    CMORCadSpace m_modelSpace;
};

}  // namespace mor::test
