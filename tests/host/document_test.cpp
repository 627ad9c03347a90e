#include "platform/document_data.h"
#include "platform/documents.h"
#include "tests/host/host_fixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace mor::test {
namespace {

class Documents : public HostTest {};

constexpr const char* kLines = "0 LINE|5 A1|8 0|0 LINE|5 A2|8 0|";

TEST_F(Documents, CurrentAndActiveAreSetApart) {
    AcApDocManager* manager = acDocManagerPtr();
    EXPECT_EQ(manager->curDocument(), nullptr);
    EXPECT_EQ(manager->mdiActiveDocument(), nullptr);
    AcApDocument* first = create();
    AcApDocument* second = host::createDocument(host::Release::R12);
    host::setActiveDocument(second);
    EXPECT_EQ(manager->curDocument(), first);
    EXPECT_EQ(manager->mdiActiveDocument(), second);
    EXPECT_EQ(host::documentCount(), 2u);
    host::closeDocument(second);
    EXPECT_EQ(manager->mdiActiveDocument(), nullptr);
    EXPECT_EQ(manager->curDocument(), first);
}

TEST_F(Documents, CountTheirLocks) {
    AcApDocManager* manager = acDocManagerPtr();
    AcApDocument* document = create();
    const auto lock = [&](AcApDocument* one) {
        return manager->lockDocument(one, AcAp::kWrite, nullptr, nullptr, true);
    };
    EXPECT_NE(lock(nullptr), Acad::eOk);
    EXPECT_NE(manager->unlockDocument(document), Acad::eOk);
    EXPECT_EQ(lock(document), Acad::eOk);
    EXPECT_EQ(lock(document), Acad::eOk);
    EXPECT_EQ(host::counters().locksHeld, 2u);
    EXPECT_EQ(manager->unlockDocument(document), Acad::eOk);
    EXPECT_EQ(manager->unlockDocument(document), Acad::eOk);
    EXPECT_NE(manager->unlockDocument(document), Acad::eOk);
    EXPECT_EQ(host::counters().locksTaken, 2u);
    host::faults::refuseLocks(true);
    EXPECT_NE(lock(document), Acad::eOk);
    EXPECT_EQ(host::counters().locksHeld, 0u);
}

TEST_F(Documents, HoldTheirOwnDataAndEntities) {
    AcApDocument* first = create();
    ASSERT_EQ(makeLine(), RTNORM);
    const EntityName name = lastEntity();
    AcApDocument* second = host::createDocument(host::Release::R2018);
    CMORMDIDocumentData* data = &CMORMDIDocumentData::GetCurrentDocumentData();
    host::setCurrentDocument(second);
    EXPECT_NE(&CMORMDIDocumentData::GetCurrentDocumentData(), data);
    EXPECT_TRUE(lastEntity().isNone());
    CMOREntity entity;
    EXPECT_FALSE(entity.Connect(name));  // of a drawing that is not current
    EXPECT_EQ(acdbEntDel(name), RTERROR);
    host::setCurrentDocument(first);
    EXPECT_EQ(&CMORMDIDocumentData::GetCurrentDocumentData(), data);
    EXPECT_TRUE(entity.Connect(name));
    host::setCurrentDocument(second);
    EXPECT_FALSE(entity.SetLayer(L"0") || entity.Flush());
    host::closeDocument(second);
    host::setCurrentDocument(first);
    EXPECT_EQ(walk(), "LINE:20");
}

TEST_F(Documents, AnswerNothingWhenNoneIsCurrent) {
    ads_name name = {};
    EXPECT_EQ(makeLine(), RTERROR);
    EXPECT_EQ(acdbEntLast(name), RTERROR);
    EXPECT_EQ(acdbEntNext(nullptr, name), RTERROR);
    EXPECT_EQ(acdbHandEnt(L"A1", name), RTERROR);
    EXPECT_EQ(&CMORMDIDocumentData::GetCurrentDocumentData(),
              &CMORMDIDocumentData::GetCurrentDocumentData());
    EXPECT_TRUE(CMORMDIDocumentData::GetCurrentDocumentData().GetSpaceTable2().empty());
}

TEST_F(Documents, KeepWorkingWhenTheirFileIsReplacedOrRemoved) {
    openEntities(kLines);
    const std::string bytes = readFile(file());
    std::filesystem::remove(file());
    Connected entity{named(L"A2")};
    EXPECT_TRUE(entity.SetLayer(L"WALLS") && entity.Flush());
    EXPECT_EQ(walk(), "LINE:A1 LINE:A2");
    const auto refused = host::saveDocument(document());
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().text, "is gone since it was loaded");
    EXPECT_NE(savedBytes(), bytes);
}

