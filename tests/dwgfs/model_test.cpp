#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

namespace mor::test {
namespace {

/// What the store is supposed to hold: the directories and files by path.
class Model {
public:
    bool write(const std::string& path, const std::string& lisp) {
        if (!makeParents(path) || m_dirs.contains(path)) return false;
        if (lisp == "nil")
            m_files.erase(path);
        else
            m_files[path] = lisp;
        return true;
    }
    bool del(const std::string& path) {
        if (!m_dirs.contains(parent(path)) || m_dirs.contains(path)) return false;
        m_files.erase(path);
        return true;
    }
    [[nodiscard]] std::string read(const std::string& path) const {
        if (!m_dirs.contains(parent(path)) || m_dirs.contains(path)) return "false";
        const auto file = m_files.find(path);
        return file == m_files.end() ? "unread" : file->second;
    }
    [[nodiscard]] bool isDirectory(const std::string& path) const { return m_dirs.contains(path); }

private:
    static std::string parent(const std::string& path) { return path.substr(0, path.rfind('/')); }
    // Directories stay when a deeper one cannot be made.
    bool makeParents(const std::string& path) {
        for (std::size_t end = path.find('/', 1); end != std::string::npos;
             end = path.find('/', end + 1)) {
            const std::string dir = path.substr(0, end);
            if (m_files.contains(dir)) return false;
            m_dirs.emplace(dir, true);
        }
        return true;
    }
    std::map<std::string, bool> m_dirs;
    std::map<std::string, std::string> m_files;
};

class StoreModel : public StoreTest, public ::testing::WithParamInterface<unsigned> {
protected:
    std::string anyPath() {
        std::string path;
        for (std::size_t depth = 2 + pick(3); depth > 0; --depth)
            path += "/" + std::string(1, static_cast<char>('a' + pick(3)));
        return path;
    }
    std::string anyValue() {
        static const std::vector<std::string> s_values{"1",          "2.5", "\"text\"", "(1 2 . 3)",
                                                       "(nil \"\")", "nil", "\"\\n^\""};
        return s_values[pick(s_values.size())];
    }
    std::size_t pick(std::size_t count) { return m_random() % count; }

    std::mt19937 m_random{GetParam()};
};

TEST_P(StoreModel, BehavesLikeAMap) {
    Model model;
    for (int step = 0; step < 300; ++step) {
        const std::string path = anyPath();
        const std::string lisp = anyValue();
        const std::string what =
            "seed " + std::to_string(GetParam()) + " step " + std::to_string(step) + " " + path;
        switch (pick(6)) {
            case 0:
            case 1:
            case 2:
                ASSERT_EQ(write(path, lisp), model.write(path, lisp)) << what << " = " << lisp;
                break;
            case 3:
                ASSERT_EQ(del(path), model.del(path)) << what;
                break;
            case 4:
                ASSERT_EQ(fs().isDirectory(wide(path).c_str()), model.isDirectory(path)) << what;
                break;
            default:
                ASSERT_EQ(read(path), model.read(path)) << what;
        }
    }
    const std::string before = tree();
    reopen();
    EXPECT_EQ(tree(), before);
}

INSTANTIATE_TEST_SUITE_P(Seeds, StoreModel, ::testing::Range(1U, 9U));

}  // namespace
}  // namespace mor::test
