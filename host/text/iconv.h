#pragma once

#include <array>
#include <cerrno>
#include <iconv.h>
#include <string>
#include <string_view>

namespace mor::host {

/// A conversion between two encodings that the C library knows by name.
class Iconv {
public:
    Iconv(const char* to, const char* from) : m_handle(::iconv_open(to, from)) {}
    ~Iconv() {
        if (valid()) ::iconv_close(m_handle);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    [[nodiscard]] bool valid() const {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): so iconv says that it knows no such name
        return m_handle != reinterpret_cast<iconv_t>(-1);
    }

    /// Converts one stretch; answers how much of it was consumed, and appends what came of it.
    std::size_t convert(std::string_view bytes, std::string& result) const {
        auto* in = const_cast<char*>(bytes.data());  // iconv does not write to it
        std::size_t left = bytes.size();
        std::array<char, 1024> buffer;  // left as it is: cleared, it would cost more than a letter
        while (left > 0) {
            char* out = buffer.data();
            std::size_t room = buffer.size();
            const std::size_t answer = ::iconv(m_handle, &in, &left, &out, &room);
            result.append(buffer.data(), buffer.size() - room);
            if (answer == static_cast<std::size_t>(-1) && errno != E2BIG) break;
        }
        // A letter that waits for an accent behind it (Hebrew, Vietnamese) has not come out yet.
        char* out = buffer.data();
        std::size_t room = buffer.size();
        ::iconv(m_handle, nullptr, nullptr, &out, &room);
        result.append(buffer.data(), buffer.size() - room);
        return bytes.size() - left;
    }

private:
    iconv_t m_handle;
};

}  // namespace mor::host
