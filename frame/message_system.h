#pragma once

#include <cstdint>

/// The process-wide registry through which modules broadcast numbered messages to registered
/// functions. One thread; the one registry lives from its first use until `deleteTheGlobalObject`,
/// whatever modules come and go meanwhile.
class MOR_AdsMsgSystemClass {
public:
    /// The messages that this library reacts to. Senders may use any other number.
    enum Message : int {
        ReleaseDocumentObjects = 3,  ///< the current document goes away: its objects are deleted
        CheckDwgFileSystem = 4       ///< the current document's file system is checked and repaired
    };
    /// Is called with the number of the message.
    using Callback = void (*)(int message);

    MOR_AdsMsgSystemClass(const MOR_AdsMsgSystemClass&) = delete;
    MOR_AdsMsgSystemClass& operator=(const MOR_AdsMsgSystemClass&) = delete;

    /// Makes a new, empty registry the global one. A former one is not looked at, so it is lost:
    /// callers want `getTheGlobalObject`.
    static void createTheGlobalObject();
    /// Releases the registry with all registrations; nothing when there is none.
    static void deleteTheGlobalObject();
    /// The registry, made when there is none. Never null.
    [[nodiscard]] static MOR_AdsMsgSystemClass* getTheGlobalObject();
    [[nodiscard]] static const MOR_AdsMsgSystemClass* getTheGlobalConstObject();

    /// Registers the function, not null, once more; its count after the call. A new function goes
    /// to the front: it is called before all others.
    int registerFct(Callback function);
    /// Removes one registration of the function: the count that is left, -1 when it was not
    /// registered.
    int unregisterFct(Callback function);
    /// Calls every registered function as often as it is registered, with the number of the
    /// message. Functions may register and unregister while they are called: that counts from the
    /// next message on.
    void sendMessage(Message message) const;

private:
    struct MsgRegistration {
        Callback function;
        std::uint32_t count;
        MsgRegistration* next;
    };

    MOR_AdsMsgSystemClass() = default;
    ~MOR_AdsMsgSystemClass();

    MsgRegistration* m_first = nullptr;  // owned, like every `next`

    static MOR_AdsMsgSystemClass* s_pObject;  // null while there is no registry
};
