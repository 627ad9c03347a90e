#include "host/dwg/unpack.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace mor::host {

namespace {

/// A stretch of literals that is laid down as a whole: how many, and from where in the run.
struct Piece {
    std::uint8_t size;
    std::uint8_t from;
};

constexpr std::size_t kRun = 32;

/// In which pieces a run of fewer than 32 literals is laid down.
constexpr std::array<std::array<Piece, 5>, kRun> kPieces = {{
    {},
    {{{1, 0}}},
    {{{2, 0}}},
    {{{3, 0}}},
    {{{4, 0}}},
    {{{1, 4}, {4, 0}}},
    {{{1, 5}, {4, 1}, {1, 0}}},
    {{{2, 5}, {4, 1}, {1, 0}}},
    {{{8, 0}}},
    {{{1, 8}, {8, 0}}},
    {{{1, 9}, {8, 1}, {1, 0}}},
    {{{2, 9}, {8, 1}, {1, 0}}},
    {{{4, 8}, {8, 0}}},
    {{{1, 12}, {4, 8}, {8, 0}}},
    {{{1, 13}, {4, 9}, {8, 1}, {1, 0}}},
    {{{2, 13}, {4, 9}, {8, 1}, {1, 0}}},
    {{{16, 0}}},
    {{{8, 9}, {1, 8}, {8, 0}}},
    {{{1, 17}, {16, 1}, {1, 0}}},
    {{{3, 16}, {16, 0}}},
    {{{4, 16}, {16, 0}}},
    {{{1, 20}, {4, 16}, {16, 0}}},
    {{{2, 20}, {4, 16}, {16, 0}}},
    {{{3, 20}, {4, 16}, {16, 0}}},
    {{{8, 16}, {16, 0}}},
    {{{8, 17}, {1, 16}, {16, 0}}},
    {{{1, 25}, {8, 17}, {1, 16}, {16, 0}}},
    {{{2, 25}, {8, 17}, {1, 16}, {16, 0}}},
    {{{4, 24}, {8, 16}, {16, 0}}},
    {{{1, 28}, {4, 24}, {8, 16}, {16, 0}}},
    {{{2, 28}, {4, 24}, {8, 16}, {16, 0}}},
    {{{1, 30}, {4, 26}, {8, 18}, {16, 2}, {2, 0}}},
}};

/// Reads packed bytes, writes unpacked ones; anything outside of either fails.
class Unpacker2007 {
public:
    Unpacker2007(std::string_view packed, char* out, std::size_t size)
        : m_packed(packed), m_out(out), m_size(size) {}

    bool run() {
        m_code = next();
        if (m_code >> 4U == 2) {
            m_at += 2;
            m_literals = next() & 7U;
        }
        while (!m_failed && m_at < m_packed.size()) {
            if (m_literals == 0) m_literals = literalCount();
            layDown(m_literals);
            m_literals = 0;
            if (m_failed || m_at >= m_packed.size()) break;
            m_code = next();
            copySteps();
        }
        std::memset(m_out + m_done, 0, std::min(kRun, m_size - m_done));
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
    std::size_t nextWord() {
        const std::size_t low = next();
        return low | std::size_t{next()} << 8U;
    }
    std::size_t literalCount() {
        std::size_t count = m_code + 8;
        if (count != 0x17) return count;
        std::size_t more = next();
        count += more;
        if (more != 0xFF) return count;
        do {
            more = nextWord();
            count += more;
        } while (more == 0xFFFF && !m_failed);
        return count;
    }
    void layDown(std::size_t count) {
        if (m_failed || count > m_packed.size() - m_at || count > m_size - m_done) {
            m_failed = true;
            return;
        }
        const char* from = m_packed.data() + m_at;
        for (; count >= kRun; count -= kRun, from += kRun)
            for (const std::size_t eight : {24U, 16U, 8U, 0U}) put(from + eight, 8);
        for (const Piece& piece : kPieces[count]) layPiece(from + piece.from, piece.size);
        m_at = static_cast<std::size_t>(from - m_packed.data()) + count;
    }
    /// Pieces of 2 and 3 are reversed, one of 16 is swapped by halves.
    void layPiece(const char* from, std::size_t size) {
        if (size == 2 || size == 3) {
            for (std::size_t i = size; i > 0; --i) put(from + i - 1, 1);
        } else if (size == 16) {
            put(from + 8, 8);
            put(from, 8);
        } else {
            put(from, size);
        }
    }
    void put(const char* from, std::size_t size) {
        std::memcpy(m_out + m_done, from, size);
        m_done += size;
    }
    void copySteps() {
        while (!m_failed) {
            copyStep();
            m_literals = m_code & 7U;
            if (m_literals != 0 || m_at >= m_packed.size()) return;
            m_code = next();
            if (m_code >> 4U == 0) return;
            if (m_code >> 4U == 15) m_code &= 15U;
        }
    }
    void copyStep() {
        const unsigned high = m_code >> 4U;
        std::size_t count = 0;
        std::size_t distance = 0;
        if (high == 0) {
            count = (m_code & 15U) + 0x13;
            distance = next();
            m_code = next();
            count += (m_code >> 3U) & 0x10U;
            distance += ((m_code & 0x78U) << 5U) + 1;
        } else if (high == 1) {
            count = (m_code & 15U) + 3;
            distance = next();
            m_code = next();
            distance += ((m_code & 0xF8U) << 5U) + 1;
        } else if (high == 2) {
            distance = nextWord();
            count = m_code & 7U;
            if ((m_code & 8U) == 0) {
                m_code = next();
                count += m_code & 0xF8U;
            } else {
                ++distance;
                count += std::size_t{next()} << 3U;
                m_code = next();
                count += ((m_code & 0xF8U) << 8U) + 0x100;
            }
        } else {
            count = high;
            distance = m_code & 15U;
            m_code = next();
            distance += ((m_code & 0xF8U) << 1U) + 1;
        }
        if (m_failed || distance == 0 || distance > m_done || count > m_size - m_done) {
            m_failed = true;
            return;
        }
        repeat(m_out + m_done, distance, count, m_size - m_done);
        m_done += count;
    }

    std::string_view m_packed;
    std::size_t m_at = 0;
    char* m_out;
    std::size_t m_size;
    std::size_t m_done = 0;
    unsigned m_code = 0;
    std::size_t m_literals = 0;
    bool m_failed = false;
};

}  // namespace

bool unpack2007(std::string_view packed, char* out, std::size_t size) {
    return Unpacker2007(packed, out, size).run();
}

}  // namespace mor::host
