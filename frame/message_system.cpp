#include "frame/message_system.h"

#include <cassert>
#include <memory>
#include <utility>
#include <vector>

MOR_AdsMsgSystemClass* MOR_AdsMsgSystemClass::s_pObject = nullptr;

void MOR_AdsMsgSystemClass::createTheGlobalObject() {
    s_pObject = new MOR_AdsMsgSystemClass;  // NOLINT(*owning-memory): private, lives in the static
}

void MOR_AdsMsgSystemClass::deleteTheGlobalObject() {
    delete std::exchange(s_pObject, nullptr);  // NOLINT(*owning-memory)
}

MOR_AdsMsgSystemClass* MOR_AdsMsgSystemClass::getTheGlobalObject() {
    if (s_pObject == nullptr) createTheGlobalObject();
    return s_pObject;
}

const MOR_AdsMsgSystemClass* MOR_AdsMsgSystemClass::getTheGlobalConstObject() {
    return getTheGlobalObject();
}

MOR_AdsMsgSystemClass::~MOR_AdsMsgSystemClass() {
    while (m_first != nullptr) {
        const std::unique_ptr<MsgRegistration> released{m_first};
        m_first = released->next;
    }
}

int MOR_AdsMsgSystemClass::registerFct(Callback function) {
    assert(function != nullptr);
    for (MsgRegistration* entry = m_first; entry != nullptr; entry = entry->next)
        if (entry->function == function) return static_cast<int>(++entry->count);
    auto entry = std::make_unique<MsgRegistration>(MsgRegistration{function, 1, m_first});
    m_first = entry.release();
    return 1;
}

int MOR_AdsMsgSystemClass::unregisterFct(Callback function) {
    MsgRegistration** link = &m_first;
    while (*link != nullptr && (*link)->function != function) link = &(*link)->next;
    if (*link == nullptr) return -1;
    if ((*link)->count > 1) return static_cast<int>(--(*link)->count);
    const std::unique_ptr<MsgRegistration> released{*link};
    *link = released->next;
    return 0;
}

void MOR_AdsMsgSystemClass::sendMessage(Message message) const {
    // A snapshot: what is called may change the list, or even delete the registry.
    std::vector<std::pair<Callback, std::uint32_t>> calls;
    for (const MsgRegistration* entry = m_first; entry != nullptr; entry = entry->next)
        calls.emplace_back(entry->function, entry->count);
    for (const auto& [function, count] : calls)
        for (std::uint32_t i = 0; i < count; ++i) function(message);
}
