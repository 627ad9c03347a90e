#pragma once

#include "platform/documents.h"
#include "platform/entity_name.h"
#include "platform/geometry.h"

#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

/// The way from a drawing into one of its references, insert by insert. The document's global view
/// shows what lies at its end. Throws Failure (exit 6) where it cannot go on.
class Passage {
public:
    /// Stands in the drawing itself. `file`: the drawing's, for messages.
    Passage(AcApDocument* document, std::string file)
        : m_document(document), m_host(std::move(file)) {}

    /// Goes into a reference, and from it into one of its own: NAME or the handle of an insert,
    /// more of them behind bars.
    void enter(const std::string& words);

    /// The path of references: PLAN, PLAN|CORE; empty for the drawing itself.
    [[nodiscard]] const std::wstring& reference() const { return m_reference; }
    /// The file of the reference; empty for the drawing itself.
    [[nodiscard]] const std::string& file() const { return m_file; }
    /// The block definition in which the first insert on the way stands; empty for a space.
    [[nodiscard]] const std::string& placedIn() const { return m_placedIn; }
    /// What carries coordinates of the reference into the drawing: the view's transformation,
    /// behind those of the references on the way. Refuses where a name on the way stands for
    /// several inserts: they lie in several places.
    [[nodiscard]] CMORMathTransMatrix placement() const;

private:
    /// An insert of the drawing's own: the first one of that block in its spaces, or the one of
    /// that handle.
    [[nodiscard]] mor::EntityName findInsert(const std::string& word);
    /// The same among the entities of the reference that is looked through so far.
    [[nodiscard]] mor::EntityName findInsertBelow(const std::string& word);
    /// Remembers that a name stands for several inserts.
    void noteChoices(const std::string& word, const std::vector<std::string>& handles);
    void goThrough(mor::EntityName insert, const std::string& word);
    [[noreturn]] void refuse(const std::string& text, const std::string& word = {}) const;

    AcApDocument* m_document;
    std::string m_host;
    std::wstring m_reference;
    std::string m_file;
    std::string m_placedIn;
    std::string m_choices;  ///< why the placement is not known: a name stands for several inserts
    std::vector<mor::EntityName> m_inserts;  ///< on the way, from the drawing's own on
};

}  // namespace mor::tool
