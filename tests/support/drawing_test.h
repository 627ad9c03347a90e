#pragma once

#include "frame/message_system.h"
#include "frame/module.h"
#include "host/faults.h"
#include "host/host.h"
#include "platform/documents.h"
#include "tests/support/holds.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace mor::test {

/// A test with one new drawing that is current and active, and nothing left over from other tests.
/// What the test leaves open, locked or unreleased fails it.
class DrawingTest : public ::testing::Test {
protected:
    explicit DrawingTest(host::Release release = host::Release::R2018) : m_release(release) {}

    void SetUp() override {
        MOR_AdsMsgSystemClass::deleteTheGlobalObject();
        host::faults::reset();
        host::resetCounters();
        ASSERT_EQ(attachModule(), 1);
        m_document = host::createDocument(m_release);
        makeCurrent(m_document);
        static_cast<void>(host::takePrintedText());  // text of other tests
    }
    void TearDown() override {
        host::faults::reset();
        EXPECT_EQ(detachModule(), 1);
        expectNothingOpen();
        host::setSystemVariable(L"CMDACTIVE", {});
        if (m_document != nullptr) host::closeDocument(m_document);
        MOR_AdsMsgSystemClass::deleteTheGlobalObject();
    }
    static void expectNothingOpen() {
        EXPECT_EQ(host::counters().locksHeld, 0u);
        EXPECT_EQ(host::counters().selectionSetsOpen, 0u);
        EXPECT_EQ(host::counters().resbufsOpen, 0u);
    }

    /// Current and active at once, as when a user works in it.
    static void makeCurrent(AcApDocument* document) {
        host::setCurrentDocument(document);
        host::setActiveDocument(document);
    }
    [[nodiscard]] AcApDocument* document() const { return m_document; }
    /// Another document takes the test's place; the former one is closed as a program does it.
    void replaceDocument(AcApDocument* document) {
        send(MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
        AcApDocument* former = m_document;
        m_document = document;
        makeCurrent(document);
        host::closeDocument(former);
    }
    /// Opens a drawing in place of the current one.
    void open(const std::filesystem::path& path) {
        auto opened = host::openDocument(path);
        ASSERT_TRUE(opened) << opened.error().message();
        replaceDocument(opened.value());
    }
    static void send(int message) {
        MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
            static_cast<MOR_AdsMsgSystemClass::Message>(message));
    }
    /// What happens when the current document is closed.
    static void releaseDocumentObjects() { send(MOR_AdsMsgSystemClass::ReleaseDocumentObjects); }
    [[nodiscard]] static std::wstring printed() { return host::takePrintedText(); }

private:
    host::Release m_release;
    AcApDocument* m_document = nullptr;
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

}  // namespace mor::test
