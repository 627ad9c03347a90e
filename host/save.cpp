#include "host/document.h"
#include "host/dxf_plan.h"
#include "host/faults.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace mor::host {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBufferSize = 1 << 20;

/// Makes a system call of the save, unless a test lets it fail or the process end before it.
template <typename Call>
auto guarded(std::string_view name, Call call) -> decltype(call()) {
    if (faults::beforeSaveCall(name) == faults::SaveCall::Fail) {
        errno = EIO;
        return -1;
    }
    return call();
}

/// Takes a name away, if it is there.
void removeName(const fs::path& path) {
    static_cast<void>(guarded("unlink", [&] { return ::unlink(path.c_str()); }));
}

/// Owns a file descriptor.
class Descriptor {
public:
    Descriptor() = default;
    ~Descriptor() { reset(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    void reset(int value = -1) {
        if (m_value >= 0) ::close(m_value);
        m_value = value;
    }
    [[nodiscard]] int get() const { return m_value; }
    [[nodiscard]] bool valid() const { return m_value >= 0; }

private:
    int m_value = -1;
};

bool writeAll(int descriptor, const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t done = guarded("write", [&] { return ::write(descriptor, bytes, size); });
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) return false;
        bytes += done;
        size -= static_cast<std::size_t>(done);
    }
    return true;
}

/// Copies within the kernel where that works, else through a buffer.
bool copyRange(const Source& source, std::uint64_t from, std::uint64_t size, int target) {
    auto offset = static_cast<off_t>(from);
    while (size > 0 && source.descriptor() >= 0) {
        const ssize_t done = guarded("copy_file_range", [&] {
            return ::copy_file_range(source.descriptor(), &offset, target, nullptr,
                                     static_cast<std::size_t>(size), 0);
        });
        if (done < 0 && errno == EINTR) continue;
        if (done <= 0) break;
        size -= static_cast<std::uint64_t>(done);
    }
    std::vector<char> buffer(size > 0 ? kBufferSize : 0);
    auto at = source.descriptor() >= 0 ? static_cast<std::uint64_t>(offset) : from;
    while (size > 0) {
        const std::size_t want =
            static_cast<std::size_t>(std::min<std::uint64_t>(size, buffer.size()));
        const std::size_t got = source.read(at, buffer.data(), want);
        if (got == 0) {
            errno = EIO;
            return false;
        }
        if (!writeAll(target, buffer.data(), got)) return false;
        at += got;
        size -= got;
    }
    return true;
}

bool writePlan(const SavePlan& plan, const Source& source, int target) {
    for (const PlanPiece& piece : plan.pieces) {
        const bool done = piece.first == 0
                              ? writeAll(target, piece.bytes.data(), piece.bytes.size())
                              : copyRange(source, piece.from, piece.size, target);
        if (!done) return false;
    }
    return true;
}

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

/// One save, step by step; what it leaves behind on a failure is taken away again.
class SaveRun {
public:
    SaveRun(AcApDocument& document, const SaveOptions& options)
        : m_document(document), m_drawing(*document.drawing), m_options(options) {}
    ~SaveRun() {
        if (!m_temporary.empty()) ::unlink(m_temporary.c_str());
        if (!m_backupTemporary.empty()) ::unlink(m_backupTemporary.c_str());
    }
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
    std::optional<Error> findTarget();
    std::optional<Error> lockTarget();
    std::optional<Error> writeTemporary(const SavePlan& plan);
    std::optional<Error> readBack(const SavePlan& plan);
    std::optional<Error> keepBackup(SaveReport& report);
    std::optional<Error> replaceTarget();
    [[nodiscard]] bool copyToBackup();
    [[nodiscard]] fs::path beside(const std::string& suffix) const {
        return m_target.parent_path() / ("." + m_target.filename().string() + suffix);
    }

    AcApDocument& m_document;
    Drawing& m_drawing;
    const SaveOptions& m_options;
    fs::path m_target;
    bool m_inPlace = false;  ///< the file that the document was opened from
    bool m_exists = false;
    struct stat m_status {};
    Descriptor m_lock;
    fs::path m_temporary;        ///< to be removed when the save ends early
    fs::path m_backupTemporary;  ///< the same
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
    if (m_exists && !m_options.overwrite) return failure("exists already; choose another name");
    if (m_exists && ::access(m_target.c_str(), W_OK) != 0)
        return systemFailure("cannot be written");
    if (!m_exists && m_inPlace) return failure("is gone since it was loaded");
    if (!fs::is_directory(m_target.parent_path(), code))
        return failure("its folder does not exist");
    return std::nullopt;
}

