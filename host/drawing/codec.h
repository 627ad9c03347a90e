#pragma once

#include "host/drawing/change.h"
#include "host/drawing/group.h"
#include "host/drawing/record.h"
#include "host/drawing/source.h"
#include "host/host.h"
#include "host/text/text_numbers.h"

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What a form of drawings has to do: say what is in the file, give records as groups, and turn the
/// edits of a save into pieces to write.
namespace mor::host {

/// Whether records of one type or kind have subclass markers (group 100).
struct RecordForm {
    bool plain = false;
    bool marked = false;

    [[nodiscard]] bool seen() const { return plain || marked; }
    void note(bool marker) { (marker ? marked : plain) = true; }
};

/// What opening a drawing gives.
struct Skeleton {
    Release release = Release::R12;
    std::string version;   ///< $ACADVER as the file has it; empty when it has none
    std::string codePage;  ///< $DWGCODEPAGE as the file has it; empty when it has none
    std::uint64_t seed = 0;
    std::optional<std::array<double, 3>> insertionBase;  ///< $INSBASE
    DrawingSettings settings;
    std::string form = "DXF";     ///< "DXF", "binary DXF" or "DWG"
    std::string unwritable;       ///< why it cannot be written at all; empty when it can
    std::uint64_t deadBytes = 0;  ///< among the records, of older versions of them
    std::string lineEnd;          ///< "LF" or "CRLF"; empty where there are no lines
    RecordEntries records;        ///< [0] is unused
    std::vector<Container> containers;
    TextNumbers types;
    std::vector<RecordForm> forms;  ///< by type
    RecordForm tableForm;           ///< of the records of tables
    RecordForm entityForm;          ///< of entities, those of blocks included
    bool sawOwners = false;         ///< an entity or table record has its owner in 330
    bool sawEof = false;
    bool carets = true;  ///< control characters in texts are written with a caret
    std::optional<Damage> damage;
    std::uint64_t highestHandle = 0;

    [[nodiscard]] RecordNumber lastRecord() const {
        return static_cast<RecordNumber>(records.size() - 1);
    }
    /// Of the type's records in tables, blocks and entities. Objects always have markers, also
    /// those that some writers add to R12 files.
    [[nodiscard]] RecordForm formOf(std::uint16_t type) const {
        return type < forms.size() ? forms[type] : RecordForm{};
    }
};

/// What a save is to write: the drawing as it is at this moment.
struct EditSet {
    const RecordEntries& records;  ///< the file's, then the made ones
    RecordNumber lastFileRecord = 0;
    const std::vector<Container>& containers;
    const TextNumbers& types;
    std::map<RecordNumber, RecordChange> changed;     ///< records of the file that differ now
    std::map<RecordNumber, GroupList> made;           ///< records to be written that the file lacks
    std::map<ContainerNumber, GroupList> tableHeads;  ///< of tables that the file lacks
    std::uint64_t seed = 0;  ///< $HANDSEED when handles were given; 0: it stays
    Release release = Release::R12;

    [[nodiscard]] const std::string& typeOf(RecordNumber number) const {
        return types.text(records[number].type);
    }
};

/// One record that a save writes anew.
struct PlannedEdit {
    SavedEdit::Kind kind = SavedEdit::Kind::Changed;
    RecordNumber number = 0;  ///< 0: no record, told by the texts
    std::string type;
    std::uint64_t handle = 0;
    std::string what;
};

/// One stretch of the file to be written: bytes copied from the file as loaded, or new ones.
struct PlanPiece {
    bool copy = false;
    std::uint64_t from = 0;  ///< of a copy: where it begins in the source
    std::uint64_t size = 0;
    std::string bytes;        ///< else
    std::size_t records = 0;  ///< how many begin in `bytes`
};

/// How a drawing is written: copies of what nobody touched, in its place, and what was made or
/// changed.
struct SavePlan {
    std::vector<PlanPiece> pieces;
    std::vector<PlannedEdit> edits;
    std::uint64_t size = 0;
    std::string refused;  ///< why the edits cannot be written; empty when they can
};

/// One open drawing in its form. Records are numbered as the skeleton numbers them.
class Codec {
public:
    Codec() = default;
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;
    virtual ~Codec() = default;

    /// The bytes of the file.
    [[nodiscard]] virtual const Source& source() const = 0;
    /// All groups of a record of the file.
    [[nodiscard]] virtual GroupList read(RecordNumber number) const = 0;
    /// The same into a list that is used again.
    virtual void readInto(RecordNumber number, GroupList& list) const { list = read(number); }
    /// Gives the groups of records of the file one after the other, for a thread beside the one
    /// that asks for all else. Their texts are those that it adds to `texts`. False where the form
    /// has to be read by one thread.
    virtual bool readBeside(std::span<const RecordNumber> /*records*/,
                            std::deque<std::string>& /*texts*/,
                            const std::function<void(const GroupList&)>& /*take*/) const {
        return false;
    }
    /// The group that `GroupList::find` gives for it, without cutting what stands behind. Its text
    /// is valid until the codec is asked again.
    [[nodiscard]] virtual std::optional<Group> find(RecordNumber number, int code) const = 0;
    /// A number for the text of the record's layer, the same for the same text; TextNumbers::kNone
    /// or kTooMany where it has to be read.
    [[nodiscard]] virtual std::uint16_t layerNumberOf(RecordNumber number) const = 0;
    /// Whether a list of named attributes of the record may hold handles; a quick look.
    [[nodiscard]] virtual bool mayHoldHandles(RecordNumber number) const = 0;
    /// Of which applications a record has extended data, as the file names them, in its order.
    [[nodiscard]] virtual std::vector<std::string> applicationsOf(RecordNumber number) const = 0;
    /// The bits of a record of which no groups are made; empty where groups are all there is.
    [[nodiscard]] virtual std::string undecoded(RecordNumber /*number*/) const { return {}; }
    /// Why the record could not be written anew as it is; empty when it could.
    [[nodiscard]] virtual std::string oddityOf(RecordNumber number) const = 0;
    /// A damaged drawing as far as it is read, with what is open closed.
    [[nodiscard]] virtual std::string salvaged() const = 0;
    [[nodiscard]] virtual SavePlan plan(const EditSet& edits) const = 0;
    /// Compares a file that was written with its plan: what was copied and what was made byte by
    /// byte, what was made also by its records. Empty when they agree, else what differs. May run
    /// beside the thread that flushes the file; nothing else is asked meanwhile.
    [[nodiscard]] virtual std::string compare(const SavePlan& plan,
                                              const Source& written) const = 0;
};

/// A drawing as a codec opens it.
struct Opened {
    std::unique_ptr<Codec> codec;
    Skeleton skeleton;
};

}  // namespace mor::host
