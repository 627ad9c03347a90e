#pragma once

#include <array>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace mor::tool {

/// Work in pieces that are numbered from 0 and used one after the other: another thread makes some
/// of them ahead, where it gets to run. Nobody waits for a piece that it has not begun.
class Ahead {
public:
    /// Pieces that are made and not used yet, and the one in use: each takes the place of the one
    /// that was made so many before.
    static constexpr std::size_t kPlaces = 4;

    /// `make` makes the piece of a number at a place; it is called by both threads at once, never
    /// for the same place. With a single piece no thread is started.
    Ahead(std::size_t count, std::function<void(std::size_t number, std::size_t place)> make);
    ~Ahead();
    Ahead(const Ahead&) = delete;
    Ahead& operator=(const Ahead&) = delete;

    /// The place of the next piece, which is made and valid until the next call. Throws what making
    /// it threw; no further piece is to be asked for then.
    [[nodiscard]] std::size_t next();

private:
    struct Made {
        bool ready = false;
        std::exception_ptr failure;
    };
    [[nodiscard]] bool mayBegin() const;
    void makeNext(std::unique_lock<std::mutex>& lock);
    void run();

    std::size_t m_count;
    std::function<void(std::size_t, std::size_t)> m_make;
    std::mutex m_mutex;  ///< guards what follows
    std::condition_variable m_changed;
    std::array<Made, kPlaces> m_made;
    std::size_t m_begun = 0;
    std::size_t m_given = 0;  ///< how many were given; the last of them is in use
    bool m_stopped = false;
    std::thread m_thread;
};

}  // namespace mor::tool
