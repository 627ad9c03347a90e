#pragma once

#include <cstddef>
#include <future>
#include <system_error>

namespace mor::host {

/// Does `work(begin, end)` for all of `count` parts: the second half of them in another thread
/// where they are `many` at least and the system has one to give. Throws what the work throws, when
/// both halves have ended.
template <typename Work>
void inHalves(std::size_t count, std::size_t many, const Work& work) {
    if (count < many) return work(std::size_t{0}, count);
    const std::size_t middle = count / 2;
    std::future<void> second;
    try {
        second = std::async(std::launch::async, [&] { work(middle, count); });
    } catch (const std::system_error&) {
        return work(std::size_t{0}, count);
    }
    work(std::size_t{0}, middle);
    second.get();
}

}  // namespace mor::host
