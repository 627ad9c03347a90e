#include "tools/moradmin/session.h"

#include "dwgfs/path_rules.h"
#include "frame/message_system.h"
#include "platform/runtime.h"
#include "space/global_view.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <utility>

namespace mor::tool {

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

bool Way::enter(Store& store, const std::wstring& path) {
    if (path.size() >= kMaxPathLength) return false;
    const mor::EntityName name = store.directoryName(path);
    if (name.isNone() || std::ranges::find(m_directories, name) != m_directories.end())
        return false;
    m_directories.push_back(name);
    return true;
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

namespace {

/// The insert by which a reference is looked through: its own handle, or the first one of the
/// block.
std::string findInsert(const Session& session, const std::string& word) {
    const std::wstring name = wide(word);
    std::string handle;
    host::forEachInsert(session.document(), name, [&](const host::RecordInfo& info) {
        if (handle.empty() && info.handle != 0) handle = host::handleText(info.handle);
    });
    if (!handle.empty()) return handle;
    if (host::hasBlock(session.document(), name))
        throw Failure(kRefused, session.message(word + " is attached but nowhere inserted"), word);
    const auto record = host::findHandle(session.document(), name);
    if (!record || host::recordInfo(session.document(), *record)->type != "INSERT")
        throw Failure(
            kRefused,
            session.message("there is no reference \"" + word + "\" and no insert of that handle"),
            word);
    return word;
}

const host::ReferenceInfo* findReference(const std::vector<host::ReferenceInfo>& all,
                                         std::wstring_view name) {
    const auto found = std::ranges::find_if(
        all, [name](const host::ReferenceInfo& info) { return equalNoCase(info.name, name); });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace

void Session::enter(const std::string& reference) {
    const std::wstring handle = wide(findInsert(*this, reference));
    const auto record = host::findHandle(m_document, handle);
    const std::wstring block = wide(host::recordGroup(m_document, *record, 2).value_or(""));
    const std::vector<host::ReferenceInfo> all = host::references(m_document);
    const host::ReferenceInfo* info = findReference(all, block);
    if (info == nullptr)
        throw Failure(kRefused, message(reference + " is no external reference"), reference);
    if (info->status != host::ReferenceStatus::Loaded) {
        std::string why;
        for (const host::ReferenceTry& attempt : info->tries)
            why += "; " + attempt.path.string() + ": " + attempt.why;
        throw Failure(kRefused, message("the reference " + utf8(block) + " is not loaded" + why),
                      reference);
    }
    if (!mor_xref::SwitchGlobalView(handle.c_str()))
        throw Failure(kRefused,
                      message("the reference " + utf8(block) + " has no entities to look through"),
                      reference);
    m_inside = info->found.string();
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
        mappings.emplace_back(word.substr(0, equals), word.substr(equals + 1));
    }
    host::setReferenceFolders(std::move(folders));
    host::setReferenceMappings(std::move(mappings));
}

void Session::activate() const {
    host::setCurrentDocument(m_document);
    host::setActiveDocument(m_document);
}

void Session::forget() {
    m_state.reset();
    m_store.reset();
}

Session::~Session() {
    m_store.reset();
    activate();
    MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
        MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
    host::closeDocument(m_document);
}

const StoreState& Session::state() {
    if (m_state) return *m_state;
    if (m_inside.empty()) {
        m_state = walkStore(m_document);
        return *m_state;
    }
    // The records of the reference are those of its own file.
    const auto opened = host::openDocument(m_inside);
    if (!opened) throw Failure(opened.error());
    m_state = walkStore(opened.value());
    host::closeDocument(opened.value());
    return *m_state;
}

const StoreState& Session::safeState() {
    const StoreState& found = state();
    if (const Finding* finding = found.firstStopping())
        throw Failure(
            kDamaged,
            message("the store is damaged, nothing was done: " + finding->message + " (" +
                    finding->code +
                    "); \"moradmin check\" lists all findings, \"moradmin repair\" mends them"),
            utf8(finding->path));
    return found;
}

bool Session::hasDirectories() { return safeState().kind == StoreState::Kind::Sound; }

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
    how.backup = !options.noBackup;
    how.dryRun = options.dryRun;
    const auto saved = host::saveDocument(m_document, how);
    if (!saved) throw Failure(saved.error());
    if (!options.dryRun) return saved.value().backup.string();
    using Kind = host::SavedEdit::Kind;
    for (const host::SavedEdit& edit : saved.value().edits) {
        const char* what = edit.kind == Kind::Made     ? "made"
                           : edit.kind == Kind::Erased ? "erased"
                                                       : "changed";
        std::cout << what << "\t" << edit.type << "\t" << (edit.handle.empty() ? "-" : edit.handle)
                  << "\t" << edit.what << "\n";
    }
    return {};
}

}  // namespace mor::tool
