#pragma once

#include "dwgfs/dwg_file_system.h"
#include "tests/support/drawing_test.h"
#include "tests/support/dxf_drawing.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace mor::test {

/// The protected operations of a file system, as a class of the suite would use them.
struct OpenFileSystem : CMORCadDwgFileSystem {
    using CMORCadDwgFileSystem::All;
    using CMORCadDwgFileSystem::callBack;
    using CMORCadDwgFileSystem::checkBlock;
    using CMORCadDwgFileSystem::CMORCadDwgFileSystem;
    using CMORCadDwgFileSystem::commonConnectEntity;
    using CMORCadDwgFileSystem::deleteAllInserts;
    using CMORCadDwgFileSystem::Directories;
    using CMORCadDwgFileSystem::EntryType;
    using CMORCadDwgFileSystem::Files;
    using CMORCadDwgFileSystem::getAll;
    using CMORCadDwgFileSystem::getBlockEntity;
    using CMORCadDwgFileSystem::getDir;
    using CMORCadDwgFileSystem::getDirFromHashTable;
    using CMORCadDwgFileSystem::getFile;
    using CMORCadDwgFileSystem::getParentDir;
    using CMORCadDwgFileSystem::isDirectory;
    using CMORCadDwgFileSystem::isFile;
    using CMORCadDwgFileSystem::makeBlock;
    using CMORCadDwgFileSystem::makeDir;
    using CMORCadDwgFileSystem::makeDirNameFromXDataDirName;
    using CMORCadDwgFileSystem::makeXDataDirNameFromDirName;
    using CMORCadDwgFileSystem::mergePath;
    using CMORCadDwgFileSystem::removeDir;
    using CMORCadDwgFileSystem::splitPath;
    using CMORCadDwgFileSystem::zero;
};

/// A drawing and its store. State is read from the records of the drawing, not through the library.
class StoreTest : public DrawingTest {
protected:
    explicit StoreTest(host::Release release = host::Release::R2018) : DrawingTest(release) {}

    void SetUp() override;

    /// The current document's file system.
    static CMORCadDwgFileSystem& fs();
    static bool write(std::string_view path, std::string_view lisp);
    /// The value as LISP text; "unread" when the file was not there, "false" when `read` said so.
    static std::string read(std::string_view path);
    static bool del(std::string_view path);

    /// "/ [a/ [b/ [f=5]] c/]": what the links and attributes say, in stored order. A link that
    /// leads to an erased directory shows as "b/ erased", one that leads nowhere as "b/ missing".
    /// "none" without a block, "no root" without a root link.
    [[nodiscard]] std::string tree() const;
    /// The control layer: "frozen locked", "thawed unlocked" and so on, or "absent".
    [[nodiscard]] std::string layer() const;
    /// The live inserts of the file system's block on the control layer.
    [[nodiscard]] std::size_t inserts() const;

    /// The entity of a directory, erased or not; fails the test when no links lead there.
    [[nodiscard]] EntityName entityOf(std::string_view path) const;
    [[nodiscard]] EntityName blockEntity() const;
    [[nodiscard]] std::wstring handleOf(std::string_view path) const;
    /// A link below `path` to the directory `target`.
    void link(std::string_view path, const wchar_t* name, std::string_view target) const {
        setText(entityOf(path), name, handleOf(target).c_str());
    }
    static void toggleErased(EntityName entity);
    static void setText(EntityName entity, const wchar_t* attribute, const wchar_t* text);
    static void setLayer(bool frozen, bool locked);

    /// Saves the drawing to a file and opens that instead.
    void reopen();

private:
    [[nodiscard]] std::string describe(EntityName dir, const std::string& name, int depth) const;
    [[nodiscard]] std::string describeLink(const host::RecordAttribute& link, int depth) const;
};

[[nodiscard]] std::wstring wide(std::string_view text);
[[nodiscard]] CMORAdsLispVar value(std::string_view lisp);
[[nodiscard]] std::string joined(const CMORStringList& list);

[[nodiscard]] inline std::string directoryTags(const std::string& handle, const std::string& path,
                                               const std::string& entries,
                                               const std::string& space = "") {
    return "0 INSERT|5 " + handle + "|" + space +
           "8 MOR_CONTROL_LAYER|2 MOR_DWGFILES|10 0.0|20 0.0|30 0.0|" +
           attributeTags("1000 $ID|1000 MOR_DWGFILES_DIR|1000 $INFO|1000 " + path + "|" + entries);
}

/// A drawing with a store as its file has it: "/ [a/ [f=5 b/ [g="x"]]]", where /a lies in paper
/// space.
[[nodiscard]] inline DxfDrawing storedDrawing(const std::string& space = "67 1|") {
    const std::string anchor =
        "0 ATTDEF|5 10|8 0|10 0.0|20 0.0|30 0.0|40 1.0|1 |3 mor|2 mor|70 3|" +
        attributeTags("1000 \\U+005EDWG_FILESYSTEM_ROOT|1000 12|");
    return {.layers = {"0", "MOR_CONTROL_LAYER"},
            .blocks = blockDefinition("MOR_DWGFILES", anchor),
            .entities = directoryTags("12", "/", "1000 \\U+005Ea|1000 13|") +
                        directoryTags("13", "/a", "1000 f|1071 5|1000 \\U+005Eb|1000 14|", space) +
                        directoryTags("14", "/a/b", "1000 g|1000 x|")};
}

}  // namespace mor::test
