#include "host/documents/document.h"
#include "host/documents/symbols.h"
#include "host/host.h"
#include "host/text/group_codes.h"
#include "platform/database.h"

#include <memory>
#include <string>

namespace mor::host {

namespace {

/// A drawing as the object interface sees it: the document's own, or a referenced one, which lists
/// its blocks under its own names.
struct Site {
    Drawing* drawing = nullptr;
    Mount* mount = nullptr;

    [[nodiscard]] AcDbObjectId idOf(RecordNumber number) const {
        const Located place{drawing, number, mount};
        const EntityName name = place.nameOf(number);
        return AcDbObjectId(name.second(), name.first());
    }
};

EntityName nameOfId(const AcDbObjectId& id) { return {id.record(), id.drawing()}; }

AcDbDatabase* databaseOf(const Site& site);

/// What every opened object has.
template <typename Base>
class Opened : public Base {
public:
    Opened(Site site, RecordNumber number) : m_site(site), m_number(number) {}
    Acad::ErrorStatus close() override {
        const std::unique_ptr<Opened> self(this);  // opened for one caller, who is done with it
        return Acad::eOk;
    }
    [[nodiscard]] AcDbObjectId objectId() const override { return m_site.idOf(m_number); }
    [[nodiscard]] AcDbDatabase* database() const override { return databaseOf(m_site); }

protected:
    Site m_site;
    RecordNumber m_number;
};

class OpenedEntity final : public Opened<AcDbEntity> {
public:
    using Opened::Opened;
};

/// The entities of a reference block are the referenced drawing's.
Site entitySite(const Site& site, ContainerNumber block, ContainerNumber& container) {
    const BlockEntities found = entitiesOf(*currentDocument(), site.mount, block);
    container = found.drawing == nullptr ? block : found.container;
    return found.drawing == nullptr ? site : Site{found.drawing, found.mount};
}

class EntityIterator final : public AcDbBlockTableRecordIterator {
public:
    EntityIterator(Site site, RecordNumber first) : m_site(site), m_at(first) {}
    [[nodiscard]] bool done() const override { return m_at == 0; }
    [[nodiscard]] Acad::ErrorStatus getEntity(AcDbEntity*& entity, AcDb::OpenMode /*mode*/,
                                              bool /*openErased*/) const override {
        entity = nullptr;
        if (m_at == 0) return Acad::eInvalidInput;
        entity = std::make_unique<OpenedEntity>(m_site, m_at).release();  // the caller closes it
        return Acad::eOk;
    }

private:
    Site m_site;
    RecordNumber m_at;
};

/// A block, known by its BLOCK record.
class OpenedBlock final : public Opened<AcDbBlockTableRecord> {
public:
    OpenedBlock(Site site, ContainerNumber block)
        : Opened(site, site.drawing->container(block).head),
          m_block(block),
          m_name(site.drawing->containerName(block)) {
        m_flags = m_site.drawing->integerOf(m_number, kFlagsCode).value_or(0);
        m_path = m_site.drawing->textOf(m_number, 1).value_or(L"");
    }
    [[nodiscard]] Acad::ErrorStatus getName(const wchar_t*& name) const override {
        name = m_name.c_str();
        return Acad::eOk;
    }
    [[nodiscard]] Acad::ErrorStatus pathName(const wchar_t*& path) const override {
        path = m_path.c_str();
        return Acad::eOk;
    }
    [[nodiscard]] AcGePoint3d origin() const override {
        const auto base = baseOf(*currentDocument(), m_site.mount, m_block);
        return {base[0], base[1], base[2]};
    }
    [[nodiscard]] bool isFromExternalReference() const override {
        return (m_flags & kAnyReferenceBlock) != 0;
    }
    [[nodiscard]] bool isFromOverlayReference() const override {
        return (m_flags & kOverlayBlock) != 0;
    }
    [[nodiscard]] bool hasAttributeDefinitions() const override {
        return holdsAttributeDefinitions(*m_site.drawing, m_block);
    }
    [[nodiscard]] bool isAnonymous() const override {
        return isAnonymousBlock(*m_site.drawing, m_block);
    }
    [[nodiscard]] Acad::ErrorStatus newIterator(AcDbBlockTableRecordIterator*& iterator,
                                                bool /*atBeginning*/,
                                                bool /*skipErased*/) const override {
        ContainerNumber container = kNoContainer;
        const Site site = entitySite(m_site, m_block, container);
        const RecordNumber first = site.drawing->nextMember(container, 0);
        iterator =
            std::make_unique<EntityIterator>(site, first).release();  // the caller deletes it
        return Acad::eOk;
    }

private:
    ContainerNumber m_block;
    std::wstring m_name;
    std::wstring m_path;
    std::int64_t m_flags = 0;
};

class BlockIterator final : public AcDbSymbolTableIterator {
public:
    explicit BlockIterator(Site site) : m_site(site) { settle(); }
    [[nodiscard]] bool done() const override { return m_at >= m_site.drawing->containers().size(); }
    [[nodiscard]] Acad::ErrorStatus getRecordId(AcDbObjectId& id) const override {
        if (done()) return Acad::eInvalidInput;
        id = m_site.idOf(m_site.drawing->container(m_at).head);
        return Acad::eOk;
    }
    void step(bool forward, bool /*skipErased*/) override {
        if (!forward || done()) return;
        ++m_at;
        settle();
    }

private:
    void settle() {
        while (!done()) {
            const Container& container = m_site.drawing->container(m_at);
            if (container.kind == ContainerKind::Block && container.head != 0) return;
            ++m_at;
        }
    }
    Site m_site;
    ContainerNumber m_at = 1;
};

class OpenedTable final : public Opened<AcDbBlockTable> {
public:
    explicit OpenedTable(Site site) : Opened(site, 0) {}
    [[nodiscard]] Acad::ErrorStatus newIterator(AcDbSymbolTableIterator*& iterator,
                                                bool /*atBeginning*/,
                                                bool /*skipErased*/) const override {
        iterator = std::make_unique<BlockIterator>(m_site).release();  // the caller deletes it
        return Acad::eOk;
    }
};

class Database final : public AcDbDatabase {
public:
    explicit Database(Site site) : m_site(site) {}
    [[nodiscard]] Acad::ErrorStatus getSymbolTable(AcDbBlockTable*& table,
                                                   AcDb::OpenMode /*mode*/) override {
        table = std::make_unique<OpenedTable>(m_site).release();  // the caller closes it
        return Acad::eOk;
    }

private:
    Site m_site;
};

AcDbDatabase* databaseOf(const Site& site) {
    auto& known = currentDocument()->databases[site.mount == nullptr ? 0 : site.mount->number];
    if (!known) known = std::make_unique<Database>(site);
    return known.get();
}

/// The block whose BLOCK record this is; 0 for any other record.
ContainerNumber blockOf(const Located& found) {
    const ContainerNumber container = found.drawing->entry(found.number).container;
    if (container == kNoContainer) return kNoContainer;
    const Container& block = found.drawing->container(container);
    return block.kind == ContainerKind::Block && block.head == found.number ? container
                                                                            : kNoContainer;
}

Acad::ErrorStatus find(const AcDbObjectId& id, bool openErased, Located& found) {
    if (id.isNull()) return Acad::eNullObjectId;
    found = locate(nameOfId(id));
    if (!found) return Acad::eInvalidObjectId;
    return found.drawing->entry(found.number).has(kErased) && !openErased ? Acad::eWasErased
                                                                          : Acad::eOk;
}

Site siteOf(const Located& found) { return {found.drawing, const_cast<Mount*>(found.mount)}; }

}  // namespace

}  // namespace mor::host

