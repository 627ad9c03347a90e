#pragma once

#include "tests/support/dxf_drawing.h"
#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <cmath>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace mor::test {

/// A test that looks into the picture of a small drawing.
class Drawing : public ToolTest {
protected:
    /// The drawing's picture, of the form `draw` prints.
    [[nodiscard]] std::string picture(const DxfDrawing& drawing,
                                      std::vector<std::string> words = {}) {
        words.insert(words.begin(), {"draw", drawing.save("host.dxf")});
        const Outcome outcome = run(words);
        EXPECT_TRUE(outcome.code == 0 || outcome.out.find("<path") == std::string::npos)
            << outcome.err;
        m_notes = outcome.err;
        return outcome.out;
    }
    /// The data of the paths in the picture that come from that record, one a line.
    static std::string paths(const std::string& svg, const std::string& handle) {
        const std::regex path("<path data-handle=\"" + handle + "\"[^>]* d=\"([^\"]*)\"");
        std::string all;
        for (std::sregex_iterator at(svg.begin(), svg.end(), path), end; at != end; ++at)
            all += (*at)[1].str() + "\n";
        return all;
    }
    static std::string colour(const std::string& svg, const std::string& handle) {
        return attribute(svg, handle, "(?:stroke|fill)");
    }
    /// The texts in the picture that come from that record: where each begins, and what it says.
    static std::string texts(const std::string& svg, const std::string& handle) {
        const std::regex text("<text data-handle=\"" + handle +
                              "\"[^>]*matrix\\(([^)]*)\\)[^>]*>([^<]*)<");
        std::ostringstream all;
        for (std::sregex_iterator at(svg.begin(), svg.end(), text), end; at != end; ++at) {
            std::istringstream matrix((*at)[1].str());
            std::vector<double> numbers;
            for (double number = 0.0; matrix >> number;) numbers.push_back(number);
            all << (all.tellp() > 0 ? " " : "") << std::round(numbers.at(4) * 100) / 100 << ","
                << std::round(numbers.at(5) * 100) / 100 << ":" << (*at)[2].str();
        }
        return all.str();
    }
    /// The value of an attribute of the first element that comes from that record.
    static std::string attribute(const std::string& svg, const std::string& handle,
                                 const std::string& name) {
        std::smatch found;
        const std::regex pattern("data-handle=\"" + handle + "\"[^>]* " + name + "=\"([^\"]*)\"");
        return std::regex_search(svg, found, pattern) ? found[1].str() : "none";
    }
    [[nodiscard]] bool noted(const std::string& text) const {
        return m_notes.find(text) != std::string::npos;
    }

private:
    std::string m_notes;
};

}  // namespace mor::test
