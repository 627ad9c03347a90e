#include "host/dwg/pack.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace mor::host {

namespace {

constexpr std::size_t kFewest = 3;      // bytes of a match
constexpr std::size_t kFirstMatch = 4;  // a shorter first run cannot be written
constexpr std::size_t kNear = 0x400;
constexpr std::size_t kMiddle = 0x4000;
constexpr std::size_t kFar = 0x7FFE;
constexpr std::size_t kFarBase = 0x3FFF;
constexpr std::size_t kTries = 16;
constexpr std::size_t kHashes = std::size_t{1} << 14U;

struct Match {
    std::size_t length = 0;
    std::size_t distance = 0;  ///< less 1
};

class Packer {
public:
    explicit Packer(std::string_view page) : m_page(page), m_before(page.size(), kNone) {
        m_latest.fill(kNone);
    }

    std::string run() {
        std::size_t literals = 0;  // where those begin that are not written yet
        std::size_t at = 0;
        while (at < m_page.size()) {
            const Match match = at >= kFirstMatch ? longest(at) : Match();
            if (!isWorth(match)) {
                note(at++);
                continue;
            }
            writeLiterals(literals, at);
            writeMatch(match);
            for (const std::size_t end = at + match.length; at < end; ++at) note(at);
            literals = at;
        }
        writeLiterals(literals, at);
        m_out += "\x11";
        m_out.append(2, '\0');
        return std::move(m_out);
    }

private:
    static constexpr std::size_t kNone = SIZE_MAX;

    [[nodiscard]] std::size_t hashAt(std::size_t at) const {
        const auto byte = [&](std::size_t i) {
            return std::uint32_t{static_cast<unsigned char>(m_page[at + i])};
        };
        return ((byte(0) << 16U | byte(1) << 8U | byte(2)) * 0x9E3779B1U >> 18U) % kHashes;
    }
    void note(std::size_t at) {
        if (at + kFewest > m_page.size()) return;
        std::size_t& latest = m_latest[hashAt(at)];
        m_before[at] = latest;
        latest = at;
    }
    [[nodiscard]] Match longest(std::size_t at) const {
        Match best;
        if (at + kFewest > m_page.size()) return best;
        std::size_t from = m_latest[hashAt(at)];
        for (std::size_t tries = 0; tries < kTries && from != kNone; ++tries) {
            const std::size_t distance = at - from - 1;
            if (distance > kFar) break;
            std::size_t length = 0;
            while (at + length < m_page.size() && m_page[from + length] == m_page[at + length])
                ++length;
            if (length > best.length) best = {length, distance};
            from = m_before[from];
        }
        return best;
    }
    /// Whether there is a form for it.
    static bool isWorth(const Match& match) {
        if (match.length < kFewest) return false;
        return match.distance < kMiddle || match.length >= 4;
    }
    void put(std::size_t byte) { m_out += static_cast<char>(byte); }
    void putLong(std::size_t count) {
        if (count <= 0xFF) return put(count);
        put(0);
        for (count -= 0xFF; count > 0xFF; count -= 0xFF) put(0);
        put(count);
    }
    void writeLiterals(std::size_t from, std::size_t to) {
        const std::size_t count = to - from;
        if (count == 0) return;
        if (count <= 3 && m_countAt != kNone) {
            m_out[m_countAt] = static_cast<char>(static_cast<unsigned char>(m_out[m_countAt]) |
                                                 static_cast<unsigned char>(count));
        } else if (count <= 18) {
            put(count - 3);
        } else {
            put(0);
            std::size_t rest = count - 18;
            for (; rest > 0xFF; rest -= 0xFF) put(0);
            put(rest);
        }
        m_out += m_page.substr(from, count);
    }
    void writeMatch(const Match& match) {
        const auto [n, d] = match;
        if (n <= 14 && d < kNear) {
            m_countAt = m_out.size();
            put((n + 1) << 4U | (d & 3U) << 2U);
            return put(d >> 2U);
        }
        std::size_t offset = d;
        if (d < kMiddle) {
            put(n <= 33 ? n + 0x1E : 0x20);
            if (n > 33) putLong(n - 0x21);
        } else {
            offset = d - kFarBase;
            // One form has lengths of 4 to 9, the other the longer ones.
            if (n <= 9) {
                put(0x10 | (n - 2));
            } else {
                put(0x10);
                putLong(n - 9);
            }
        }
        m_countAt = m_out.size();
        put((offset & 0x3FU) << 2U);
        put(offset >> 6U);
    }

    std::string_view m_page;
    std::vector<std::size_t> m_before;  ///< the place before of the same hash
    std::array<std::size_t, kHashes> m_latest{};
    std::string m_out;
    std::size_t m_countAt = kNone;  ///< the byte whose low bits tell how many literals follow
};

}  // namespace

std::string pack(std::string_view page) { return Packer(page).run(); }

}  // namespace mor::host
