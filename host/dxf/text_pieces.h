#pragma once

#include "host/drawing/source.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace mor::host {

/// Codes of the usual form of which something may be noted, and some others.
struct PlainCodes {
    /// Bits behind their last digits: a mask for each block of 64 bytes from `begin` on.
    std::vector<std::uint64_t> masks;
    std::size_t begin = 0;  ///< where they were looked for
    std::size_t end = 0;    ///< the first line that is not looked through; a code begins there
};

/// Looks through the lines from `begin` on, where a code begins, up to `limit`, behind a line feed:
/// as long as codes have their usual form, and their values end before the limit. `returns`:
/// carriage returns stand before the line feeds. 64 bytes behind the limit are readable and no line
/// feeds.
void findPlainCodes(const char* text, std::size_t begin, std::size_t limit, bool returns,
                    PlainCodes& found);

/// A stretch of a text file, behind what was not taken of those before it.
struct TextPiece {
    std::vector<char> buffer;
    std::size_t begin = 0;   ///< of the text in the buffer; behind a line feed
    std::size_t end = 0;     ///< of the text; blanks follow
    std::uint64_t read = 0;  ///< where it ends in the file
    bool last = false;       ///< nothing follows
    PlainCodes codes;        ///< where it was looked through ahead
};

/// Gives a text file piece by piece. Ahead of who asks, another thread reads some pieces more and
/// finds their codes, where it gets to run: nobody waits for a piece that it has not begun. Not
/// before the second piece, and not where lines may end with a carriage return alone.
class TextPieces {
public:
    enum class Ahead { No, Yes };
    TextPieces(const Source& source, Ahead ahead, bool returns);
    ~TextPieces();
    TextPieces(const TextPieces&) = delete;
    TextPieces& operator=(const TextPieces&) = delete;

    /// The next piece; of the one before the bytes from `from` on stand in front of it. Throws what
    /// reading throws.
    TextPiece& next(std::size_t from);
    /// Waits until nothing is read ahead any more; no further piece is to be asked for.
    void settle();

private:
    /// Those that are read, ahead of the one in use, and that one.
    static constexpr std::size_t kPieces = 4;

    [[nodiscard]] TextPiece& piece(std::size_t number) { return m_pieces[number % kPieces]; }
    void prepare(TextPiece& piece, const TextPiece& former, std::size_t from) const;
    [[nodiscard]] std::size_t wholePairsEnd(const TextPiece& piece) const;
    [[nodiscard]] bool mayBegin();
    void startAhead();
    void runAhead();

    const Source& m_source;
    bool m_ahead;
    bool m_returns;
    TextPiece m_pieces[kPieces];
    std::thread m_thread;
    std::mutex m_mutex;  ///< guards what follows, but for pieces that are begun and not ready
    std::condition_variable m_changed;
    std::size_t m_given = 0;  ///< how many were given; the last of them is in use
    std::size_t m_begun = 0;
    std::size_t m_ready = 0;
    bool m_stopped = false;
    std::exception_ptr m_failure;
};

}  // namespace mor::host
