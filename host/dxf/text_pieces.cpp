#include "host/dxf/text_pieces.h"

#include "host/dxf/plain_lines.h"

#include <algorithm>
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
/// Where the line begins in which that place lies, not before `least`.
std::size_t lineStart(const char* text, std::size_t least, std::size_t inside) {
    const std::size_t feed = std::string_view(text + least, inside - least).rfind('\n');
    return feed == std::string_view::npos ? least : least + feed + 1;
}

/// What work threw; null when it ended.
template <typename Work>
std::exception_ptr failureOf(const Work& work) {
    try {
        work();
    } catch (...) {
        return std::current_exception();
    }
    return nullptr;
}

}  // namespace

void findPlainCodes(const char* text, std::size_t begin, std::size_t limit, bool returns,
                    PlainCodes& found) {
    BlockMasks masks;
    PlainLines lines(returns);
    found.begin = begin;
    found.masks.resize((limit - begin + kBlock - 1) / kBlock);
    auto to = found.masks.begin();
    for (std::size_t at = begin; at < limit; at += kBlocks * kBlock) {
        const std::size_t left = limit - at;
        const std::size_t blocks = std::min(kBlocks, (left + kBlock - 1) / kBlock);
        maskBlocks(text + at, blocks, masks);
        const bool whole = left >= blocks * kBlock;
        lines.look(masks, blocks,
                   whole ? ~std::uint64_t{} : (std::uint64_t{1} << left % kBlock) - 1);
        to = std::copy_n(lines.codes().begin(), blocks, to);
        const std::size_t odd = lines.firstOdd();
        if (odd == kBlocks) continue;
        const auto bit = static_cast<std::size_t>(std::countr_zero(lines.odd(odd)));
        found.end = lineStart(text, begin, at + odd * kBlock + bit);
        return;
    }
    found.end = lines.valueIsOpen() ? lineStart(text, begin, limit - 1) : limit;
}

TextPieces::TextPieces(const Source& source, Ahead ahead, bool returns)
    : m_source(source), m_ahead(ahead == Ahead::Yes), m_returns(returns) {}

TextPieces::~TextPieces() {
    settle();
    if (m_thread.joinable()) m_thread.join();
}

/// Of a long line more and more is read: it is looked through from its start each time.
void TextPieces::prepare(TextPiece& piece, const TextPiece& former, std::size_t from) const {
    const std::size_t left = former.end - from;
    const std::uint64_t size = m_source.size();
    const std::uint64_t rest = size - std::min(size, former.read);
    const auto fresh =
        static_cast<std::size_t>(std::min<std::uint64_t>(std::max(kReadSize, left), rest));
    const std::size_t room = kMargin + left + fresh + kMargin;
    if (piece.buffer.size() < room) piece.buffer.resize(room);
    piece.begin = kMargin;
    if (left > 0) std::memcpy(piece.buffer.data() + kMargin, former.buffer.data() + from, left);
    const std::size_t end = kMargin + left;
    const auto want = static_cast<std::size_t>(
        std::min<std::uint64_t>(piece.buffer.size() - kMargin - end, rest));
    const std::size_t got = m_source.read(former.read, piece.buffer.data() + end, want);
    piece.read = former.read + got;
    piece.end = end + got;
    piece.last = got == 0 || piece.read >= size;
    piece.buffer[piece.begin - 1] = '\n';
    std::fill_n(piece.buffer.begin() + static_cast<std::ptrdiff_t>(piece.end), kMargin, ' ');
    piece.codes.begin = piece.codes.end = 0;
}

/// Behind the last value that ends: whatever the codes are, lines are lines.
std::size_t TextPieces::wholePairsEnd(const TextPiece& piece) const {
    const char* const text = piece.buffer.data();
    const std::size_t limit = lineStart(text, piece.begin, piece.end);
    const std::size_t sure = std::max(piece.codes.end, piece.begin);
    const auto feeds = std::count(text + sure, text + limit, '\n');
    return feeds % 2 == 0 ? limit : lineStart(text, piece.begin, limit - 1);
}

/// Whether there is a next piece, room for it, and nobody who reads it.
bool TextPieces::mayBegin() {
    return m_begun == m_ready && m_ready - m_given < kPieces - 1 && !piece(m_ready - 1).last;
}

void TextPieces::runAhead() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_stopped || mayBegin(); });
        if (m_stopped) return;
        const TextPiece& former = piece(m_begun - 1);
        TextPiece& next = piece(m_begun++);
        lock.unlock();
        const std::exception_ptr failure = failureOf([&] {
            prepare(next, former, wholePairsEnd(former));
            findPlainCodes(next.buffer.data(), next.begin,
                           lineStart(next.buffer.data(), next.begin, next.end), m_returns,
                           next.codes);
        });
        lock.lock();
        m_failure = failure;
        ++m_ready;
        if (failure || next.last) m_stopped = true;
        m_changed.notify_one();
    }
}

/// Goes on without where the system has no thread to give.
void TextPieces::startAhead() {
    try {
        m_thread = std::thread([this] { runAhead(); });
    } catch (const std::system_error&) {
        m_ahead = false;
    }
}

void TextPieces::settle() {
    std::unique_lock lock(m_mutex);
    m_stopped = true;
    m_changed.notify_one();
    m_changed.wait(lock, [this] { return m_begun == m_ready; });
}

TextPiece& TextPieces::next(std::size_t from) {
    std::unique_lock lock(m_mutex);
    if (m_begun == m_given) {
        TextPiece& next = piece(m_begun++);
        lock.unlock();
        const std::exception_ptr failure =
            failureOf([&] { prepare(next, piece(m_given + kPieces - 1), from); });
        lock.lock();
        m_failure = failure;
        ++m_ready;
    }
    m_changed.wait(lock, [this] { return m_ready > m_given; });
    if (m_failure && m_ready == m_given + 1) std::rethrow_exception(m_failure);
    TextPiece& next = piece(m_given++);
    if (m_ahead && !next.last && !m_thread.joinable()) startAhead();
    m_changed.notify_one();
    return next;
}

}  // namespace mor::host
