#include "host/dwg/unpack.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace mor::host {

namespace {

constexpr unsigned kEndOfStream = 0x11;
constexpr std::size_t kFarOffset = 0x3FFF;
constexpr std::size_t kWide = 16;

/// Reads packed bytes, writes unpacked ones; anything outside of either fails.
class Unpacker {
public:
    Unpacker(std::string_view packed, char* out, std::size_t size)
        : m_packed(packed), m_out(out), m_size(size) {}

    bool run() {
        m_step = 0;
        copyLiterals(literalRun());
        if (m_step == 0) m_step = next();
        while (!m_failed && m_step != kEndOfStream) takeStep();
        std::memset(m_out + m_done, 0, std::min(kWide, m_size - m_done));
        return !m_failed;
    }

private:
    unsigned next() {
        if (m_at >= m_packed.size()) {
            m_failed = true;
            return 0;
        }
        return static_cast<unsigned char>(m_packed[m_at++]);
    }
    /// A count that goes on over bytes of 0.
    std::size_t longCount() {
        std::size_t count = 0;
        unsigned byte = next();
        for (; byte == 0 && !m_failed; byte = next()) count += 0xFF;
        return count + byte;
    }
    /// How many literals follow; 0 when the byte that was read is the next step already.
    std::size_t literalRun() {
        const unsigned byte = next();
        if ((byte & 0xF0U) != 0) {
            m_step = byte;
            return 0;
        }
        return byte == 0 ? 0x0F + longCount() + 3 : byte + 3;
    }
    void copyLiterals(std::size_t count) {
        if (m_failed || count > m_packed.size() - m_at || count > m_size - m_done) {
            m_failed = true;
            return;
        }
        // Most runs are short: sixteen bytes are copied at once where there is room for them.
        if (count <= kWide && kWide <= m_packed.size() - m_at && kWide <= m_size - m_done)
            std::memcpy(m_out + m_done, m_packed.data() + m_at, kWide);
        else
            std::memcpy(m_out + m_done, m_packed.data() + m_at, count);
        m_at += count;
        m_done += count;
    }
    void copyBack(std::size_t distance, std::size_t count) {
        if (m_failed || distance >= m_done || count > m_size - m_done) {
            m_failed = true;
            return;
        }
        repeat(m_out + m_done, distance + 1, count, m_size - m_done);
        m_done += count;
    }
    void takeStep() {
        const unsigned step = m_step;
        m_step = 0;
        std::size_t count = 0;
        std::size_t distance = 0;
        std::size_t literals = 0;
        if (step < 0x10) {
            m_failed = true;
        } else if (step >= 0x40) {
            count = (step >> 4U) - 1;
            distance = std::size_t{next()} << 2U | ((step >> 2U) & 3U);
            literals = step & 3U;
        } else {
            if (step < 0x20)
                count = step == 0x10 ? longCount() + 9 : (step & 0x0FU) + 2;
            else
                count = step == 0x20 ? longCount() + 0x21 : step - 0x1E;
            const unsigned low = next();
            distance = (low >> 2U) | std::size_t{next()} << 6U;
            if (step < 0x20) distance += kFarOffset;
            literals = low & 3U;
        }
        copyBack(distance, count);
        if (m_failed) return;
        copyLiterals(literals == 0 ? literalRun() : literals);
        if (m_step == 0) m_step = next();
    }

    std::string_view m_packed;
    std::size_t m_at = 0;
    char* m_out;
    std::size_t m_size;
    std::size_t m_done = 0;
    unsigned m_step = 0;  ///< 0: to be read
    bool m_failed = false;
};

}  // namespace

void repeat(char* to, std::size_t distance, std::size_t count, std::size_t room) {
    // What lies behind is written over later, as long as it lies within the room.
    if (distance >= kWide && count + kWide <= room) {
        for (std::size_t i = 0; i < count; i += kWide)
            std::memcpy(to + i, to + i - distance, kWide);
    } else if (distance == 1) {
        std::memset(to, static_cast<unsigned char>(to[-1]), count);
    } else {
        for (std::size_t i = 0; i < count; ++i) to[i] = *(to + i - distance);
    }
}

bool unpack(std::string_view packed, char* out, std::size_t size) {
    return Unpacker(packed, out, size).run();
}

}  // namespace mor::host
