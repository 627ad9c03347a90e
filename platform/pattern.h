#pragma once

#include <cstddef>
#include <string>

/// A pattern over narrow text (UTF-8). Only wildcard patterns are made here.
class MOR_RWCRegexp {
public:
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    virtual ~MOR_RWCRegexp() = default;
    /// The position of the first match at or after `start`, with its length in bytes in `length`;
    /// npos, and length 0, when nothing matches.
    virtual std::size_t index(const char* text, std::size_t* length, std::size_t start) const = 0;
};
