#pragma once

#include "platform/documents.h"
#include "platform/list_calls.h"
#include "platform/selection_calls.h"
#include "platform/types.h"

#include <cstdint>
#include <utility>

namespace mor {

/// Owns a list and releases it with `acutRelRb`.
class ResbufList {
public:
    ResbufList() = default;
    explicit ResbufList(resbuf* list) noexcept : m_list(list) {}
    ~ResbufList() { acutRelRb(m_list); }
    ResbufList(ResbufList&& other) noexcept : m_list(other.release()) {}
    ResbufList& operator=(ResbufList&& other) noexcept {
        if (this != &other) {
            acutRelRb(m_list);
            m_list = other.release();
        }
        return *this;
    }
    ResbufList(const ResbufList&) = delete;
    ResbufList& operator=(const ResbufList&) = delete;

    [[nodiscard]] resbuf* get() const noexcept { return m_list; }
    [[nodiscard]] resbuf* release() noexcept { return std::exchange(m_list, nullptr); }
    explicit operator bool() const noexcept { return m_list != nullptr; }

private:
    resbuf* m_list = nullptr;
};

/// The first element with that group code, null when there is none.
[[nodiscard]] inline const resbuf* findGroup(const resbuf* list, int code) noexcept {
    for (; list != nullptr; list = list->rbnext)
        if (list->restype == code) return list;
    return nullptr;
}
[[nodiscard]] inline const resbuf* findGroup(const ResbufList& list, int code) noexcept {
    return findGroup(list.get(), code);
}

/// Owns a selection set and frees it.
class SelectionSet {
public:
    SelectionSet() = default;
    ~SelectionSet() { reset(); }
    SelectionSet(const SelectionSet&) = delete;
    SelectionSet& operator=(const SelectionSet&) = delete;

    void reset() noexcept {
        if (m_name[0] != 0 || m_name[1] != 0) acedSSFree(m_name);
        m_name[0] = m_name[1] = 0;
    }
    [[nodiscard]] std::int64_t* receive() noexcept {  ///< where a selection call puts its result
        reset();
        return m_name;
    }
    [[nodiscard]] const std::int64_t* get() const noexcept { return m_name; }

private:
    ads_name m_name{};
};

enum class LockResult { Locked, NotActive, Refused };

/// A write lock on the current document, taken only when it is the active one; given back at the
/// end.
class DocumentLock {
public:
    DocumentLock() {
        AcApDocManager* manager = acDocManagerPtr();
        AcApDocument* document = manager->curDocument();
        if (document == nullptr || document != manager->mdiActiveDocument()) return;
        m_result =
            manager->lockDocument(document, AcAp::kWrite, nullptr, nullptr, true) == Acad::eOk
                ? LockResult::Locked
                : LockResult::Refused;
        if (m_result == LockResult::Locked) m_document = document;
    }
    ~DocumentLock() {
        if (m_document != nullptr) acDocManagerPtr()->unlockDocument(m_document);
    }
    DocumentLock(const DocumentLock&) = delete;
    DocumentLock& operator=(const DocumentLock&) = delete;

    [[nodiscard]] LockResult result() const noexcept { return m_result; }

private:
    AcApDocument* m_document = nullptr;
    LockResult m_result = LockResult::NotActive;
};

}  // namespace mor
