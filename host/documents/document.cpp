#include "host/documents/document.h"

#include "host/calls/entity_make.h"
#include "host/documents/open_drawing.h"
#include "host/documents/running_counters.h"
#include "host/faults.h"
#include "host/permanent.h"

#include <algorithm>
#include <array>
#include <utility>

AcApDocument::AcApDocument(std::unique_ptr<mor::host::Drawing> drawingOwned)
    : drawing(std::move(drawingOwned)),
      references(std::make_unique<mor::host::References>(*this)) {}
AcApDocument::~AcApDocument() { mor::host::forgetLocated(); }

namespace mor::host {

namespace {

struct Documents {
    std::vector<std::unique_ptr<AcApDocument>> all;
    AcApDocument* current = nullptr;
    AcApDocument* active = nullptr;
    CMORMDIDocumentData none;  // the data when no document is open
};

Documents& documents() {
    static Permanent<Documents> state;
    return *state;
}

class Manager final : public AcApDocManager {
public:
    [[nodiscard]] AcApDocument* curDocument() const override { return documents().current; }
    [[nodiscard]] AcApDocument* mdiActiveDocument() const override { return documents().active; }
    Acad::ErrorStatus lockDocument(AcApDocument* document, AcAp::DocLockMode /*mode*/,
                                   const wchar_t* /*globalCommand*/,
                                   const wchar_t* /*localCommand*/, bool /*prompt*/) override {
        if (document == nullptr) return Acad::eInvalidInput;
        if (faults::locksRefused() || faults::shouldFail("lockDocument"))
            return Acad::eLockConflict;
        ++document->locks;
        ++runningCounters().locksTaken;
        ++runningCounters().locksHeld;
        return Acad::eOk;
    }
    Acad::ErrorStatus unlockDocument(AcApDocument* document) override {
        if (document == nullptr || document->locks == 0) return Acad::eInvalidInput;
        --document->locks;
        --runningCounters().locksHeld;
        return Acad::eOk;
    }
};

AcApDocument* keep(std::unique_ptr<AcApDocument> document) {
    documents().all.push_back(std::move(document));
    return documents().all.back().get();
}

}  // namespace

AcApDocument* currentDocument() { return documents().current; }
Drawing* currentDrawing() {
    return documents().current == nullptr ? nullptr : documents().current->drawing.get();
}
Drawing& drawingOf(const AcApDocument* document) { return *document->drawing; }

AcApDocument* createDocument(Release release, std::string_view lineEnd) {
    return keep(std::make_unique<AcApDocument>(makeDrawing(release, lineEnd)));
}

Result<AcApDocument*> openDocument(const std::filesystem::path& path, Opening opening) {
    auto source = openFileSource(path);
    if (!source) return source.error();
    const FileState stamp = stateOf(source.value()->descriptor());
    auto drawing = openDrawing(source.value(), path.string());
    if (!drawing) return drawing.error();
    if (opening == Opening::Salvaged && drawing.value()->damage())
        drawing = openDrawing(makeBufferSource(drawing.value()->codec().salvaged()), path.string());
    if (!drawing) return drawing.error();
    auto document = std::make_unique<AcApDocument>(std::move(drawing.value()));
    document->path = path;
    document->stamp = stamp;
    return keep(std::move(document));
}

void closeDocument(AcApDocument* document) {
    Documents& state = documents();
    if (state.current == document) state.current = nullptr;
    if (state.active == document) state.active = nullptr;
    std::erase_if(state.all, [document](const auto& held) { return held.get() == document; });
}

void setCurrentDocument(AcApDocument* document) { documents().current = document; }
void setActiveDocument(AcApDocument* document) { documents().active = document; }
std::size_t documentCount() { return documents().all.size(); }

std::string releaseName(Release release) {
    static constexpr std::array<const char*, 13> names = {
        "R2.5",  "R2.6",  "R9",    "R10",   "R12",   "R13",  "R14",
        "R2000", "R2004", "R2007", "R2010", "R2013", "R2018"};
    return names[static_cast<std::size_t>(release)];
}

std::optional<Release> releaseOfName(std::string_view name) {
    for (int number = 0; number <= static_cast<int>(Release::R2018); ++number) {
        const auto release = static_cast<Release>(number);
        const std::string known = releaseName(release);
        if (std::ranges::equal(known, name, {}, {}, [](char c) { return c == 'r' ? 'R' : c; }))
            return release;
    }
    return std::nullopt;
}

DocumentInfo documentInfo(const AcApDocument* document) {
    const Drawing& drawing = drawingOf(document);
    DocumentInfo info;
    info.path = document->path;
    info.release = drawing.release();
    info.version = drawing.version();
    info.codePage = drawing.codePage();
    info.encoding = drawing.text().name();
    info.form = drawing.form();
    info.deadBytes = drawing.deadBytes();
    info.unwritable = drawing.unwritable();
    info.lineEnd = drawing.lineEnd();
    info.bytes = drawing.source().size();
    info.records = drawing.lastFileRecord();
    info.handleSeed = drawing.seed();
    info.damage = drawing.damage();
    info.settings = drawing.settings();
    return info;
}

}  // namespace mor::host

AcApDocManager* acDocManagerPtr() {
    static mor::host::Permanent<mor::host::Manager> manager;
    return manager.get();
}

CMORMDIDocumentData& CMORMDIDocumentData::GetCurrentDocumentData() {
    mor::host::Documents& state = mor::host::documents();
    return state.current == nullptr ? state.none : state.current->data;
}

CMORMDIDocumentVariable::CMORMDIDocumentVariable() = default;
CMORMDIDocumentVariable::CMORMDIDocumentVariable(const CMORMDIDocumentVariable&) = default;
CMORMDIDocumentVariable& CMORMDIDocumentVariable::operator=(const CMORMDIDocumentVariable&) =
    default;
CMORMDIDocumentVariable::~CMORMDIDocumentVariable() = default;
bool CMORMDIDocumentVariable::Init(const CMORMDIDocumentVariable& /*other*/) { return true; }
bool CMORMDIDocumentVariable::Init() { return true; }
bool CMORMDIDocumentVariable::Clean() { return true; }
bool CMORMDIDocumentVariable::GetVariableAsText(AcDbObjectId /*id*/, std::wstring& text) {
    text.clear();
    return false;
}

namespace mor::host {

/// How many `CMORSwitchMDIReactorOnOff` live at this moment.
static std::size_t reactorSwitches = 0;
bool reactorsOff() { return reactorSwitches > 0; }

}  // namespace mor::host

CMORSwitchMDIReactorOnOff::CMORSwitchMDIReactorOnOff(EMORReactorImportance /*importance*/) {
    ++mor::host::reactorSwitches;
}
CMORSwitchMDIReactorOnOff::~CMORSwitchMDIReactorOnOff() { --mor::host::reactorSwitches; }
