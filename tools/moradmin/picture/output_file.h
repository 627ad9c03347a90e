#pragma once

#include <functional>
#include <iosfwd>
#include <string>

namespace mor::tool {

/// A picture must not take the place of a drawing, this or another one, under whatever name. Throws
/// Failure.
void refuseDrawings(const std::string& output);

/// A regular file is replaced when the whole of it is written; devices and pipes are written to.
/// Throws Failure, nothing replaced.
void writeTo(const std::string& output, const std::function<void(std::ostream&)>& write);

}  // namespace mor::tool
