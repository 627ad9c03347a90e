#include "tools/moradmin/session.h"

#include "dwgfs/names.h"
#include "frame/message_system.h"
#include "platform/runtime.h"
#include "space/global_view.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <utility>

namespace mor::tool {

namespace {

/// What tells an edited record apart: the path of a directory, else what the host says.
std::string placeOf(const AcApDocument* document, const host::SavedEdit& edit) {
    for (const host::RecordAttribute& item : host::recordAttributes(document, edit.name).items)
        if (item.name == kInfoAttribute) return utf8(host::stringOf(item.value));
    return edit.what;
}

}  // namespace

std::vector<Store::Entry> Store::entries(const std::wstring& path) {
    std::wstring own = path;  // resolving needs a path of its own to cut and join
    CMORStringList all;
    CMORStringList directories;
    std::vector<Entry> result;
    if (!getAll(own.c_str(), all, All) || !getAll(own.c_str(), directories, Directories))
        return result;
    // Both lists are in stored order, so the next directory is the next name that equals it.
    std::size_t next = 0;
    for (std::size_t i = 0; i < all.Entries(); ++i) {
        const std::wstring name = all.Nth(i);
        const bool directory = next < directories.Entries() && name == directories.Nth(next);
        if (directory) ++next;
        result.push_back({name, directory});
    }
    return result;
}

bool Store::makeDirectory(const std::wstring& path) {
    std::wstring own = path;
    CMOREntity directory;
    return getDir(own.c_str(), true, directory);
}

bool Store::connectAnchor(CMOREntity& anchor) {
    if (getBlockEntity(anchor) && anchor.Type().CompareNoCase(L"ATTDEF") == 0) return true;
    anchor.Disconnect();
    return makeBlock() && getBlockEntity(anchor);
}

bool Store::makeLinked(CMOREntity& parent, const std::wstring& name, const std::wstring& path,
                       CMOREntity& directory) {
    return makeDir(parent, name.c_str(), path.c_str(), directory);
}

mor::EntityName Store::directoryName(const std::wstring& path) {
    std::wstring own = path;
    CMOREntity directory;
    ads_name name = {};
    if (getDir(own.c_str(), false, directory)) directory.GetEName(name);
    return mor::EntityName(name);
}

Session::Session(const std::string& file) : m_file(file) {
    auto opened = host::openDocument(file);
    if (!opened) throw Failure(opened.error());
    m_document = opened.value();
    activate();
}

Session::Session(const Options& options) : Session(options.drawing) {
    if (!options.inside.empty()) enter(options.inside);
}

void setReferencePlaces(const Options& options) {
    std::vector<std::filesystem::path> folders(options.referenceFolders.begin(),
                                               options.referenceFolders.end());
    std::vector<std::pair<std::string, std::string>> mappings;
    for (const std::string& word : options.referenceMappings) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos || equals == 0)
            throw Failure(kUsage,
                          "--map wants FROM=TO, such as C:\\proj=/srv/proj, not \"" + word + "\"");
        // Like other words of the command line they are seen from the folder that it runs in.
        const std::string to = word.substr(equals + 1);
        mappings.emplace_back(word.substr(0, equals),
                              to.empty() ? to : std::filesystem::absolute(to).string());
    }
    // An empty word must not lift the fence: a variable of a script may not be set.
    std::error_code code;
    if (options.referenceRoot && !std::filesystem::is_directory(*options.referenceRoot, code))
        throw Failure(kUsage, "--xref-root wants a folder that is there, not \"" +
                                  *options.referenceRoot + "\"");
    host::setReferenceRoot(options.referenceRoot.value_or(""));
    host::setReferenceFolders(std::move(folders));
    host::setReferenceMappings(std::move(mappings));
}

void Session::activate() const {
    host::setCurrentDocument(m_document);
    host::setActiveDocument(m_document);
}

void Session::forget() {
    m_state.reset();
    m_made = false;
    m_store.reset();
}

Session::~Session() {
    m_store.reset();
    activate();
    MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
        MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
    host::closeDocument(m_document);
}

void Session::learn(const AcApDocument* document) {
    m_state = walkStore(document);
    m_info = host::documentInfo(document);
}

const StoreState& Session::state() {
    if (m_state) return *m_state;
    if (m_inside.empty()) {
        learn(m_document);
        return *m_state;
    }
    // The records of the reference are those of its own file.
    const auto opened = host::openDocument(m_inside);
    if (!opened) throw Failure(opened.error());
    learn(opened.value());
    host::closeDocument(opened.value());
    return *m_state;
}

StoreState Session::takeState() {
    static_cast<void>(state());
    StoreState taken = std::move(*m_state);
    forget();
    return taken;
}

const host::DocumentInfo& Session::info() {
    static_cast<void>(state());  // learns it too
    return *m_info;
}

const StoreState& Session::safeState() {
    const StoreState& found = state();
    if (const Finding* finding = found.firstStopping())
        throw Failure(
            kDamaged,
            (m_inside.empty() ? m_file : m_inside) + ": the store is damaged, nothing was done: " +
                finding->message + " (" + finding->code +
                "); \"moradmin check\" lists all findings, \"moradmin repair\" mends them",
            utf8(finding->path));
    return found;
}

bool Session::hasDirectories() { return safeState().kind == StoreState::Kind::Sound || m_made; }

std::unique_ptr<Store> Session::freshStore() {
    return std::make_unique<Store>(*CMORCadView::getTheGlobalObject());
}

Store& Session::store() {
    if (!m_store) m_store = freshStore();
    return *m_store;
}

std::string Session::save(const Options& options) {
    host::SaveOptions how;
    how.output = options.output;
    how.before = options.outputBefore;
    how.backup = !options.noBackup;
    how.dryRun = options.dryRun;
    refuseLostReadings();
    const auto saved = host::saveDocument(m_document, how);
    if (!saved) throw Failure(saved.error());
    if (!saved.value().warning.empty()) printNote(message(saved.value().warning));
    if (!options.dryRun) return saved.value().backup.string();
    using Kind = host::SavedEdit::Kind;
    for (const host::SavedEdit& edit : saved.value().edits) {
        const char* what = edit.kind == Kind::Made     ? "made"
                           : edit.kind == Kind::Erased ? "erased"
                                                       : "changed";
        std::cout << what << "\t" << oneLine(edit.type) << "\t"
                  << (edit.handle.empty() ? "-" : edit.handle) << "\t"
                  << oneLine(placeOf(m_document, edit)) << "\n";
    }
    return {};
}

}  // namespace mor::tool
