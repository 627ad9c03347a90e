#pragma once

#include "platform/entity.h"
#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "space/space.h"
#include "tests/space/space_fixture.h"
#include "tests/support/dxf_drawing.h"
#include "xref/space_iterator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace mor::test {

/// The referenced drawing: lines and a door on three layers, an insert with an attribute, a
/// polyline.
inline DxfDrawing planDrawing() {
    const std::string attribute = "0 ATTRIB|5 E1|8 WALLS|10 0.0|20 0.0|40 1.0|1 oak|2 WOOD|70 0|";
    const std::string vertex = "8 WALLS|10 1.0|20 2.0|30 0.0|";
    const std::string attributeDefinition =
        "0 ATTDEF|5 B3|8 0|10 0.0|20 0.0|40 1.0|1 |3 wood|2 WOOD|70 0|";
    return {.layers = {"0", "WALLS", "Doors"},
            .blocks = blockDefinition("DOOR", lineEntity("B1", "0")) +
                      blockDefinition("TITLE", lineEntity("B2", "0") + attributeDefinition, 2) +
                      blockDefinition("EMPTY", "") + referenceDefinition("CORE", "core.dxf") +
                      referenceDefinition("OVER", "core.dxf", 12),
            .entities = lineEntity("1A2F", "WALLS") + lineEntity("C2", "0") +
                        insertEntity("C3", "Doors", "TITLE", "66 1|10 0.0|20 0.0|30 0.0|") +
                        attribute + "0 SEQEND|5 E2|8 WALLS|" + "0 POLYLINE|5 C4|8 walls|66 1|" +
                        "0 VERTEX|5 E3|" + vertex + "0 SEQEND|5 E4|8 WALLS|" +
                        lineEntity("A1", "Doors")};
}

/// The drawing that refers to it: line A1; PLAN inserted as 10 (turned by 90 degrees, doubled,
/// moved) and 11; insert 12 of an ordinary block; a reference whose file is missing, inserted
/// as 13.
inline DxfDrawing siteDrawing() {
    return {.layers = {"0", "WALLS"},
            .blocks = blockDefinition("GATE", lineEntity("D1", "0")) +
                      referenceDefinition("PLAN", "plan.dxf") +
                      referenceDefinition("LOST", "nosuch.dxf"),
            .entities = lineEntity("A1", "WALLS") +
                        insertEntity("10", "0", "PLAN",
                                     "10 100.0|20 200.0|30 0.0|41 2.0|42 2.0|43 2.0|50 90.0|") +
                        insertEntity("11", "0", "PLAN") + insertEntity("12", "WALLS", "GATE") +
                        insertEntity("13", "0", "LOST") + lineEntity("A2", "0|67 1")};
}

class ReferenceTest : public SpaceTest {
protected:
    void SetUp() override {
        SpaceTest::SetUp();
        planDrawing().save("plan.dxf");

        DxfDrawing{.layers = {"0"}, .entities = lineEntity("F1", "0")}.save("core.dxf");
        open(siteDrawing().save("site.dxf"));
    }

    /// The handle of the entity of that name; "none" when there is no such entity.
    static std::wstring handleOf(const ads_name name) {
        CMOREntity entity;
        return entity.Connect(name) ? entity.Handle().GetString() : L"none";
    }
    /// The space's record of that name; its group 2, "none" when there is none.
    static std::wstring nameIn(const ResbufList& record) {
        const resbuf* group = findGroup(record, 2);
        return group == nullptr ? L"none" : group->resval.rstring;
    }
    /// The name of an entity of the host drawing, copied into `name`.
    static void find(const wchar_t* handle, ads_name name) {
        ASSERT_EQ(acdbHandEnt(handle, name), RTNORM) << host::toUtf8(handle);
    }
};

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
