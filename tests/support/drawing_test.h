#pragma once

#include "frame/module.h"
#include "host/faults.h"
#include "host/host.h"
#include "tests/support/holds.h"

#include <gtest/gtest.h>

#include <string>

namespace mor::test {

/// A test with one new drawing that is current and active, and nothing left over from other tests.
/// What the test leaves open, locked or unreleased fails it.
class DrawingTest : public ::testing::Test {
protected:
    explicit DrawingTest(host::Release release = host::Release::R2018) : m_release(release) {}

    void SetUp() override {
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
        EXPECT_EQ(host::counters().locksHeld, 0u);
        EXPECT_EQ(host::counters().selectionSetsOpen, 0u);
        EXPECT_EQ(host::counters().resbufsOpen, 0u);
        host::setSystemVariable(L"CMDACTIVE", {});
        if (m_document != nullptr) host::closeDocument(m_document);
    }

    /// Current and active at once, as when a user works in it.
    static void makeCurrent(AcApDocument* document) {
        host::setCurrentDocument(document);
        host::setActiveDocument(document);
    }
    [[nodiscard]] AcApDocument* document() const { return m_document; }
    /// Another document takes the test's place; the former one is the caller's to close.
    AcApDocument* replaceDocument(AcApDocument* document) {
        AcApDocument* former = m_document;
        m_document = document;
        makeCurrent(document);
        return former;
    }
    [[nodiscard]] static std::wstring printed() { return host::takePrintedText(); }

private:
    host::Release m_release;
    AcApDocument* m_document = nullptr;
};

}  // namespace mor::test
