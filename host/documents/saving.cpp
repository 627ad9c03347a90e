#include "host/documents/document.h"
#include "host/documents/plan_writer.h"
#include "host/documents/temporary_file.h"
#include "host/faults.h"
#include "host/text/group_codes.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <iterator>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kNotRead =
    "the drawing could not be read to its end; nothing was saved, run again";

/// The absolute path of the file that is meant, also behind links that lead to none yet.
fs::path followLinks(const fs::path& named, std::error_code& code) {
    constexpr int kMostLinks = 40;
    fs::path path = fs::weakly_canonical(fs::absolute(named), code);
    for (int links = 0; !code && fs::is_symlink(fs::symlink_status(path)); ++links) {
        if (links == kMostLinks)
            code = std::make_error_code(std::errc::too_many_symbolic_link_levels);
        const fs::path next = code ? fs::path() : fs::read_symlink(path, code);
        if (!code) path = fs::weakly_canonical(path.parent_path() / next, code);
    }
    return path;
}

enum class Rename : unsigned { Exchange = RENAME_EXCHANGE, NoReplace = RENAME_NOREPLACE };

/// Renames in one step; false where the name is taken, or the file system cannot do that.
bool renameWith(Rename how, const fs::path& from, const fs::path& to) {
    return guarded("rename", [&] {
               return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(),
                                  static_cast<unsigned>(how));
           }) == 0;
}

/// One save, step by step; what it leaves behind on a failure is taken away again.
class SaveRun {
public:
    SaveRun(AcApDocument& document, const SaveOptions& options)
        : m_document(document), m_drawing(*document.drawing), m_options(options) {}
    ~SaveRun() = default;
    SaveRun(const SaveRun&) = delete;
    SaveRun& operator=(const SaveRun&) = delete;

    Result<SaveReport> run();

private:
    [[nodiscard]] Error failure(const std::string& what) const {
        return {ErrorKind::Unwritable, m_target.string(), 0, what};
    }
    [[nodiscard]] Error systemFailure(const std::string& what) const {
        return failure(what + ": " + std::strerror(errno));
    }
    [[nodiscard]] SavedEdit describe(const PlannedEdit& edit) const;
    std::optional<Error> findTarget();
    [[nodiscard]] bool othersMayNotReplace() const;
    std::optional<Error> lockTarget();
    std::optional<Error> lockFreeName();
    bool makeTemporary();
    std::optional<Error> writeAndFlush(const SavePlan& plan, WriteProgress& progress);
    std::optional<Error> writeTemporary(const SavePlan& plan);
    std::optional<Error> prepareBackup();
    std::optional<Error> commit(SaveReport& report);
    std::optional<Error> takeFreeName();
    std::optional<Error> replaceTarget(SaveReport& report);
    std::optional<Error> putBack(const SaveReport& report);
    [[nodiscard]] bool isChanged(const fs::path& path) const;
    void dropBackup(const fs::path& backup);
    void flushFolder(SaveReport& report);
    [[nodiscard]] bool copyToBackup();
    [[nodiscard]] Error busy(const std::string& what) const {
        return {ErrorKind::Busy, m_target.string(), 0, what + "; it is unchanged, run again"};
    }
    [[nodiscard]] Error changedMeanwhile() const {
        return busy("was changed by another program while it was being saved");
    }

    AcApDocument& m_document;
    Drawing& m_drawing;
    const SaveOptions& m_options;
    fs::path m_target;
    bool m_inPlace = false;  ///< the file that the document was opened from
    bool m_exists = false;
    struct stat m_status {};
    Descriptor m_lock;
    FileState m_held;  ///< of the target, under the lock
    Descriptor m_file;
    TemporaryName m_temporary;
    Descriptor m_backupFile;
    TemporaryName m_backup;
};

std::optional<Error> SaveRun::findTarget() {
    m_inPlace = m_options.output.empty();
    const fs::path named = m_inPlace ? m_document.path : m_options.output;
    m_target = named;
    if (named.empty()) return Error{ErrorKind::Invalid, "", 0, "the drawing has no name yet"};
    std::error_code code;
    const fs::path followed = followLinks(named, code);
    if (code) return failure(code.message());
    m_target = followed;
    // Named anew or not, what was loaded must still be what is replaced.
    std::error_code unknown;
    m_inPlace = m_inPlace || fs::equivalent(m_target, m_document.path, unknown);
    m_exists = ::stat(m_target.c_str(), &m_status) == 0;
    if (m_exists && !S_ISREG(m_status.st_mode)) return failure("is no regular file");
    if (!m_inPlace && m_options.before &&
        *m_options.before != (m_exists ? stateOf(m_status) : FileState()))
        return failure("was changed by another program since the work began; look at it first");
    if (m_exists && !m_options.overwrite) return failure("exists already; choose another name");
    if (m_exists && ::access(m_target.c_str(), W_OK) != 0)
        return systemFailure("cannot be written");
    if (m_exists && othersMayNotReplace())
        return failure("only its owner may replace it: its folder has the sticky bit");
    if (!m_exists && m_inPlace) return failure("is gone since it was loaded");
    if (!fs::is_directory(m_target.parent_path(), code))
        return failure("its folder does not exist");
    return std::nullopt;
}

