#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace mor::host {

/// What kind of failure: decides the exit code of a tool.
enum class ErrorKind {
    Unreadable,  ///< the file cannot be opened, is no drawing, or of a form that is not read
    Damaged,     ///< the drawing ends or breaks off where it must not
    Unwritable,  ///< the drawing cannot be written: permissions, space, release
    Busy,        ///< another process is saving it or has just saved it: doing it all again may work
    Invalid      ///< the argument of a call makes no sense
};

/// A failure with its place. `line` is 0 where a line means nothing.
struct Error {
    ErrorKind kind = ErrorKind::Invalid;
    std::string file;
    std::uint64_t line = 0;
    std::string text;

    /// "FILE:LINE: TEXT", without the parts that are not known.
    [[nodiscard]] std::string message() const {
        std::string result = file;
        if (line != 0) result += ":" + std::to_string(line);
        if (!result.empty()) result += ": ";
        return result + text;
    }
};

/// The file of an open drawing could not be read. Thrown by every call that needed what was to be
/// read: a record that cannot be read is not an empty one.
class ReadFailure : public std::runtime_error {
public:
    explicit ReadFailure(Error error)
        : std::runtime_error(error.message()), m_error(std::move(error)) {}
    [[nodiscard]] const Error& error() const noexcept { return m_error; }

private:
    Error m_error;
};
/// The first such failure since the last call, also where somebody swallowed the exception or a
/// file was cut short, which throws nothing: what came out then counts for nothing.
[[nodiscard]] std::optional<Error> takeReadFailure();

/// A value or the reason why there is none.
template <typename T>
class [[nodiscard]] Result {
public:
    Result(T value) : m_content(std::move(value)) {}      // NOLINT: a value is a result
    Result(Error error) : m_content(std::move(error)) {}  // NOLINT: so is an error

    explicit operator bool() const noexcept { return std::holds_alternative<T>(m_content); }
    [[nodiscard]] T& value() { return std::get<T>(m_content); }
    [[nodiscard]] const T& value() const { return std::get<T>(m_content); }
    [[nodiscard]] const Error& error() const { return std::get<Error>(m_content); }

private:
    std::variant<T, Error> m_content;
};

}  // namespace mor::host
