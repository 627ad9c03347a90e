#pragma once

#include "tools/moradmin/changes/contents.h"
#include "tools/moradmin/options.h"

#include <string>

namespace mor::tool {

/// A drawing as text of which every line that differs is a difference.
struct TextDump {
    Contents contents;
    std::string outside;  ///< facts about what is not the store; empty for no drawing
    std::string trouble;  ///< why the drawing or its store cannot be read, or not whole; or empty
};

/// Of a file, whatever it is: nothing for /dev/null. Says nothing on stderr and does not throw.
[[nodiscard]] TextDump textDumpOf(const std::string& file);
/// Prints it: path, tab and value, sorted; directories where they hold nothing.
void printTextDump(const TextDump& dump);

}  // namespace mor::tool