namespace host = mor::host;

Acad::ErrorStatus acdbGetObjectId(AcDbObjectId& id, const ads_name name) {
    const host::Located found = host::locate(mor::EntityName(name));
    if (!found) return Acad::eInvalidInput;
    id = AcDbObjectId(name[1], name[0]);
    return Acad::eOk;
}

Acad::ErrorStatus acdbGetAdsName(ads_name result, AcDbObjectId id) {
    if (id.isNull() || !host::locate(host::nameOfId(id))) return Acad::eInvalidObjectId;
    host::nameOfId(id).copyTo(result);
    return Acad::eOk;
}

Acad::ErrorStatus acdbOpenObject(AcDbObject*& object, AcDbObjectId id, AcDb::OpenMode mode,
                                 bool openErased) {
    object = nullptr;
    host::Located found;
    if (const Acad::ErrorStatus status = host::find(id, openErased, found); status != Acad::eOk)
        return status;
    if (const host::ContainerNumber block = host::blockOf(found)) {
        object = std::make_unique<host::OpenedBlock>(host::siteOf(found), block)
                     .release();  // the caller closes it
        return Acad::eOk;
    }
    AcDbEntity* entity = nullptr;
    const Acad::ErrorStatus status = acdbOpenObject(entity, id, mode, openErased);
    object = entity;
    return status;
}

Acad::ErrorStatus acdbOpenObject(AcDbEntity*& entity, AcDbObjectId id, AcDb::OpenMode /*mode*/,
                                 bool openErased) {
    entity = nullptr;
    host::Located found;
    if (const Acad::ErrorStatus status = host::find(id, openErased, found); status != Acad::eOk)
        return status;
    if (found.drawing->entry(found.number).has(host::kEdge)) return Acad::eInvalidObjectId;
    entity = std::make_unique<host::OpenedEntity>(host::siteOf(found), found.number)
                 .release();  // the caller closes it
    return Acad::eOk;
}