TEST_F(Documents, TakeNoRecordThatCannotBeReadForAnEmptyOne) {
    openEntities(kLines, "0 LAYER|2 WALLS|70 0|");
    const std::string bytes = readFile(file());
    bool struck = true;
    for (std::size_t reading = 1; struck; ++reading) {
        SCOPED_TRACE("reading " + std::to_string(reading));
        close();
        host::faults::reset();
        host::faults::failRead(reading);
        const auto opened = host::openDocument(file());
        bool worked = static_cast<bool>(opened);
        bool saved = false;
        try {
            if (opened) use(opened.value());
            worked = worked && makeLine(L"WALLS") == RTNORM && walk() == "LINE:A1 LINE:A2 LINE:A3";
        } catch (const host::ReadFailure& failure) {
            EXPECT_TRUE(holds(failure.error().text, "reading failed"));
            EXPECT_TRUE(host::takeReadFailure());
            worked = false;
        }
        if (opened) saved = static_cast<bool>(host::saveDocument(document()));
        struck = host::faults::struck();
        EXPECT_NE(saved, struck);
        EXPECT_TRUE(worked || struck);
        EXPECT_EQ(readFile(file()) == bytes, struck);
    }
}

TEST_F(Documents, WhoseFileIsCutShortAreNotSaved) {
    openEntities(kLines);
    std::filesystem::resize_file(file(), std::filesystem::file_size(file()) / 2);
    EXPECT_EQ(makeLine(), RTNORM);
    EXPECT_TRUE(host::recordGroups(document(), named(L"A2")).empty());
    EXPECT_TRUE(host::takeReadFailure());
    EXPECT_FALSE(host::saveDocument(document(), {.output = file("other.dxf")}));
    EXPECT_FALSE(std::filesystem::exists(file("other.dxf")));
}

TEST_F(Documents, SaveAgainAndAgainRelativeToTheFileAsLoaded) {
    openEntities(kLines);
    for (const wchar_t* layer : {L"ONE", L"TWO", L"THREE"}) {
        Connected entity{named(L"A1")};
        EXPECT_TRUE(entity.SetLayer(layer) && entity.Flush());
        const auto saved = host::saveDocument(document(), {.output = {}, .backup = false});
        ASSERT_TRUE(saved) << saved.error().message();
        EXPECT_TRUE(saved.value().written);
        EXPECT_TRUE(holds(readFile(file()), "A1\n8\n" + host::toUtf8(layer)));
    }
    EXPECT_EQ(reopen() == nullptr ? "" : walk(), "LINE:A1 LINE:A2");
}

TEST_F(Documents, WithoutANameAreSavedOnlyUnderOne) {
    create(host::Release::R12);
    ASSERT_EQ(makeLine(), RTNORM);
    const auto refused = host::saveDocument(document());
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().kind, host::ErrorKind::Invalid);
    EXPECT_TRUE(host::saveDocument(document(), {.output = file("named.dxf")}));
    EXPECT_EQ(host::documentInfo(document()).path.filename(), "named.dxf");
    ASSERT_EQ(makeLine(), RTNORM);
    EXPECT_TRUE(host::saveDocument(document()));
    open(readFile(file("named.dxf")));
    EXPECT_EQ(walk(), "LINE:1 LINE:2");
}

TEST_F(Documents, AreNotSavedOverWhatCameToTheirTargetMeanwhile) {
    AcApDocument* document = create();
    const std::filesystem::path target = file("target.dxf");
    const auto save = [&](const host::FileState& before) {
        return host::saveDocument(document, {.output = target, .before = before});
    };
    for (const char* former : {"", "older"}) {
        std::filesystem::remove(target);
        if (*former != '\0') writeFile(target, former);
        const host::FileState before = host::fileState(target);
        writeFile(target, "of another program");
        const auto saved = save(before);
        ASSERT_FALSE(saved) << former;
        EXPECT_EQ(saved.error().kind, host::ErrorKind::Unwritable);
        EXPECT_EQ(readFile(target), "of another program");
    }
    EXPECT_TRUE(save(host::fileState(target)));
}

}  // namespace
}  // namespace mor::test
