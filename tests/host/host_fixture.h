#pragma once

#include "host/faults.h"
#include "host/host.h"
#include "platform/entity.h"
#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "tests/support/dxf_drawing.h"
#include "tests/support/dxf_records.h"
#include "tests/support/holds.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace mor::test {

/// A test of the drawing database with one current and active document, and a folder of its own.
/// Locks, selection sets and lists that are left over fail it.
class HostTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_folder = testFolder();
        host::faults::reset();
        host::resetCounters();
        static_cast<void>(host::takePrintedText());
    }
    void TearDown() override {
        host::faults::reset();
        close();
        EXPECT_EQ(host::counters().locksHeld, 0u);
        EXPECT_EQ(host::counters().selectionSetsOpen, 0u);
        EXPECT_EQ(host::counters().resbufsOpen, 0u);
        std::filesystem::remove_all(m_folder);
    }

    [[nodiscard]] std::filesystem::path file(const std::string& name = "d.dxf") const {
        return m_folder / name;
    }
    /// The open document becomes the current and active one; the former one is closed.
    AcApDocument* use(AcApDocument* document) {
        close();
        m_document = document;
        host::setCurrentDocument(document);
        host::setActiveDocument(document);
        return document;
    }
    AcApDocument* create(host::Release release = host::Release::R2018,
                         std::string_view lineEnd = "\n") {
        return use(host::createDocument(release, lineEnd));
    }
    /// Opens bytes as a drawing.
    AcApDocument* open(std::string_view bytes) {
        close();
        writeFile(file(), bytes);
        auto opened = host::openDocument(file());
        EXPECT_TRUE(opened) << opened.error().message();
        return opened ? use(opened.value()) : nullptr;
    }
    AcApDocument* open(const DxfDrawing& drawing) { return open(drawing.bytes()); }
    /// An R12 drawing of these entities, layers ("0 LAYER|..." records) and blocks.
    AcApDocument* openEntities(const std::string& entities, const std::string& layers = "",
                               const std::string& blocks = "") {
        return open(DxfDrawing{.blocks = blocks, .entities = entities, .records = layers});
    }
    /// Why bytes are refused as a drawing: "LINE: TEXT", or empty when they are not.
    [[nodiscard]] std::string refusal(std::string_view bytes) const {
        writeFile(file("refused.dxf"), bytes);
        auto opened = host::openDocument(file("refused.dxf"));
        if (opened) host::closeDocument(opened.value());
        return opened ? "" : std::to_string(opened.error().line) + ": " + opened.error().text;
    }
    [[nodiscard]] AcApDocument* document() const { return m_document; }
    /// Saves and answers the bytes of the file.
    [[nodiscard]] std::string savedBytes() const {
        host::SaveOptions options;
        options.output = file("saved.dxf");
        options.backup = false;
        const auto saved = host::saveDocument(m_document, options);
        EXPECT_TRUE(saved) << saved.error().message();
        return readFile(file("saved.dxf"));
    }
    /// The records of that type in the drawing as it is saved: "0 LINE|5 A1|8 0; 0 LINE|...".
    [[nodiscard]] std::string saved(std::string_view type) const {
        std::string all;
        for (const DxfRecord& record : splitDxf(savedBytes()).records)
            if (record.is(type)) all += (all.empty() ? "" : "; ") + record.text();
        return all;
    }
    /// Saves, closes, and opens what was saved.
    AcApDocument* reopen() { return open(savedBytes()); }
    void close() {
        if (m_document != nullptr) host::closeDocument(m_document);
        m_document = nullptr;
    }

    /// The entity of that handle, {0, 0} when there is none.
    [[nodiscard]] EntityName named(std::wstring_view handle) const {
        return host::findHandle(m_document, handle).value_or(EntityName{});
    }
    /// A new entity from a list that `acutBuildList` made.
    static int make(resbuf* list) {
        const ResbufList owned{list};
        return acdbEntMake(owned.get());
    }
    static int makeLine(const wchar_t* layer = L"0") {
        const double from[] = {0.0, 0.0, 0.0};
        const double to[] = {1.0, 2.0, 3.0};
        return make(acutBuildList(RTDXF0, L"LINE", 8, layer, 10, from, 11, to, 0));
    }
    /// "LINE:A1 INSERT:A2 ...": the entities from `first` on as `acdbEntNext` walks them.
    [[nodiscard]] static std::string walk(EntityName first = {}) {
        std::string all;
        ads_name name = {};
        first.copyTo(name);
        bool more = !first.isNone() || acdbEntNext(nullptr, name) == RTNORM;
        for (; more; more = acdbEntNext(name, name) == RTNORM)
            all += (all.empty() ? "" : " ") + titleOf(EntityName{name});
        return all;
    }
    [[nodiscard]] static std::string titleOf(EntityName name) {
        CMOREntity entity;
        if (!entity.Connect(name)) return "none";
        return host::toUtf8(static_cast<const wchar_t*>(entity.Type())) + ":" +
               host::toUtf8(static_cast<const wchar_t*>(entity.Handle()));
    }
    [[nodiscard]] static EntityName lastEntity() {
        ads_name name = {};
        return acdbEntLast(name) == RTNORM ? EntityName{name} : EntityName{};
    }

private:
    std::filesystem::path m_folder;
    AcApDocument* m_document = nullptr;
};

/// An entity object connected to a name.
class Connected : public CMOREntity {
public:
    explicit Connected(EntityName name) { EXPECT_TRUE(Connect(name)); }
};

}  // namespace mor::test