/// Whether the file belongs to somebody else in a folder where that matters.
bool SaveRun::othersMayNotReplace() const {
    struct stat folder {};
    const uid_t user = ::geteuid();
    return user != 0 && user != m_status.st_uid &&
           ::stat(m_target.parent_path().c_str(), &folder) == 0 &&
           (folder.st_mode & S_ISVTX) != 0 && user != folder.st_uid;
}

/// A name that is not there yet is locked by the temporary file of the save that began first.
std::optional<Error> SaveRun::lockFreeName() {
    if (clearLeftNames(m_target, -1)) return busy("another process is saving it");
    return std::nullopt;
}

std::optional<Error> SaveRun::lockTarget() {
    if (!m_exists) return lockFreeName();
    m_lock.reset(guarded("open", [&] { return ::open(m_target.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!m_lock.valid()) return systemFailure("cannot be opened");
    if (guarded("flock", [&] { return ::flock(m_lock.get(), LOCK_EX | LOCK_NB); }) != 0)
        return errno == EWOULDBLOCK ? busy("another process is saving it")
                                    : systemFailure("cannot be locked");
    // Looked at again under the lock: another process may have replaced it just now.
    struct stat status {};
    if (guarded("stat", [&] { return ::stat(m_target.c_str(), &status); }) != 0)
        return systemFailure("cannot be looked at");
    m_held = stateOf(m_lock.get());
    const bool replaced = m_held.inode != static_cast<std::uint64_t>(status.st_ino) ||
                          m_held.device != static_cast<std::uint64_t>(status.st_dev);
    if (replaced || (m_inPlace && m_held != m_document.stamp) ||
        (!m_inPlace && m_options.before && *m_options.before != stateOf(status)))
        return busy("was changed by another program since it was loaded");
    // Not tested: who saves a name that was free then will find it taken.
    static_cast<void>(clearLeftNames(m_target, m_lock.get()));
    return std::nullopt;
}

/// A new file beside the target, under our lock; false when none can be made.
bool SaveRun::makeTemporary() {
    constexpr int kMostTries = 20;
    const mode_t mode = m_exists ? 0600 : 0666;
    for (int tries = 0; tries < kMostTries; ++tries) {
        m_temporary.set(uniqueNameBeside(m_target));
        m_file.reset(guarded("open", [&] {
            return ::open(m_temporary.path().c_str(),
                          O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
        }));
        if (!m_file.valid()) {
            m_temporary.forget();  // another's, if anybody's
            if (errno == EEXIST) continue;
            return false;
        }
        struct stat status {};
        const bool locked =
            guarded("flock", [&] { return ::flock(m_file.get(), LOCK_EX | LOCK_NB); }) == 0;
        // Another save may have come in between and taken it for one that was left.
        if (locked && ::fstat(m_file.get(), &status) == 0 && status.st_nlink > 0) return true;
        if (!locked && errno != EWOULDBLOCK) return false;
    }
    return false;
}

std::optional<Error> SaveRun::writeAndFlush(const SavePlan& plan, WriteProgress& progress) {
    const int file = m_file.get();
    if (!writePlan(plan, m_drawing.source(), file, progress))
        return systemFailure("writing failed");
    progress.end();
    if (m_exists) {
        // Owner first: it may take mode bits away. Only the superuser can give files to others.
        static_cast<void>(
            guarded("fchown", [&] { return ::fchown(file, m_status.st_uid, m_status.st_gid); }));
        if (guarded("fchmod", [&] { return ::fchmod(file, m_status.st_mode & 07777); }) != 0)
            return systemFailure("its mode cannot be kept");
    }
    if (guarded("fsync", [&] { return ::fsync(file); }) != 0)
        return systemFailure("flushing failed");
    return std::nullopt;
}

/// Writes the temporary file, and behind that compares it with the plan.
std::optional<Error> SaveRun::writeTemporary(const SavePlan& plan) {
    if (!makeTemporary()) return systemFailure("no temporary file can be made beside it");
    const auto written = openFileSource(m_temporary.path());
    if (!written) return failure("reading back failed: " + written.error().text);
    WriteProgress progress;
    const FollowingSource following(*written.value(), plan.size, progress);
    auto comparing =
        std::async(std::launch::async, [&] { return m_drawing.codec().compare(plan, following); });
    const WriteProgress::Ending ending(progress);
    std::optional<Error> error = writeAndFlush(plan, progress);
    progress.end();
    std::string difference = comparing.get();
    if (error) return error;
    if (difference.empty() && stateOf(m_file.get()).size != plan.size)
        difference = "the size differs";
    if (!difference.empty())
        return failure("what was written reads back differently: " + difference);
    return std::nullopt;
}

bool SaveRun::copyToBackup() {
    m_backupFile.reset(guarded("open", [&] {
        return ::open(m_backup.path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                      m_status.st_mode & 07777);
    }));
    const int copy = m_backupFile.get();
    if (!m_backupFile.valid() || ::flock(copy, LOCK_EX | LOCK_NB) != 0) return false;
    const auto source = openFileSource(m_target);
    if (!source || !writeCopy(*source.value(), copy)) return false;
    return guarded("fsync", [&] { return ::fsync(copy); }) == 0;
}

/// A second name of the old file, or a copy of it. It takes the place of an older backup later.
std::optional<Error> SaveRun::prepareBackup() {
    if (!m_exists || !m_options.backup) return std::nullopt;
    m_backup.set(uniqueNameBeside(m_target));
    const int linked =
        guarded("link", [&] { return ::link(m_target.c_str(), m_backup.path().c_str()); });
    if (linked != 0 && !copyToBackup())
        return systemFailure("no backup can be kept (--no-backup does without)");
    return std::nullopt;
}

/// Whether the file under that name is not the one that was locked, or not as it was then. Its
/// number does not count: layered file systems change it when a file is linked or renamed.
bool SaveRun::isChanged(const fs::path& path) const {
    struct stat status {};
    return guarded("stat", [&] { return ::lstat(path.c_str(), &status); }) != 0 ||
           static_cast<std::uint64_t>(status.st_size) != m_held.size ||
           status.st_mtim.tv_sec != m_held.seconds || status.st_mtim.tv_nsec != m_held.nanoseconds;
}

/// The old file goes on being the drawing: it needs no second name.
void SaveRun::dropBackup(const fs::path& backup) {
    std::error_code unknown;
    if (!backup.empty() && fs::equivalent(backup, m_target, unknown)) removeName(backup);
}

std::optional<Error> SaveRun::replaceTarget(SaveReport& report) {
    if (isChanged(m_target)) return changedMeanwhile();
    if (m_options.backup) {
        const fs::path backup = m_target.string() + ".bak";
        const int renamed =
            guarded("rename", [&] { return ::rename(m_backup.path().c_str(), backup.c_str()); });
        if (renamed != 0) return systemFailure("the backup cannot take its name");
        // Where both names already mean one file, rename leaves both.
        m_backup.remove();
        report.backup = backup;
    }
    // Exchanged, not replaced: nothing is lost of what another program has put there just now.
    if (renameWith(Rename::Exchange, m_temporary.path(), m_target)) {
        if (isChanged(m_temporary.path())) return putBack(report);
        m_temporary.remove();
        return std::nullopt;
    }
    const int renamed =
        guarded("rename", [&] { return ::rename(m_temporary.path().c_str(), m_target.c_str()); });
    if (renamed != 0) {
        const Error error = systemFailure("the new file cannot take its name");
        dropBackup(report.backup);
        return error;
    }
    m_temporary.forget();
    return std::nullopt;
}

/// What another program has put under the target's name gets it back.
std::optional<Error> SaveRun::putBack(const SaveReport& report) {
    if (renameWith(Rename::Exchange, m_temporary.path(), m_target)) {
        dropBackup(report.backup);
        return changedMeanwhile();
    }
    const Error error = failure("was changed by another program while it was being saved; " +
                                m_temporary.path().string() + " is what it wrote");
    m_temporary.forget();
    return error;
}

/// A name that appeared meanwhile is not taken from its owner.
std::optional<Error> SaveRun::takeFreeName() {
    const fs::path& from = m_temporary.path();
    struct stat status {};
    bool renamed = renameWith(Rename::NoReplace, from, m_target);
    if (!renamed && errno != EEXIST) {
        // A file system that cannot do that may have hard links; some have neither.
        if (guarded("link", [&] { return ::link(from.c_str(), m_target.c_str()); }) == 0) {
            m_temporary.remove();
            return std::nullopt;
        }
        renamed = ::lstat(m_target.c_str(), &status) != 0 &&
                  guarded("rename", [&] { return ::rename(from.c_str(), m_target.c_str()); }) == 0;
    }
    if (renamed) {
        m_temporary.forget();
        return std::nullopt;
    }
    const Error error = systemFailure("the new file cannot take its name");
    const bool made = ::lstat(m_target.c_str(), &status) == 0;
    return made ? failure("was made by another program while it was being saved") : error;
}

/// The save is done, whatever comes of this: the name means the new file.
void SaveRun::flushFolder(SaveReport& report) {
    Descriptor folder;
    folder.reset(guarded("open", [&] {
        return ::open(m_target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }));
    if (folder.valid() &&
        (guarded("fsync", [&] { return ::fsync(folder.get()); }) == 0 || errno == EINVAL))
        return;
    report.warning = "saved, but its folder could not be flushed (" +
                     std::string(std::strerror(errno)) +
                     "): until the system has done so, a power failure may bring back what was "
                     "there before";
}

std::optional<Error> SaveRun::commit(SaveReport& report) {
    const SignalsHeld signals;
    if (auto error = m_exists ? replaceTarget(report) : takeFreeName()) {
        report.backup.clear();
        return error;
    }
    noteSaved();
    flushFolder(report);
    return std::nullopt;
}

SavedEdit SaveRun::describe(const PlannedEdit& edit) const {
    SavedEdit saved{edit.kind, edit.type, handleText(edit.handle), edit.what,
                    m_drawing.nameOf(edit.number)};
    static constexpr std::string_view named[] = {"LAYER", "APPID",        "BLOCK", "LTYPE",
                                                 "STYLE", "BLOCK_RECORD", "INSERT"};
    if (edit.number != 0 && std::ranges::find(named, edit.type) != std::end(named))
        saved.what = toUtf8(m_drawing.textOf(edit.number, kNameCode).value_or(L""));
    return saved;
}

Result<SaveReport> SaveRun::run() {
    faults::saveBegins();
    SaveReport report;
    const SavePlan plan = m_drawing.codec().plan(m_drawing.edits());
    for (const PlannedEdit& edit : plan.edits) report.edits.push_back(describe(edit));
    report.bytes = plan.size;
    if (!plan.refused.empty()) return failure("cannot be saved: " + plan.refused);
    if (!report.edits.empty() && m_drawing.release() < kFirstWithValues)
        return failure("cannot be changed: drawings before " + releaseName(kFirstWithValues) +
                       " hold no values; save it as " + releaseName(kFirstWithValues) +
                       " or later");
    const bool needed =
        !report.edits.empty() || !m_options.output.empty() || m_document.path.empty();
    if (auto error = findTarget()) return *error;
    if (!needed || m_options.dryRun) return report;
    if (auto error = lockTarget()) return *error;
    if (auto error = writeTemporary(plan)) return *error;
    if (auto error = prepareBackup()) return *error;
    if (m_drawing.source().failed()) return failure("cannot be saved: " + std::string(kNotRead));
    if (auto error = commit(report)) return *error;
    report.written = true;
    if (m_inPlace || m_document.path.empty()) {
        m_document.path = m_target;
        m_document.stamp = stateOf(m_file.get());
    }
    return report;
}

}  // namespace

FileState fileState(const fs::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? stateOf(status) : FileState();
}

std::vector<std::string> verifySave(const AcApDocument* document) {
    const Drawing& drawing = drawingOf(document);
    const Source& source = drawing.source();
    std::vector<std::string> found;
    std::uint64_t at = 0;
    for (const PlanPiece& piece : drawing.codec().plan(drawing.edits()).pieces) {
        const bool same =
            piece.copy ? piece.from == at : source.read(at, piece.bytes.size()) == piece.bytes;
        if (!same)
            found.push_back("a save would change the bytes from " + std::to_string(at) + " on");
        at += piece.copy ? piece.size : piece.bytes.size();
    }
    if (at != source.size())
        found.push_back("a save would write " + std::to_string(at) + " bytes of " +
                        std::to_string(source.size()));
    for (RecordNumber number = 1; number <= drawing.lastFileRecord(); ++number)
        if (const std::string oddity = drawing.codec().oddityOf(number); !oddity.empty())
            found.push_back("record " + std::to_string(number) + " (" + drawing.typeOf(number) +
                            "): " + oddity);
    return found;
}

Result<SaveReport> saveDocument(AcApDocument* document, const SaveOptions& options) {
    const auto refuse = [&](const std::string& why) {
        const fs::path& named = options.output.empty() ? document->path : options.output;
        return Error{ErrorKind::Unwritable, named.string(), 0, "cannot be saved: " + why};
    };
    if (const std::string& why = document->drawing->unwritable(); !why.empty()) return refuse(why);
    if (const auto& damage = document->drawing->damage(); damage && !options.dryRun)
        return refuse("it is damaged (" + damage->text + ")");
    // What was changed may rest on records that could not be read.
    if (document->drawing->source().failed()) return refuse(std::string(kNotRead));
    try {
        return SaveRun(*document, options).run();
    } catch (const ReadFailure& failure) {
        static_cast<void>(takeReadFailure());  // answered here
        return refuse(failure.error().text);
    }
}

}  // namespace mor::host
