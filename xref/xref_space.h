#pragma once

#include "platform/bounded_text.h"
#include "platform/entity_name.h"
#include "platform/types.h"
#include "space/letter_space.h"
#include "space/space.h"
#include "xref/handle_table.h"
#include "xref/layer_entity_table.h"

#include <cstddef>

class CMOREntity;

/// The envelope for an external reference; empty until it is connected by name.
class MOR_XRef : public CMORCadSpace {
public:
    MOR_XRef();
    ~MOR_XRef() override;

private:
    MOR_XRef(const MOR_XRef& other);
};

/// The letter of an external reference: its block definition as a space, read-only. Symbols are
/// looked up under their qualified names, NAME|SYMBOL. Handles and layers of its entities are read
/// once, when they are first asked for; a reference that has changed since gets a new letter.
class MOR_Letter_XRef : public CMORCadLetterSpace {
public:
    /// Qualified names, and so the reference's own, have at most 255 characters; longer ones are
    /// not found.
    static constexpr std::size_t kNameSize = 256;

    MOR_Letter_XRef();
    ~MOR_Letter_XRef() override;

    [[nodiscard]] bool hasName(const wchar_t* name) override;
    /// False once the reference is detached, or reloaded so that its block begins with another
    /// entity.
    [[nodiscard]] bool isValid() override;
    [[nodiscard]] const wchar_t* getName() override;
    [[nodiscard]] resbuf* searchBlock(const wchar_t* block) override;
    [[nodiscard]] resbuf* tblSearch(const wchar_t* table, const wchar_t* symbol) override;
    [[nodiscard]] bool isConnected() override;
    /// Any case; sub-entities too. False and {0, 0} for an unknown handle. When the letter is not
    /// connected: false, `result` untouched, and "unable building hashtable" on the command line.
    bool handEnt(const wchar_t* handle, ads_name result) override;
    [[nodiscard]] bool isWriteable() override;
    /// Patterns are written without the reference's name. Null for an unusable list; one that
    /// contains "*" means all layers, those without the reference's name too. Sub-entities are not
    /// delivered.
    [[nodiscard]] CMORCadLetterSpaceIterator* getIterator(const CMORStringList& layers) override;
    [[nodiscard]] CMORCadLetterSpaceIterator* getIterator(const CMORAdsLispVar& layers) override;

    /// Connects once: false, and nothing changed, when it is connected already; false when the name
    /// is too long, is no external reference, or the reference has no entities.
    virtual bool connect(const wchar_t* xrefName);
    [[nodiscard]] virtual bool isHashtableBuilt();
    /// Reads handles and layers of all entities; false when not connected or built already.
    /// Entities that cannot be read are passed over.
    virtual bool buildHashtable();
    /// Looks the block up and connects; on failure only the first entity is lost.
    virtual bool findBlock();

private:
    [[nodiscard]] bool lookUpBlock(mor::EntityName& firstEntity) const;
    void record(const CMOREntity& entity, const mor::EntityName& name);

    mor::HandleTable m_handles;
    bool m_connected = false;
    bool m_built = false;
    mor::BoundedText<kNameSize> m_name;
    mor::EntityName m_firstEntity;
    MOR_LayerXRefEntityTable m_layers;
};

namespace mor_xref {

/// The name of the entity with that handle in the external reference of that name; false when there
/// is no such reference (`result` untouched) or entity ({0, 0}).
bool HandEnt(const wchar_t* xrefName, const wchar_t* handle, ads_name result);

}  // namespace mor_xref
