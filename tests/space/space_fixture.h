#pragma once

#include "frame/message_system.h"
#include "platform/document_data.h"
#include "space/letter_space.h"
#include "space/space_table.h"
#include "space/view.h"
#include "tests/support/drawing_test.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace mor::test {

/// Spaces and views of one new drawing, with a message registry that holds nothing of other tests.
class SpaceTest : public DrawingTest {
protected:
    /// How often the space tables' function is registered.
    static int registrations() {
        MOR_AdsMsgSystemClass* registry = MOR_AdsMsgSystemClass::getTheGlobalObject();
        registry->registerFct(spaceTableCallBack);
        const int left = registry->unregisterFct(spaceTableCallBack);
        return left;
    }
    /// The number of letters in the current document's table.
    static std::size_t letters() {
        return CMORMDIDocumentData::GetCurrentDocumentData().GetSpaceTable2().size();
    }
};

/// A letter for a space that exists only in the test, found under its name.
class NamedLetter : public CMORCadLetterSpace {
public:
    explicit NamedLetter(std::wstring letterName, bool* destroyed = nullptr)
        : valid(true), name(std::move(letterName)), m_destroyed(destroyed) {}
    ~NamedLetter() override {
        if (m_destroyed != nullptr) *m_destroyed = true;
    }
    bool hasName(const wchar_t* wanted) override { return name == wanted; }
    bool isValid() override { return valid; }
    bool isConnected() override { return true; }
    const wchar_t* getName() override { return name.c_str(); }
    static constexpr const wchar_t* kThrowsANumber = L"a number";
    resbuf* searchBlock(const wchar_t* block) override {
        if (std::wstring_view{block} == kThrowsANumber) throw 1;
        throw CInvalidArgException{};
    }

    bool valid;
    std::wstring name;

private:
    bool* m_destroyed;
};

}  // namespace mor::test
