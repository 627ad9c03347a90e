#include "tools/moradmin/running/ahead.h"

#include <system_error>
#include <utility>

namespace mor::tool {

Ahead::Ahead(std::size_t count, std::function<void(std::size_t, std::size_t)> make)
    : m_count(count), m_make(std::move(make)) {
    if (count < 2) return;
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // The system has no thread to give: who asks makes all pieces.
    }
}

Ahead::~Ahead() {
    {
        const std::scoped_lock lock(m_mutex);
        m_stopped = true;
    }
    m_changed.notify_one();
    if (m_thread.joinable()) m_thread.join();
}

/// The place of the piece in use stays as it is.
bool Ahead::mayBegin() const {
    const std::size_t used = m_given == 0 ? 0 : m_given - 1;
    return m_begun < m_count && m_begun < used + kPlaces;
}

void Ahead::makeNext(std::unique_lock<std::mutex>& lock) {
    const std::size_t number = m_begun++;
    Made& made = m_made[number % kPlaces];
    made = {};
    lock.unlock();
    std::exception_ptr failure;
    try {
        m_make(number, number % kPlaces);
    } catch (...) {
        failure = std::current_exception();
    }
    lock.lock();
    made = {true, failure};
    m_changed.notify_one();
}

void Ahead::run() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_stopped || m_begun == m_count || mayBegin(); });
        if (m_stopped || m_begun == m_count) return;
        makeNext(lock);
    }
}

std::size_t Ahead::next() {
    std::unique_lock lock(m_mutex);
    const std::size_t number = m_given++;
    m_changed.notify_one();
    const Made& made = m_made[number % kPlaces];
    // While the other thread is at the piece, the one behind it may as well be made.
    while (m_begun <= number || !made.ready) {
        if (mayBegin())
            makeNext(lock);
        else
            m_changed.wait(lock);
    }
    if (made.failure) std::rethrow_exception(made.failure);
    return number % kPlaces;
}

}  // namespace mor::tool
