#pragma once

#include "tests/support/dxf_records.h"
#include "tests/tool/tool_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

namespace mor::test {

/// Exchanges the only place where `old` stands; both are "code value|code value" groups.
inline std::string exchanged(const std::string& bytes, const std::string& old,
                             const std::string& fresh) {
    DxfFile file = splitDxf(bytes);
    const auto groups = [](std::string text) {
        std::string lines;
        for (std::size_t at = 0; !text.empty(); text = text.substr(std::min(at + 1, text.size()))) {
            at = std::min(text.find('|'), text.size());
            const std::string group = text.substr(0, at);
            const std::size_t blank = group.find(' ');
            lines += std::string(3 - std::min<std::size_t>(3, blank), ' ') +
                     group.substr(0, blank) + "\n" + group.substr(blank + 1) + "\n";
        }
        return lines;
    };
    const std::string wanted = groups(old);
    const std::size_t place = bytes.find(wanted);
    if (place == std::string::npos || bytes.find(wanted, place + 1) != std::string::npos)
        throw std::runtime_error("not exactly once: " + old);
    return std::string(bytes).replace(place, wanted.size(), groups(fresh));
}

class DamagedStore : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        m_drawing = filledDrawing({{"/a/b/f", "1"}, {"/a/g", "2"}, {"/c/h", "3"}});
    }
    [[nodiscard]] const std::string& drawing() const { return m_drawing; }
    /// The handle of the directory of that path.
    [[nodiscard]] std::string handle(const std::string& path) const {
        for (const DxfRecord& record : splitDxf(readFile(m_drawing)).records)
            if (record.text().find("|1000 $INFO|1000 " + path + "|") != std::string::npos)
                return *record.first(5);
        throw std::runtime_error("no directory " + path);
    }
    /// The link as its groups stand in the file.
    [[nodiscard]] static std::string link(const std::string& name, const std::string& target) {
        return "1000 \\U+005E" + name + "|1000 " + target;
    }
    void damage(const std::string& old, const std::string& fresh) const {
        writeFile(m_drawing, exchanged(readFile(m_drawing), old, fresh));
    }
    /// Leaves out the records that hold `part`.
    void leaveOut(const std::string& part) const {
        std::string bytes;
        for (const DxfRecord& record : splitDxf(readFile(m_drawing)).records)
            if (record.text().find(part) == std::string::npos) bytes += record.bytes;
        writeFile(m_drawing, bytes);
    }
    /// Every command is refused with the finding's code, and changes nothing.
    void expectRefusal(const std::string& code) const {
        const std::string bytes = readFile(m_drawing);
        const std::vector<std::string> calls[] = {{"cat", m_drawing, "/a/g"},
                                                  {"ls", m_drawing},
                                                  {"ls", m_drawing, "/a"},
                                                  {"find", m_drawing, "/*/*"},
                                                  {"df", m_drawing},
                                                  {"put", m_drawing, "/a/g", "9"},
                                                  {"put", m_drawing, "/n/n", "9"},
                                                  {"rm", m_drawing, "/a/g"}};
        for (const auto& words : calls) {
            const Outcome outcome = run(words);
            EXPECT_EQ(outcome.code, 4) << words[0];
            EXPECT_EQ(outcome.out, "") << words[0];
            EXPECT_TRUE(holds(outcome.err, "(" + code + ")"));
            EXPECT_TRUE(holds(outcome.err, "moradmin repair"));
        }
        const Outcome info = run({"info", "--json", m_drawing});
        EXPECT_EQ(info.code, 0);
        EXPECT_EQ(nlohmann::json::parse(info.out)["store"]["state"], "damaged");
        EXPECT_EQ(readFile(m_drawing), bytes);
        EXPECT_EQ(names(), "d.dxf");
    }
    /// It reads as empty, and the next value fills it anew.
    void expectEmpty() const {
        EXPECT_EQ(run({"ls", m_drawing}).out, "");
        EXPECT_EQ(run({"ls", m_drawing}).code, 0);
        EXPECT_EQ(run({"cat", m_drawing, "/a/g"}).code, 6);
        EXPECT_EQ(run({"find", m_drawing, "/*/*"}).code, 1);
        EXPECT_EQ(run({"put", m_drawing, "/n/n", "9"}).code, 0);
        EXPECT_EQ(run({"ls", "-R", m_drawing}).out, "n/\nn/n\n");
        EXPECT_EQ(run({"cat", m_drawing, "/n/n"}).out, "9\n");
    }

private:
    std::string m_drawing;
};

}  // namespace mor::test
