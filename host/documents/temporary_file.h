#pragma once

#include "host/faults.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <unistd.h>

namespace mor::host {

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
void removeName(const std::filesystem::path& path);

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

/// Names beside a drawing that only its saves use: ".NAME.moradmin-" and eight random digits. Each
/// is locked while the save that made it lives, so that the next one can tell what was left.
[[nodiscard]] std::filesystem::path uniqueNameBeside(const std::filesystem::path& target);

/// Takes away the names of saves of `target` that were cut short; true when another process is
/// saving it at this moment. `held` is the target under our own lock, -1 for none.
[[nodiscard]] bool clearLeftNames(const std::filesystem::path& target, int held);

/// A name beside the drawing that goes away at the end, or when `abandonSaves` is called. At most
/// two live at once.
class TemporaryName {
public:
    TemporaryName();
    ~TemporaryName();
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    /// To be called before the file is made.
    void set(std::filesystem::path path);
    void forget();  ///< the file has another name now, or is to stay
    void remove();  ///< tried again at the end when it fails
    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

private:
    std::size_t m_slot = 0;
    std::filesystem::path m_path;
};

/// Holds back the signals that end the process while one file takes the place of the other.
class SignalsHeld {
public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t m_former{};
};

/// From here on `abandonSaves` comes too late.
void noteSaved() noexcept;

}  // namespace mor::host
