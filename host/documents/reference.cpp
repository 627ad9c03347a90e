#include "host/documents/reference.h"

#include "host/documents/document.h"
#include "host/documents/open_drawing.h"
#include "host/documents/reference_source.h"
#include "host/text/group_codes.h"
#include "platform/runtime.h"

#include <algorithm>
#include <utility>

namespace mor::host {

namespace {

namespace fs = std::filesystem;

/// What a path takes for each of its parts, which may be as short as a letter and a slash.
constexpr std::size_t kBytesPerPart = 64;
/// Names of blocks have at most so many characters.
constexpr std::size_t kLongestSymbol = 255;

std::int64_t flagsOf(Drawing& drawing, ContainerNumber block) {
    const RecordNumber head = drawing.container(block).head;
    return head == 0 ? 0 : drawing.integerOf(head, kFlagsCode).value_or(0);
}

}  // namespace

/// Whether the block belongs to a reference of the drawing: the record that a drawing keeps of its
/// reference's own reference looks like one of its own.
static bool isDependentBlock(Drawing& drawing, ContainerNumber block) {
    const std::wstring name = drawing.containerName(block);
    for (std::size_t bar = name.find(L'|'); bar <= kLongestSymbol; bar = name.find(L'|', bar + 1)) {
        const ContainerNumber reference = drawing.names().findBlock(name.substr(0, bar));
        if (reference != kNoContainer && isReferenceBlock(drawing, reference)) return true;
    }
    return false;
}

bool isReferenceBlock(Drawing& drawing, ContainerNumber block) {
    // Overlays alone carry 8 where some writers leave 4 out.
    return (flagsOf(drawing, block) & kAnyReferenceBlock) != 0 && !isDependentBlock(drawing, block);
}

bool isKeptReferenceBlock(Drawing& drawing, ContainerNumber block) {
    return (flagsOf(drawing, block) & kAnyReferenceBlock) != 0 && isDependentBlock(drawing, block);
}

bool isOverlayBlock(Drawing& drawing, ContainerNumber block) {
    return (flagsOf(drawing, block) & kOverlayBlock) != 0;
}

Drawing& References::drawingOf(const Mount* parent) const {
    return parent == nullptr ? *m_document.drawing : *parent->drawing;
}

fs::path References::fileOf(const Mount* parent) const {
    return parent == nullptr ? m_document.path : parent->path;
}

Mount* References::mount(Mount* parent, ContainerNumber block) {
    Drawing& owner = drawingOf(parent);
    if (!isReferenceBlock(owner, block)) return nullptr;
    if (parent != nullptr && isOverlayBlock(owner, block)) return nullptr;
    auto& slot = (parent == nullptr ? m_mounts : parent->children)[block];
    if (slot) return slot.get();
    slot = std::make_unique<Mount>();
    slot->number = nextDrawingNumber();
    slot->name = owner.containerName(block);
    if (parent != nullptr) slot->name = parent->name + L"|" + slot->name;
    slot->parent = parent;
    slot->block = block;
    m_byNumber.emplace(slot->number, slot.get());
    load(*slot);
    return slot.get();
}

bool References::closesCircle(const Mount& mount, const fs::path& file) const {
    if (!m_document.path.empty() && realPath(m_document.path) == file) return true;
    for (const Mount* above = mount.parent; above != nullptr; above = above->parent)
        if (above->real == file) return true;
    return false;
}

Result<std::shared_ptr<Drawing>> References::open(const fs::path& file, const fs::path& real) {
    if (const auto known = m_drawings.find(real); known != m_drawings.end()) return known->second;
    auto source = openReferenceSource(file);
    if (!source) return source.error();
    auto drawing = openDrawing(source.value(), file.string());
    if (!drawing) return drawing.error();
    if (const auto& damage = drawing.value()->damage())
        return Error{ErrorKind::Damaged, file.string(), damage->line, damage->text};
    return m_drawings[real] = std::move(drawing.value());
}

bool References::take(Mount& mount, const fs::path& file) {
    if (mount.path.empty()) mount.path = file;
    mount.status = ReferenceStatus::Unresolved;
    const fs::path real = realPath(file);
    if (closesCircle(mount, real)) {
        mount.path = file;
        mount.tries.push_back({file, "it refers back to a drawing that refers to it"});
        return true;
    }
    const auto drawing = open(file, real);
    if (!drawing) {
        mount.tries.push_back({file, drawing.error().message()});
        // A file of another form may have a twin that is read. A damaged one is the one that is
        // meant: another of its name need not be.
        return drawing.error().kind != ErrorKind::Unreadable;
    }
    mount.path = file;
    mount.real = real;
    mount.drawing = drawing.value();
    mount.status = ReferenceStatus::Loaded;
    return true;
}

void References::load(Mount& mount) {
    if (m_byNumber.size() > kMost) {
        mount.tries.push_back({"", "the drawing has more than " + std::to_string(kMost) +
                                       " references, nested ones included"});
        return;
    }
    if (mount.name.size() > kLongestName) {
        mount.tries.push_back({"", "its name, nested ones included, has more than " +
                                       std::to_string(kLongestName) + " characters"});
        return;
    }
    Drawing& owner = drawingOf(mount.parent);
    const std::wstring saved = owner.textOf(owner.container(mount.block).head, 1).value_or(L"");
    mount.status = ReferenceStatus::NotFound;
    searchReference(saved, fileOf(mount.parent), m_folders, mount.tries,
                    [&](const fs::path& file) { return take(mount, file); });
    for (const ReferenceTry& attempt : mount.tries)
        m_noted += kBytesPerPart * (attempt.path.native().size() / 2 + 1);
    if (m_noted > kMostNoted && mount.tries.size() > 1)
        mount.tries.erase(mount.tries.begin(), mount.tries.end() - 1);
}

const Mount* References::find(std::int64_t number) const {
    const auto found = m_byNumber.find(number);
    return found == m_byNumber.end() ? nullptr : found->second;
}

References::Target References::resolve(std::wstring_view qualified) {
    Target target{nullptr, std::wstring(qualified)};
    while (true) {
        Drawing& owner = drawingOf(target.mount);
        Mount* next = nullptr;
        std::size_t bar = target.rest.find(L'|');
        // The name of a reference may itself have bars in it.
        for (; bar <= kLongestSymbol; bar = target.rest.find(L'|', bar + 1)) {
            const ContainerNumber block = owner.names().findBlock(target.rest.substr(0, bar));
            next = block == kNoContainer ? nullptr : mount(target.mount, block);
            if (next != nullptr) break;
        }
        if (next == nullptr || !next->drawing) return target;
        target.mount = next;
        target.rest.erase(0, bar + 1);
    }
}

void References::forget(Mount& mount) {
    forgetLocated();
    for (auto& [block, child] : mount.children) forget(*child);
    m_byNumber.erase(mount.number);
    m_document.databases.erase(mount.number);
    if (!mount.real.empty()) m_drawings.erase(mount.real);
}

void References::drop(ContainerNumber block) {
    const auto found = m_mounts.find(block);
    if (found == m_mounts.end()) return;
    m_folders.clear();
    forget(*found->second);
    m_mounts.erase(found);
}

}  // namespace mor::host
