#pragma once

#include "host/result.h"

#include <stdexcept>
#include <string>
#include <utility>

namespace mor::tool {

/// What the process answers; scripts rely on the numbers.
enum ExitCode : int {
    kDone = 0,
    kNo = 1,          ///< the answer is no: differs, no match, missing
    kUsage = 2,       ///< called wrongly
    kUnreadable = 3,  ///< the drawing cannot be read
    kDamaged = 4,     ///< damage is left
    kUnwritable = 5,  ///< the drawing cannot be written
    kRefused = 6,     ///< the store refused
    kInterrupted = 130
};

/// Ends a command with a message and an exit code. `path` is the drawing's or the store's, may be
/// empty.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& message, std::string path = {})
        : std::runtime_error(message), m_code(code), m_path(std::move(path)) {}
    explicit Failure(const host::Error& error)
        : Failure(codeOf(error.kind), error.message(), error.file) {
        m_busy = error.kind == host::ErrorKind::Busy;
    }

    [[nodiscard]] ExitCode code() const { return m_code; }
    [[nodiscard]] const std::string& path() const { return m_path; }
    /// Whether another process saves the drawing or has just saved it: the whole command may work
    /// when it is run again.
    [[nodiscard]] bool busy() const { return m_busy; }

private:
    static ExitCode codeOf(host::ErrorKind kind) {
        switch (kind) {
            case host::ErrorKind::Unreadable:
            case host::ErrorKind::Damaged:
                return kUnreadable;
            case host::ErrorKind::Unwritable:
            case host::ErrorKind::Busy:
                return kUnwritable;
            case host::ErrorKind::Invalid:
                break;
        }
        return kUsage;
    }

    ExitCode m_code;
    std::string m_path;
    bool m_busy = false;
};

/// Throws Failure when a drawing could not be read and nobody has said so yet.
inline void refuseLostReadings() {
    if (const auto lost = host::takeReadFailure()) throw Failure(*lost);
}

}  // namespace mor::tool
