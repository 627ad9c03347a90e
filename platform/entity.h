#pragma once

#include "platform/lisp.h"
#include "platform/mfc.h"
#include "platform/string_list.h"
#include "platform/types.h"

#include <memory>

namespace mor {
struct EntityState;  // pending changes of one connected entity: the host's business
struct LayerState;
}  // namespace mor

/// A short-lived handle on one record of the current drawing: reads and writes its groups and its
/// named attributes. Changes are pending until `Flush` applies them to the state of that moment;
/// two objects on one entity both keep theirs. Names of attributes are compared exactly.
class CMOREntity {
public:
    CMOREntity();
    virtual ~CMOREntity();  ///< discards what is pending
    CMOREntity(const CMOREntity&) = delete;
    CMOREntity& operator=(const CMOREntity&) = delete;

    /// Attaches to a record, after giving up the former one; false, and unconnected, for an unknown
    /// or erased name.
    virtual bool Connect(const ads_name name);
    virtual bool Disconnect();  ///< discards what is pending; false when nothing was connected
    /// Writes all pending changes, all or none; false when the entity is gone, read-only or too
    /// full.
    virtual bool Flush();
    /// Erases the entity from the drawing and disconnects; false when it cannot be erased.
    virtual bool Destroy();

    virtual bool GetEName(ads_name result) const;  ///< {0, 0} and false when unconnected
    virtual const CString& Handle() const;  ///< upper-case hexadecimal; empty when it has none
    virtual const CString& Type() const;    ///< group 0, such as "INSERT"
    /// The layer name, copied into `buffer` when that is not null; valid until the next call.
    virtual const wchar_t* GetLayer(wchar_t* buffer) const;
    virtual bool SetLayer(const wchar_t* layer);
    /// The text of the first group with that code; valid until the next call. False when there is
    /// none.
    virtual bool GetEntityEntry(int code, const wchar_t*& text) const;
    /// A 16-bit group; group 67 reads as 0 where the record has none. False when there is none.
    virtual bool GetGroupShort(int code, short* value) const;
    virtual bool SetGroupShort(int code, short value);

    /// The value of a named attribute; false, and the value untouched, when there is none of that
    /// name.
    virtual bool GetAttribute(const wchar_t* name, CMORAdsLispVar& value) const;
    /// Sets a named attribute; nil removes it, and removing a missing one is true. False when it
    /// does not fit into the entity's room, or holds what cannot be stored (an infinite real,
    /// another drawing's entity).
    virtual bool SetAttribute(const wchar_t* name, const CMORAdsLispVar& value);
    /// The text of a named attribute, at most 2047 characters into a buffer of 2048; a value that
    /// is no text as princ shows it. False when there is none of that name.
    virtual bool GetAttributeText(const wchar_t* name, wchar_t* buffer) const;
    virtual bool SetAttributeText(const wchar_t* name, const wchar_t* text);
    virtual bool DeleteAttribute(const wchar_t* name);  ///< false when there is none of that name
    /// The names of all attributes, in the order in which they were first set.
    virtual void GetAttributeNames(CMORStringList& names) const;
    /// Bytes of extended data used by one attribute, name and value; 0 when there is none.
    virtual long GetXDataSize(const wchar_t* name) const;
    /// Bytes of extended data still free on the entity; all applications share 16383 bytes.
    virtual long GetFreeXDataMem() const;

private:
    std::unique_ptr<mor::EntityState> m_state;
};

/// A handle on one layer of the current drawing. Changes reach it on `Flush`.
class CMORAdsLayer {
public:
    CMORAdsLayer();
    virtual ~CMORAdsLayer();
    CMORAdsLayer(const CMORAdsLayer&) = delete;
    CMORAdsLayer& operator=(const CMORAdsLayer&) = delete;

    virtual bool Connect(const wchar_t* name);  ///< false when there is no such layer
    virtual bool Create(
        const wchar_t* name);  ///< makes and attaches; false when it exists or is refused
    virtual bool IsFrozen() const;
    virtual bool IsFrozen(bool frozen);
    virtual bool IsLocked() const;
    virtual bool IsLocked(bool locked);
    virtual bool Flush();

private:
    std::unique_ptr<mor::LayerState> m_state;
};
