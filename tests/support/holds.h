#pragma once

#include <gtest/gtest.h>

#include <string>

namespace mor::test {

/// Whether `part` stands in the text; shows both when it does not.
[[nodiscard]] inline testing::AssertionResult holds(const std::string& text,
                                                    const std::string& part) {
    if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no \"" << part << "\" in \"" << text << "\"";
}

}  // namespace mor::test
