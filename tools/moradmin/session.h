#pragma once

#include "host/host.h"
#include "platform/geometry.h"
#include "space/view.h"
#include "tools/moradmin/damage/store_state.h"
#include "tools/moradmin/options.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/passage.h"
#include "tools/moradmin/store/store.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace mor::tool {

/// One drawing opened for a command: current and active until the end. Throws Failure.
class Session {
public:
    explicit Session(const Options& options);
    explicit Session(const std::string& file, host::Opening opening = host::Opening::AsItIs);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    [[nodiscard]] AcApDocument* document() const { return m_document; }
    [[nodiscard]] const std::string& file() const { return m_file; }
    /// Throws Failure when the drawing cannot be saved whatever is changed in it.
    void refuseUnwritable(const Options& options) const;
    /// What the records say, as loaded; of the referenced drawing when one is looked through.
    [[nodiscard]] const StoreState& state();
    /// Facts about the file, the referenced drawing's likewise.
    [[nodiscard]] const host::DocumentInfo& info();

    /// The reference that is looked through, by the path of references: PLAN, PLAN|CORE; empty for
    /// the drawing itself.
    [[nodiscard]] const std::wstring& reference() const { return m_passage.reference(); }
    /// The space of the drawing or of the reference, as the global view sees it.
    [[nodiscard]] const CMORCadView& view() const { return *CMORCadView::getTheGlobalObject(); }
    /// What carries coordinates of that space into the drawing's own. Throws Failure.
    [[nodiscard]] CMORMathTransMatrix placement() const { return m_passage.placement(); }
    /// The block definition in which the first insert on the way stands; empty for a space of the
    /// drawing. The placement then leads to the coordinates of that definition.
    [[nodiscard]] const std::string& placedIn() const { return m_passage.placedIn(); }
    /// Throws Failure when a look-up in the store would do harm (exit 4). In a damaged drawing,
    /// which is only read, what lies behind the damage is told and its links are mended in memory.
    void refuseDamagedStore();
    /// `state()`, after that.
    [[nodiscard]] const StoreState& safeState();
    /// Whether there is a store with directories in it; refuses like `safeState`.
    [[nodiscard]] bool hasDirectories();
    [[nodiscard]] Store& store();
    /// The state, handed over; learnt anew when it is asked for again.
    [[nodiscard]] StoreState takeState();
    /// To be called when something was stored: the store has directories now.
    void noteMade() { m_made = true; }
    /// To be called after a change: what was learnt of the drawing before does not hold any more.
    void forget();
    /// To be called instead when values or directories were stored or removed and nothing else
    /// done: what was learnt of the records does not hold any more, but the store is as sound as it
    /// was, and has directories.
    void noteStored();
    /// The state as it was learnt last; what was stored or removed since then may be missing.
    [[nodiscard]] const StoreState& lastState() { return m_state ? *m_state : state(); }
    /// Current and active again, where several drawings are open.
    void activate() const;
    /// A file system object that has seen nothing yet.
    [[nodiscard]] static std::unique_ptr<Store> freshStore();
    /// Saves what changed, or finds out what would be saved.
    host::SaveReport save(const Options& options);
    /// What tells an edited record apart: the path of a directory, else what the host says.
    [[nodiscard]] std::string placeOf(const host::SavedEdit& edit) const;
    /// What a command that changes the drawing has to tell of it as JSON besides the changes.
    [[nodiscard]] Json& facts() { return m_facts; }

    /// "FILE: TEXT", for messages.
    [[nodiscard]] std::string message(const std::string& text) const {
        return m_file + ": " + text;
    }

private:
    /// Whether it is a DWG and the user has not said that writing one is an experiment.
    [[nodiscard]] bool isUnacknowledgedDwg(const Options& options) const;
    void mendForReading();
    /// Looks at the drawing's records and facts, unless that was done.
    void learn();

    std::string m_file;
    AcApDocument* m_document = nullptr;
    Passage m_passage;
    std::optional<StoreState> m_state;
    bool m_made = false;
    bool m_outdated = false;  ///< the state, by what was stored or removed
    std::optional<host::DocumentInfo> m_info;
    std::unique_ptr<Store> m_store;
    Json m_facts = Json::object();
};

/// A drawing stays in its form, DXF or DWG: refuses to save one under a name that says otherwise.
void refuseOtherForm(const std::string& output, std::string_view form);
/// Whether a drawing that was opened since the last call could only be read up to a place: whatever
/// a command found is not all, and its exit code says so.
[[nodiscard]] bool takeSawDamage();
/// Where a damaged drawing is damaged, and what is wrong there.
[[nodiscard]] std::string damagePlace(const host::Damage& damage);

}  // namespace mor::tool
