#include "tools/moradmin/store/removing.h"

#include "dwgfs/link_names.h"
#include "dwgfs/names.h"
#include "host/host.h"
#include "platform/entity.h"
#include "tools/moradmin/changes/own_records.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/store/paths.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string_view>
#include <vector>

namespace mor::tool {

namespace {

constexpr int kLayerCode = 8;

/// Follows the links of the records as the removal does.
class Links {
public:
    Links(const AcApDocument* document, const StoreState& state) : m_document(document) {
        for (const StoredDirectory& directory : state.directories)
            m_directories.emplace(directory.name, &directory);
    }

    /// The directories that go with the one of that name; those above it stay.
    [[nodiscard]] std::set<mor::EntityName> below(mor::EntityName top,
                                                  const std::set<mor::EntityName>& above) const {
        std::set<mor::EntityName> gone = {top};
        std::vector<mor::EntityName> open = {top};
        while (!open.empty()) {
            const mor::EntityName next = open.back();
            open.pop_back();
            forEach(next, [&](std::wstring_view, mor::EntityName target) {
                if (!above.contains(target) && gone.insert(target).second) open.push_back(target);
            });
        }
        return gone;
    }

    void forEach(mor::EntityName name,
                 const std::function<void(std::wstring_view, mor::EntityName)>& visit) const {
        const auto known = m_directories.find(name);
        if (known == m_directories.end()) return;
        for (const host::RecordAttribute& attribute : known->second->attributes.items) {
            if (attribute.name == kRootLink || !dirNameOfLink(attribute.name)) continue;
            if (const auto target = host::findHandle(m_document, linkText(attribute)))
                visit(*dirNameOfLink(attribute.name), *target);
        }
    }

    [[nodiscard]] const std::map<mor::EntityName, const StoredDirectory*>& all() const {
        return m_directories;
    }

private:
    const AcApDocument* m_document;
    std::map<mor::EntityName, const StoredDirectory*> m_directories;
};

bool hasLinkTwice(const StoreState& state) {
    return std::ranges::any_of(state.findings, [](const Finding& finding) {
        return finding.code == "link-doubled" || finding.code == "circle";
    });
}

void refuseLinksFromElsewhere(Session& session, const std::wstring& path) {
    session.refuseDamagedStore();
    if (!hasLinkTwice(session.lastState())) return;  // nor has one come since
    const Links links(session.document(), session.state());
    std::set<mor::EntityName> above;
    for (std::wstring upper = path; upper != kRootPath;) {
        upper = parentOf(upper);
        above.insert(session.store().directoryName(upper));
    }
    const mor::EntityName parent = session.store().directoryName(parentOf(path));
    const mor::EntityName top = session.store().directoryName(path);
    if (above.contains(top)) return;  // a link back up goes alone
    const std::set<mor::EntityName> gone = links.below(top, above);
    for (const auto& entry : links.all()) {
        const mor::EntityName name = entry.first;
        const StoredDirectory& directory = *entry.second;
        if (gone.contains(name)) continue;
        links.forEach(name, [&](std::wstring_view link, mor::EntityName target) {
            const bool removed = name == parent && link == nameOf(path);
            if (removed || !gone.contains(target)) return;
            const std::string other =
                utf8(directory.path.empty() ? L"a directory out of reach" : directory.path);
            throw Failure(kDamaged,
                          session.message(utf8(path) + " cannot be removed: the link " +
                                          utf8(link) + " in " + other +
                                          " leads into it too (link-doubled); \"moradmin "
                                          "repair\" mends it"),
                          utf8(path));
        });
    }
}

}  // namespace

void removeFile(Session& session, const std::wstring& path) {
    if (!session.store().del(path.c_str()) || Session::freshStore()->isFile(path.c_str()))
        refuse(session, path, utf8(path) + " cannot be removed");
}

void removeDirectory(Session& session, const std::wstring& path) {
    refuseLinksFromElsewhere(session, path);
    if (!session.store().delDir(path.c_str()) || Session::freshStore()->isDirectory(path.c_str()))
        refuse(session, path, utf8(path) + " cannot be removed");
}

void removeEverything(Session& session, const std::wstring& directory) {
    for (const Store::Entry& entry : session.store().entries(directory)) {
        const std::wstring path = joined(directory, entry.name);
        if (entry.directory)
            removeDirectory(session, path);
        else
            removeFile(session, path);
    }
}

void removeStore(Session& session, bool extended) {
    Store& store = session.store();
    if (extended)
        store.removeFileSystemEx();
    else
        store.removeFileSystem();
    const auto anchor = host::firstEntityOfBlock(session.document(), kFileSystemBlock);
    CMOREntity entity;
    if (!anchor || !entity.Connect(*anchor)) return;
    if (entity.DeleteAttribute(kRootLink)) entity.Flush();
}

void removeTraces(Session& session) {
    AcApDocument* document = session.document();
    session.forget();
    bool layerUsed = false;
    OwnRecords own(document);
    host::forEachRecord(document, [&](const host::RecordInfo& record) {
        if (record.erased || own.isOwn(record) || layerUsed) return;
        const auto layer = host::recordGroup(document, record.name, kLayerCode);
        layerUsed = layer && isOwnLayer(wide(*layer));
    });
    host::purgeSymbol(document, "BLOCK", kFileSystemBlock);
    if (!host::findSymbol(document, "LAYER", kControlLayer)) return;
    if (layerUsed)
        printNote(session.message("the layer " + utf8(kControlLayer) +
                                  " stays: something else lies on it"));
    else
        host::purgeSymbol(document, "LAYER", kControlLayer);
}

}  // namespace mor::tool
