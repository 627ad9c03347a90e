#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <functional>
#include <future>
#include <system_error>

namespace mor::host {

/// How `inTwoHands` deals work out.
struct Shares {
    std::size_t count = 0;              ///< of what is to be done
    std::size_t part = 1;               ///< how many are taken at a time
    std::size_t many = 0;               ///< with fewer no other thread is asked
    std::function<void()> meanwhile{};  ///< what the caller does before it takes parts, if any
};

/// Does `work(begin, end, hand)` for parts until all is done: by the caller, hand 0, and by another
/// thread, hand 1, where the system has one to give. Each takes the next part when it is ready, so
/// that nothing waits for a thread that does not get to run. Throws what the work throws, when both
/// have ended.
template <typename Work>
void inTwoHands(const Shares& shares, const Work& work) {
    std::atomic<std::size_t> next = 0;
    const auto takeParts = [&](unsigned hand) {
        try {
            while (true) {
                const std::size_t begin = next.fetch_add(shares.part);
                if (begin >= shares.count) return;
                work(begin, std::min(begin + shares.part, shares.count), hand);
            }
        } catch (...) {
            next = shares.count;
            throw;
        }
    };
    std::future<void> other;
    if (shares.count >= shares.many) {
        try {
            other = std::async(std::launch::async, takeParts, 1U);
        } catch (const std::system_error&) {
            // The caller does all.
        }
    }
    if (shares.meanwhile) shares.meanwhile();
    takeParts(0);
    if (other.valid()) other.get();
}

}  // namespace mor::host
