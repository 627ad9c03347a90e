#include "host/dxf/text_pieces.h"

#include "host/dxf/plain_lines.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

namespace mor::host {

namespace {

constexpr std::size_t kReadSize = std::size_t{256} * 1024;
/// Readable bytes before and behind the text of a piece.
constexpr std::size_t kMargin = 64;
/// Blocks whose masks are made together.
constexpr std::size_t kBlocks = 32;
/// Bits that are appended together.
constexpr std::size_t kAtOnce = 4;

unsigned countBits(std::uint64_t bits) {
    bits -= bits >> 1U & 0x5555555555555555U;
    bits = (bits & 0x3333333333333333U) + (bits >> 2U & 0x3333333333333333U);
    bits = (bits + (bits >> 4U)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<unsigned>(bits * 0x0101010101010101U >> 56U);
}

/// Puts the offset of every set bit behind `out`, and answers where the next one belongs. Up to
/// `kAtOnce` more are written: how many there are cannot be foreseen, and asking costs more.
std::uint32_t* appendBits(std::uint64_t bits, std::uint32_t offset, std::uint32_t* out) {
    std::uint32_t* const end = out + countBits(bits);
    do {
        for (std::size_t i = 0; i < kAtOnce; ++i) {
            out[i] = offset + static_cast<std::uint32_t>(std::countr_zero(bits));
            bits &= bits - 1;
        }
        out += kAtOnce;
    } while (out < end);
    return end;
}

/// Where the line begins in which that place lies, not before `least`.
std::size_t lineStart(const char* text, std::size_t least, std::size_t inside) {
    const std::size_t feed = std::string_view(text + least, inside - least).rfind('\n');
    return feed == std::string_view::npos ? least : least + feed + 1;
}

}  // namespace

void findPlainCodes(const char* text, std::size_t begin, std::size_t limit, bool returns,
                    PlainCodes& found) {
    std::array<BlockMasks, kBlocks> masks;
    PlainLines lines(returns);
    found.count = 0;
    found.begin = begin;
    for (std::size_t at = begin; at < limit;) {
        const std::size_t blocks = std::min(kBlocks, (limit - at + kBlock - 1) / kBlock);
        maskBlocks(text + at, blocks, masks.data());
        const std::size_t most = found.count + kBlocks * kBlock / 2 + kAtOnce;
        if (found.places.size() < most) found.places.resize(2 * most);
        std::uint32_t* next = found.places.data() + found.count;
        for (std::size_t i = 0; i < blocks; ++i, at += kBlock) {
            const std::size_t left = limit - at;
            const PlainLines::Found block = lines.look(
                masks[i], left < kBlock ? (std::uint64_t{1} << left) - 1 : ~std::uint64_t{});
            next = appendBits(block.codes, static_cast<std::uint32_t>(at), next);
            if (block.odd == 0) continue;
            found.count = static_cast<std::size_t>(next - found.places.data());
            found.end =
                lineStart(text, begin, at + static_cast<std::size_t>(std::countr_zero(block.odd)));
            while (found.count > 0 && found.places[found.count - 1] >= found.end) --found.count;
            return;
        }
        found.count = static_cast<std::size_t>(next - found.places.data());
    }
    found.end = lines.valueIsOpen() ? lineStart(text, begin, limit - 1) : limit;
    while (found.count > 0 && found.places[found.count - 1] >= found.end) --found.count;
}

TextPieces::TextPieces(const Source& source, Ahead ahead, bool returns)
    : m_source(source), m_ahead(ahead == Ahead::Yes), m_returns(returns) {}

TextPieces::~TextPieces() {
    if (!m_thread.joinable()) return;
    {
        const std::scoped_lock lock(m_mutex);
        m_state = State::Stopped;
    }
    m_changed.notify_one();
    m_thread.join();
}

/// Of a long line more and more is read: it is looked through from its start each time.
void TextPieces::prepare(TextPiece& piece, const TextPiece& former, std::size_t from) const {
    const std::size_t left = former.end - from;
    const std::size_t room = kMargin + left + std::max(kReadSize, left) + kMargin;
    if (piece.buffer.size() < room) piece.buffer.resize(room);
    piece.begin = kMargin;
    if (left > 0) std::memcpy(piece.buffer.data() + kMargin, former.buffer.data() + from, left);
    const std::size_t end = kMargin + left;
    const std::uint64_t size = m_source.size();
    const auto want = static_cast<std::size_t>(std::min<std::uint64_t>(
        piece.buffer.size() - kMargin - end, size - std::min(size, former.read)));
    const std::size_t got = m_source.read(former.read, piece.buffer.data() + end, want);
    piece.read = former.read + got;
    piece.end = end + got;
    piece.last = got == 0 || piece.read >= size;
    piece.buffer[piece.begin - 1] = '\n';
    std::fill_n(piece.buffer.begin() + static_cast<std::ptrdiff_t>(piece.end), kMargin, ' ');
    piece.codes.begin = piece.codes.end = piece.codes.count = 0;
}

/// Behind the last value that ends: whatever the codes are, lines are lines.
std::size_t TextPieces::wholePairsEnd(const TextPiece& piece) const {
    const char* const text = piece.buffer.data();
    const std::size_t limit = lineStart(text, piece.begin, piece.end);
    const std::size_t sure = std::max(piece.codes.end, piece.begin);
    const auto feeds = std::count(text + sure, text + limit, '\n');
    return feeds % 2 == 0 ? limit : lineStart(text, piece.begin, limit - 1);
}

void TextPieces::runAhead() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock,
                       [this] { return m_state == State::Wanted || m_state == State::Stopped; });
        if (m_state == State::Stopped) return;
        m_state = State::Begun;
        lock.unlock();
        try {
            const TextPiece& former = m_pieces[m_now];
            TextPiece& piece = m_pieces[1 - m_now];
            prepare(piece, former, wholePairsEnd(former));
            findPlainCodes(piece.buffer.data(), piece.begin,
                           lineStart(piece.buffer.data(), piece.begin, piece.end), m_returns,
                           piece.codes);
        } catch (...) {
            m_failure = std::current_exception();
        }
        lock.lock();
        if (m_state == State::Stopped) return;
        m_state = State::Ready;
        m_changed.notify_one();
    }
}

/// Goes on without where the system has no thread to give.
void TextPieces::startAhead() {
    try {
        if (!m_thread.joinable()) m_thread = std::thread([this] { runAhead(); });
    } catch (const std::system_error&) {
        m_ahead = false;
        return;
    }
    {
        const std::scoped_lock lock(m_mutex);
        m_state = State::Wanted;
    }
    m_changed.notify_one();
}

/// Ends what the other thread does. `Ready` when it has prepared the piece.
TextPieces::State TextPieces::takeOver() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_state != State::Begun; });
    return std::exchange(m_state, State::None);
}

void TextPieces::settle() { static_cast<void>(takeOver()); }

TextPiece& TextPieces::next(std::size_t from) {
    if (takeOver() != State::Ready)
        prepare(m_pieces[1 - m_now], m_pieces[m_now], from);
    else if (m_failure)
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    m_now = 1 - m_now;
    if (m_ahead && !m_pieces[m_now].last) startAhead();
    return m_pieces[m_now];
}

}  // namespace mor::host
