#include "tests/dwgfs/store_fixture.h"
#include "tests/support/process.h"
#include "tests/support/test_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <utility>
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
    bool delDir(const std::string& path) {
        if (m_dirs.erase(path) == 0) return false;
        std::erase_if(m_dirs,
                      [&](const auto& entry) { return entry.first.starts_with(path + "/"); });
        std::erase_if(m_files,
                      [&](const auto& entry) { return entry.first.starts_with(path + "/"); });
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

/// A store that goes through random operations beside the model.
class ModelledStore : public StoreTest {
protected:
    void seed(unsigned seed) {
        m_random.seed(seed);
        m_trace = "seed " + std::to_string(seed);
    }
    void operate(int steps) {
        for (; steps > 0; --steps) {
            const std::string path = anyPath();
            const std::string lisp = anyValue();
            const std::string what =
                m_trace + " step " + std::to_string(++m_step) + " " + path + " " + lisp;
            switch (pick(20)) {
                case 0:
                    ASSERT_EQ(fs().delDir(wide(path).c_str()), m_model.delDir(path)) << what;
                    break;
                case 1:
                case 2:
                case 3:
                    ASSERT_EQ(del(path), m_model.del(path)) << what;
                    break;
                case 4:
                case 5:
                case 6:
                    ASSERT_EQ(read(path), m_model.read(path)) << what;
                    break;
                case 7:
                case 8:
                    ASSERT_EQ(fs().isDirectory(wide(path).c_str()), m_model.isDirectory(path))
                        << what;
                    break;
                default:
                    ASSERT_EQ(write(path, lisp), m_model.write(path, lisp)) << what;
                    break;
            }
        }
    }

private:
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

    Model m_model;
    std::mt19937 m_random;
    std::string m_trace;
    int m_step = 0;
};

class StoreModel : public ModelledStore, public ::testing::WithParamInterface<unsigned> {};

TEST_P(StoreModel, BehavesLikeAMap) {
    seed(GetParam());
    ASSERT_NO_FATAL_FAILURE(operate(300));
    const std::string before = tree();
    reopen();
    EXPECT_EQ(tree(), before);
}

INSTANTIATE_TEST_SUITE_P(Seeds, StoreModel, ::testing::Range(1U, 9U));

/// In the smallest real DWG drawing of a release, which is saved and opened again and again.
class DwgStoreModel : public ModelledStore, public ::testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        ModelledStore::SetUp();
        const char* corpus = std::getenv("MORADMIN_CORPUS_DWG");
        if (corpus == nullptr) GTEST_SKIP() << "MORADMIN_CORPUS_DWG names no folder of drawings";
        std::string smallest;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
            if (entry.path().extension() != ".dwg") continue;
            std::string bytes = readFile(entry.path());
            if (bytes.starts_with(GetParam()) &&
                (smallest.empty() || bytes.size() < smallest.size()))
                smallest = std::move(bytes);
        }
        writeFile(testFolder() / "model.dwg", smallest);
        open(testFolder() / "model.dwg");
    }
};

TEST_P(DwgStoreModel, BehavesLikeAMap) {
    seed(static_cast<unsigned>(std::string_view(GetParam()).back()));
    for (int round = 0; round < 6; ++round) {
        ASSERT_NO_FATAL_FAILURE(operate(80));
        const std::string before = tree();
        ASSERT_NO_FATAL_FAILURE(reopen());
        ASSERT_EQ(host::documentInfo(document()).damage, std::nullopt);
        EXPECT_EQ(tree(), before);
    }
}

INSTANTIATE_TEST_SUITE_P(Releases, DwgStoreModel,
                         ::testing::Values("AC1015", "AC1018", "AC1024", "AC1027", "AC1032"));

}  // namespace
}  // namespace mor::test