std::optional<Error> SaveRun::lockTarget() {
    if (!m_exists) return std::nullopt;
    m_lock.reset(guarded("open", [&] { return ::open(m_target.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!m_lock.valid()) return systemFailure("cannot be opened");
    if (guarded("flock", [&] { return ::flock(m_lock.get(), LOCK_EX | LOCK_NB); }) != 0)
        return errno == EWOULDBLOCK ? failure("another process is saving it")
                                    : systemFailure("cannot be locked");
    // Looked at again under the lock: another process may have replaced it just now.
    struct stat status {};
    if (guarded("stat", [&] { return ::stat(m_target.c_str(), &status); }) != 0)
        return systemFailure("cannot be looked at");
    const FileStamp held = stampOf(m_lock.get());
    const bool replaced = held.inode != static_cast<std::uint64_t>(status.st_ino) ||
                          held.device != static_cast<std::uint64_t>(status.st_dev);
    if (replaced || (m_inPlace && held != m_document.stamp))
        return failure("was changed by another program since it was loaded; load it again");
    return std::nullopt;
}

std::optional<Error> SaveRun::writeTemporary(const SavePlan& plan) {
    const fs::path temporary = beside(".moradmin-new");
    removeName(temporary);  // of a save that was cut short
    const mode_t mode = m_exists ? 0600 : 0666;
    Descriptor file;
    file.reset(guarded("open", [&] {
        return ::open(temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
    }));
    if (!file.valid()) return systemFailure("no temporary file can be made beside it");
    m_temporary = temporary;
    if (!writePlan(plan, *m_drawing.index().source, file.get()))
        return systemFailure("writing failed");
    if (m_exists) {
        // Owner first: it may take mode bits away. Only the superuser can give files to others.
        static_cast<void>(guarded(
            "fchown", [&] { return ::fchown(file.get(), m_status.st_uid, m_status.st_gid); }));
        if (guarded("fchmod", [&] { return ::fchmod(file.get(), m_status.st_mode & 07777); }) != 0)
            return systemFailure("its mode cannot be kept");
    }
    if (guarded("fsync", [&] { return ::fsync(file.get()); }) != 0)
        return systemFailure("flushing failed");
    return std::nullopt;
}

std::optional<Error> SaveRun::readBack(const SavePlan& plan) {
    auto source = openFileSource(m_temporary);
    if (!source) return failure("reading back failed: " + source.error().text);
    const auto written = indexDxf(std::move(source.value()), m_temporary.string());
    if (!written) return failure("what was written does not read back: " + written.error().text);
    const std::string difference = comparePlan(plan, m_drawing, *written.value());
    if (!difference.empty())
        return failure("what was written reads back differently: " + difference);
    return std::nullopt;
}

bool SaveRun::copyToBackup() {
    Descriptor copy;
    copy.reset(guarded("open", [&] {
        return ::open(m_backupTemporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                      m_status.st_mode & 07777);
    }));
    if (!copy.valid()) return false;
    const auto source = openFileSource(m_target);
    if (!source || !copyRange(*source.value(), 0, source.value()->size(), copy.get())) return false;
    return guarded("fsync", [&] { return ::fsync(copy.get()); }) == 0;
}

std::optional<Error> SaveRun::keepBackup(SaveReport& report) {
    if (!m_exists || !m_options.backup) return std::nullopt;
    m_backupTemporary = beside(".moradmin-bak");
    removeName(m_backupTemporary);
    const int linked =
        guarded("link", [&] { return ::link(m_target.c_str(), m_backupTemporary.c_str()); });
    if (linked != 0 && !copyToBackup())
        return systemFailure("no backup can be kept (--no-backup does without)");
    const fs::path backup = m_target.string() + ".bak";
    if (guarded("rename", [&] { return ::rename(m_backupTemporary.c_str(), backup.c_str()); }) != 0)
        return systemFailure("the backup cannot take its name");
    // Where both names already mean one file, rename leaves both.
    removeName(m_backupTemporary);
    m_backupTemporary.clear();
    report.backup = backup;
    return std::nullopt;
}

std::optional<Error> SaveRun::replaceTarget() {
    const int renamed = guarded("rename", [&]() -> int {
        if (m_exists || m_options.overwrite) return ::rename(m_temporary.c_str(), m_target.c_str());
        // A name that appeared meanwhile is not taken from its owner.
        if (::link(m_temporary.c_str(), m_target.c_str()) != 0) return -1;
        return ::unlink(m_temporary.c_str());
    });
    if (renamed != 0) return systemFailure("the new file cannot take its name");
    m_temporary.clear();
    Descriptor folder;
    folder.reset(guarded("open", [&] {
        return ::open(m_target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }));
    if (!folder.valid()) return systemFailure("saved, but its folder cannot be flushed");
    if (guarded("fsync", [&] { return ::fsync(folder.get()); }) != 0 && errno != EINVAL)
        return systemFailure("saved, but its folder cannot be flushed");
    return std::nullopt;
}

Result<SaveReport> SaveRun::run() {
    faults::saveBegins();
    SaveReport report;
    SavePlan plan = planSave(m_drawing);
    report.edits = std::move(plan.edits);
    report.bytes = plan.size;
    const bool needed =
        !report.edits.empty() || !m_options.output.empty() || m_document.path.empty();
    if (auto error = findTarget()) return *error;
    if (!needed || m_options.dryRun) return report;
    if (auto error = lockTarget()) return *error;
    if (auto error = writeTemporary(plan)) return *error;
    if (auto error = readBack(plan)) return *error;
    if (auto error = keepBackup(report)) return *error;
    const FileStamp written = [&] {
        Descriptor file;
        file.reset(::open(m_temporary.c_str(), O_RDONLY | O_CLOEXEC));
        return stampOf(file.get());
    }();
    if (auto error = replaceTarget()) return *error;
    report.written = true;
    if (m_inPlace || m_document.path.empty()) {
        m_document.path = m_target;
        m_document.stamp = written;
    }
    return report;
}

}  // namespace

Result<SaveReport> saveDocument(AcApDocument* document, const SaveOptions& options) {
    const auto refuse = [&](const std::string& why) {
        const fs::path& named = options.output.empty() ? document->path : options.output;
        return Error{ErrorKind::Unwritable, named.string(), 0, "cannot be saved: " + why};
    };
    // What was changed may rest on records that could not be read.
    if (document->drawing->index().source->failed())
        return refuse("the drawing could not be read to its end; load it again");
    try {
        return SaveRun(*document, options).run();
    } catch (const ReadFailure& failure) {
        static_cast<void>(takeReadFailure());  // answered here
        return refuse(failure.error().text);
    }
}

}  // namespace mor::host
