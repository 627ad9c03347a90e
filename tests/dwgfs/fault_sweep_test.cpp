#include "tests/dwgfs/store_fixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <new>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace mor::test {
namespace {

/// What the guard of an operation promises about the control layer.
enum class Layer { Locked, AsBefore };

using Fs = CMORCadDwgFileSystem;

/// One that locks the layer may change the store; look-ups only repair it.
struct Operation {
    std::string_view name;  // as the header has it: a lint compares the two
    Layer layer;
    std::function<bool(Fs&)> run;
};

/// Want of memory passes through to the caller.
bool runOrThrow(const Operation& operation, Fs& fs) {
    try {
        return operation.run(fs);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool runOnCopy(Fs& fs, CMORMDIDocumentVariable* made) {
    const std::unique_ptr<CMORMDIDocumentVariable> copy(made);
    CMORAdsLispVar value;
    return fs.read(L"/a/f", value);
}

/// `operation` with a list or value of that type to fill.
template <typename Filled>
bool filled(Fs& fs, bool (Fs::*operation)(const wchar_t*, Filled&), const wchar_t* path) {
    Filled result{};
    return (fs.*operation)(path, result);
}

bool both(Fs& fs, bool (Fs::*names)(const wchar_t*, CMORStringList&),
          bool (Fs::*lisp)(const wchar_t*, CMORAdsLispVar&)) {
    return filled(fs, names, L"/a") && filled(fs, lisp, L"/a");
}

bool root(Fs& fs) {
    CMOREntity entity;
    return fs.getRoot(entity, true);
}

bool done(Fs& fs, void (Fs::*operation)()) {
    (fs.*operation)();
    return true;
}

const Operation kOperations[] = {
    {"CreateInstance", Layer::AsBefore, [](Fs& fs) { return runOnCopy(fs, fs.CreateInstance()); }},
    {"CreateCopy", Layer::AsBefore, [](Fs& fs) { return runOnCopy(fs, fs.CreateCopy()); }},
    {"getTheGlobalObject", Layer::AsBefore,
     [](Fs&) { return Fs::getTheGlobalObject() != nullptr; }},
    {"connect", Layer::AsBefore,
     [](Fs& fs) { return fs.connect(*CMORCadView::getTheGlobalObject()); }},
    {"IsInModelSpace", Layer::AsBefore, [](Fs& fs) { return fs.IsInModelSpace(); }},
    {"ViewHandle", Layer::AsBefore, [](Fs& fs) { return fs.ViewHandle() != nullptr; }},
    {"getViewHandle", Layer::AsBefore, [](Fs& fs) { return fs.getViewHandle() != nullptr; }},
    {"getViewName", Layer::AsBefore, [](Fs& fs) { return fs.getViewName() != nullptr; }},
    {"hasWriteableView", Layer::AsBefore, [](Fs& fs) { return fs.hasWriteableView(); }},
    {"getRoot", Layer::AsBefore, root},
    {"isDirectory", Layer::AsBefore, [](Fs& fs) { return fs.isDirectory(L"/a/b"); }},
    {"isFile", Layer::AsBefore, [](Fs& fs) { return fs.isFile(L"/a/b/g"); }},
    {"isValidDirName", Layer::AsBefore, [](Fs&) { return Fs::isValidDirName(L"a"); }},
    {"isValidFileName", Layer::AsBefore, [](Fs&) { return Fs::isValidFileName(L">a"); }},
    {"isValidDirPathName", Layer::AsBefore, [](Fs&) { return Fs::isValidDirPathName(L"/a"); }},
    {"isValidFilePathName", Layer::AsBefore, [](Fs&) { return Fs::isValidFilePathName(L"/a/f"); }},
    {"read", Layer::AsBefore, [](Fs& fs) { return filled(fs, &Fs::read, L"/a/f"); }},
    {"write", Layer::Locked, [](Fs& fs) { return fs.write(L"/a/f", host::makeInteger(7)); }},
    {"write", Layer::Locked, [](Fs& fs) { return fs.write(L"/c/d/new", host::makeInteger(7)); }},
    {"del", Layer::Locked, [](Fs& fs) { return fs.del(L"/a/f"); }},
    {"delDir", Layer::Locked, [](Fs& fs) { return fs.delDir(L"/a"); }},
    {"getFreeMem", Layer::AsBefore, [](Fs& fs) { return fs.getFreeMem(L"/a") > 0; }},
    {"getUsedMem", Layer::AsBefore, [](Fs& fs) { return fs.getUsedMem(L"/a/f") > 0; }},
    {"getAllDirs", Layer::AsBefore,
     [](Fs& fs) { return both(fs, &Fs::getAllDirs, &Fs::getAllDirs); }},
    {"getAllFiles", Layer::AsBefore,
     [](Fs& fs) { return both(fs, &Fs::getAllFiles, &Fs::getAllFiles); }},
    {"readAllFiles", Layer::AsBefore, [](Fs& fs) { return filled(fs, &Fs::readAllFiles, L"/a"); }},
    {"readAllMatchingFiles", Layer::AsBefore,
     [](Fs& fs) { return filled(fs, &Fs::readAllMatchingFiles, L"/*/*"); }},
    {"dir", Layer::AsBefore, [](Fs& fs) { return fs.dir(L"/", true); }},
    {"checkFileSystem", Layer::AsBefore, [](Fs& fs) { return done(fs, &Fs::checkFileSystem); }},
    {"removeFileSystem", Layer::Locked, [](Fs& fs) { return done(fs, &Fs::removeFileSystem); }},
    {"removeFileSystemEx", Layer::Locked, [](Fs& fs) { return done(fs, &Fs::removeFileSystemEx); }},
};

std::vector<std::string> calls() {
    std::istringstream words{
        "acutNewRb acdbEntMake acdbEntLast acdbEntNext acdbEntDel acdbHandEnt acdbTblSearch "
        "acdbTblNext acedSSGet acedSSLength acedSSName lockDocument CMOREntity::Connect "
        "CMOREntity::Flush CMOREntity::Destroy CMOREntity::GetAttribute CMOREntity::SetAttribute "
        "CMOREntity::GetAttributeText CMOREntity::SetAttributeText CMOREntity::DeleteAttribute "
        "CMORAdsLayer::Connect CMORAdsLayer::Create CMORAdsLayer::Flush"};
    return {std::istream_iterator<std::string>(words), {}};
}

/// Failures after which a look-up may reset the store, or take its root for missing.
bool mayReset(std::string_view call) {
    static constexpr std::string_view causes[] = {
        "acutNewRb",     "acdbHandEnt",         "acdbEntDel",
        "acdbTblSearch", "CMOREntity::Connect", "CMOREntity::GetAttributeText"};
    return std::ranges::find(causes, call) != std::end(causes);
}

class FaultSweep : public StoreTest, public ::testing::WithParamInterface<std::string> {
protected:
    static constexpr std::string_view kTree = R"(/ [a/ [f=5 b/ [g="x"]]])";

    /// The drawing of each attempt, with its layer open, so that a lock shows who took it.
    void prepare() {
        replaceDocument(host::createDocument(host::Release::R2018));
        static_cast<void>(printed());
        ASSERT_TRUE(write("/a/f", "5"));
        ASSERT_TRUE(write("/a/b/g", R"("x")"));
        setLayer(true, false);
        ASSERT_EQ(tree(), kTree);
    }
    void expectPromises(const Operation& operation, std::string_view call, bool result) const {
        expectNothingOpen();
        if (!call.starts_with("CMORAdsLayer")) {
            EXPECT_EQ(layer(),
                      operation.layer == Layer::Locked ? "frozen locked" : "frozen unlocked");
        }
        if (mayReset(call)) return;
        if (operation.layer == Layer::AsBefore) {
            EXPECT_EQ(tree(), kTree);
        } else if (operation.name == "write" && !result) {
            EXPECT_TRUE(holds(tree(), "f=5"));
        } else if (operation.name == "delDir" && result && call != "CMOREntity::DeleteAttribute" &&
                   call != "CMOREntity::Flush" && call != "CMOREntity::Destroy") {
            EXPECT_EQ(tree(), "/");
        }
    }
};

TEST_P(FaultSweep, LeaksNothingAndKeepsItsPromises) {
    const std::string& call = GetParam();
    for (const Operation& operation : kOperations) {
        for (std::size_t nth = 1; nth < 200; ++nth) {
            SCOPED_TRACE(std::string(operation.name) + " with failing " + call + " " +
                         std::to_string(nth));
            prepare();
            Fs store(*CMORCadView::getTheGlobalObject());
            host::faults::failCall(call, nth);
            const bool result = runOrThrow(operation, store);
            const bool struck = host::faults::struck();
            host::faults::reset();
            expectPromises(operation, call, result);
            EXPECT_TRUE(write("/a/b/g", "8"));
            EXPECT_EQ(read("/a/b/g"), "8") << "the store works on";
            if (!struck) break;
            ASSERT_LT(nth, 199U) << "the operation never got through";
        }
    }
}

std::string parameterName(const testing::TestParamInfo<std::string>& info) {
    std::string name = info.param;
    std::erase(name, ':');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Calls, FaultSweep, testing::ValuesIn(calls()), parameterName);

}  // namespace
}  // namespace mor::test
