#pragma once

#include "platform/documents.h"
#include "platform/types.h"

#include <cstdint>

// The object interface of the drawing database, read-only and as far as block tables are walked.
// Records and entities that are opened stay the database's: whoever opened one gives it back with
// `close` and does not use it afterwards. Iterators belong to the caller.

/// The database's identifier of an object; 0 means none.
class AcDbObjectId {
public:
    AcDbObjectId() = default;
    explicit AcDbObjectId(std::int64_t drawing, std::int64_t record)
        : m_drawing(drawing), m_record(record) {}
    [[nodiscard]] bool isNull() const { return m_record == 0; }
    [[nodiscard]] std::int64_t drawing() const { return m_drawing; }
    [[nodiscard]] std::int64_t record() const { return m_record; }
    friend bool operator==(const AcDbObjectId&, const AcDbObjectId&) = default;

private:
    std::int64_t m_drawing = 0;
    std::int64_t m_record = 0;
};

struct AcGePoint3d {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

namespace AcDb {
enum OpenMode : int { kForRead = 0 };
}  // namespace AcDb

class AcDbDatabase;

/// An opened object.
class AcDbObject {
public:
    virtual ~AcDbObject() = default;
    /// Gives the object back; the pointer is dead afterwards.
    virtual Acad::ErrorStatus close() = 0;
    [[nodiscard]] virtual AcDbObjectId objectId() const = 0;
    /// The database that holds the object: for an entity of an external reference the referenced
    /// drawing's own. Never closed; null when there is none.
    [[nodiscard]] virtual AcDbDatabase* database() const = 0;
};

class AcDbEntity : public AcDbObject {};

class AcDbSymbolTableRecord : public AcDbObject {
public:
    /// The name, under which its own database knows the record; valid until `close`.
    [[nodiscard]] virtual Acad::ErrorStatus getName(const wchar_t*& name) const = 0;
};

/// Steps through a block's entities. Deleted by the caller.
class AcDbBlockTableRecordIterator {
public:
    virtual ~AcDbBlockTableRecordIterator() = default;
    [[nodiscard]] virtual bool done() const = 0;
    /// Opens the entity at the iterator's place; the caller closes it.
    [[nodiscard]] virtual Acad::ErrorStatus getEntity(AcDbEntity*& entity, AcDb::OpenMode mode,
                                                      bool openErased = false) const = 0;
};

class AcDbBlockTableRecord : public AcDbSymbolTableRecord {
public:
    /// The path saved with an external reference, empty for other blocks; valid until `close`.
    [[nodiscard]] virtual Acad::ErrorStatus pathName(const wchar_t*& path) const = 0;
    [[nodiscard]] virtual AcGePoint3d origin() const = 0;
    [[nodiscard]] virtual bool isFromExternalReference() const = 0;
    [[nodiscard]] virtual bool isFromOverlayReference() const = 0;
    [[nodiscard]] virtual bool hasAttributeDefinitions() const = 0;
    [[nodiscard]] virtual bool isAnonymous() const = 0;
    [[nodiscard]] virtual Acad::ErrorStatus newIterator(AcDbBlockTableRecordIterator*& iterator,
                                                        bool atBeginning = true,
                                                        bool skipErased = true) const = 0;
};

/// Steps through the records of a symbol table in table order. Deleted by the caller.
class AcDbSymbolTableIterator {
public:
    virtual ~AcDbSymbolTableIterator() = default;
    [[nodiscard]] virtual bool done() const = 0;
    [[nodiscard]] virtual Acad::ErrorStatus getRecordId(AcDbObjectId& id) const = 0;
    virtual void step(bool forward = true, bool skipErased = true) = 0;
};

/// The block table of one database. The blocks that stand for model space and the layouts are among
/// its records.
class AcDbBlockTable : public AcDbObject {
public:
    [[nodiscard]] virtual Acad::ErrorStatus newIterator(AcDbSymbolTableIterator*& iterator,
                                                        bool atBeginning = true,
                                                        bool skipErased = true) const = 0;
};

/// A drawing's objects.
class AcDbDatabase {
public:
    virtual ~AcDbDatabase() = default;
    /// Opens the block table; the caller closes it.
    [[nodiscard]] virtual Acad::ErrorStatus getSymbolTable(AcDbBlockTable*& table,
                                                           AcDb::OpenMode mode) = 0;
};

/// The identifier of the entity of that name; eInvalidInput for {0, 0} and names that nothing has.
[[nodiscard]] Acad::ErrorStatus acdbGetObjectId(AcDbObjectId& id, const ads_name name);
/// The entity name that goes with an identifier.
[[nodiscard]] Acad::ErrorStatus acdbGetAdsName(ads_name result, AcDbObjectId id);

/// Opens an object, an entity; eWasErased for an erased one unless `openErased`. The pointer is
/// null on failure.
[[nodiscard]] Acad::ErrorStatus acdbOpenObject(AcDbObject*& object, AcDbObjectId id,
                                               AcDb::OpenMode mode, bool openErased = false);
[[nodiscard]] Acad::ErrorStatus acdbOpenObject(AcDbEntity*& entity, AcDbObjectId id,
                                               AcDb::OpenMode mode, bool openErased = false);
