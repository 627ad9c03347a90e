#pragma once

#include "frame/message_system.h"
#include "platform/document_data.h"
#include "space/letter_space.h"
#include "space/space_table.h"
#include "space/view.h"
#include "tests/support/drawing_test.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace mor::test {

/// Spaces and views of one new drawing, with a message registry that holds nothing of other tests.
class SpaceTest : public DrawingTest {
protected:
    void SetUp() override {
        MOR_AdsMsgSystemClass::deleteTheGlobalObject();
        DrawingTest::SetUp();
    }
    void TearDown() override {
        DrawingTest::TearDown();
        MOR_AdsMsgSystemClass::deleteTheGlobalObject();
    }

    /// Opens a drawing in place of the current one.
    void open(const std::filesystem::path& path) {
        releaseDocumentObjects();
        auto opened = host::openDocument(path);
        ASSERT_TRUE(opened) << opened.error().message();
        host::closeDocument(replaceDocument(opened.value()));
    }
    static void send(int message) {
        MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
            static_cast<MOR_AdsMsgSystemClass::Message>(message));
    }
    /// What happens when the current document is closed.
    static void releaseDocumentObjects() { send(MOR_AdsMsgSystemClass::ReleaseDocumentObjects); }
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

/// Another document, current from here to the end of the scope.
class OtherDocument {
public:
    OtherDocument() : m_former(acDocManagerPtr()->curDocument()) { makeCurrent(m_other); }
    ~OtherDocument() {
        makeCurrent(m_former);
        host::closeDocument(m_other);
    }
    OtherDocument(const OtherDocument&) = delete;
    OtherDocument& operator=(const OtherDocument&) = delete;
    void leave() const { makeCurrent(m_former); }

private:
    static void makeCurrent(AcApDocument* document) {
        host::setCurrentDocument(document);
        host::setActiveDocument(document);
    }
    AcApDocument* m_former;
    AcApDocument* m_other = host::createDocument(host::Release::R12);
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
