#pragma once

#include "dwgfs/path_rules.h"
#include "frame/module.h"
#include "frame/owned_list.h"
#include "platform/document_data.h"
#include "platform/entity.h"
#include "platform/entity_name.h"
#include "platform/lisp.h"
#include "platform/mfc.h"
#include "platform/string_list.h"
#include "space/view.h"

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>

/// A small store of directories and files inside the drawing: a directory is an insert of one block
/// on the control layer, linked from its parent by its handle; a file is a named attribute of its
/// directory, its content any LISP value. Works through the view that it is bound to: through a
/// read-only view it reads the store of a reference and changes nothing.
///
/// Paths are absolute ("/", "/a/b") and compared exactly. A null text, a path over 1023 characters,
/// a directory name over 126 and a file name over 127 characters are refused like invalid ones. No
/// operation changes the text that it is given.
class CMORCadDwgFileSystem : public CMORMDIDocumentVariable {
public:
    CMORCadDwgFileSystem();  ///< bound to a copy of the current document's global view
    explicit CMORCadDwgFileSystem(const CMORCadView& view);
    CMORCadDwgFileSystem(const CMORCadDwgFileSystem& other);
    CMORCadDwgFileSystem& operator=(const CMORCadDwgFileSystem& other);

    ~CMORCadDwgFileSystem() override;
    [[nodiscard]] CMORMDIDocumentVariable* CreateInstance() const override;
    [[nodiscard]] CMORMDIDocumentVariable* CreateCopy() const override;

    /// The current document's object, bound to the document's global view; null when that view is
    /// empty. Made on first use, and deleted at message 3 or when the module ends.
    [[nodiscard]] static CMORCadDwgFileSystem* getTheGlobalObject();
    /// Binds to another view: false when that one is empty. A view of the same space changes
    /// nothing.
    bool connect(const CMORCadView& view);
    [[nodiscard]] bool IsInModelSpace() const;
    [[nodiscard]] const wchar_t* ViewHandle() const;
    [[nodiscard]] const wchar_t* getViewHandle() const;
    [[nodiscard]] const wchar_t* getViewName() const;  ///< of the space; null for an empty view
    [[nodiscard]] bool hasWriteableView() const;

    [[nodiscard]] static bool isValidDirName(const wchar_t* name);
    [[nodiscard]] static bool isValidFileName(const wchar_t* name);
    [[nodiscard]] static bool isValidDirPathName(const wchar_t* path);
    [[nodiscard]] static bool isValidFilePathName(const wchar_t* path);

    /// Connects the root directory. Makes it whenever the block exists without a usable root link,
    /// and the block too with `create`; runs the block check.
    bool getRoot(CMOREntity& root, bool create);
    [[nodiscard]] bool isDirectory(const wchar_t* path);  ///< "/" always is one
    [[nodiscard]] bool isFile(const wchar_t* path);

    /// The value of a file. True for a missing file in an existing directory too, and when the
    /// current document is not the active one: the value is then untouched.
    bool read(const wchar_t* path, CMORAdsLispVar& value);
    /// Stores a value and makes the directories on the way; nil removes the file. False for an
    /// invalid path, a read-only view, a refused lock, a name that is taken, and a value that does
    /// not fit into its directory.
    /// True, and nothing written, when the current document is not the active one. True too when a
    /// new directory's link did not fit into its parent: no look-up finds the value then.
    bool write(const wchar_t* path, const CMORAdsLispVar& value);
    /// Removes a file; true too when there is none of that name. Takes no document lock.
    bool del(const wchar_t* path);
    /// Removes a directory with all that lies below it; false for "/", for what is no directory,
    /// and through a read-only view. A link that leads back up is taken away alone.
    bool delDir(const wchar_t* path);
    /// Bytes that the directory's entity can still take; 0 when it does not resolve.
    long getFreeMem(const wchar_t* path);
    /// Bytes that the file takes, name and value; 0 when there is none.
    long getUsedMem(const wchar_t* path);

    // In the order in which the names were first stored. On failure a string list is unchanged, a
    // LISP list nil. `getAllFiles` and `readAllFiles` report an invalid path on the command line.
    bool getAllDirs(const wchar_t* path, CMORStringList& names);
    bool getAllDirs(const wchar_t* path, CMORAdsLispVar& names);
    bool getAllFiles(const wchar_t* path, CMORStringList& names);
    bool getAllFiles(const wchar_t* path, CMORAdsLispVar& names);
    /// `((name . value) ...)`: a list value follows its name, `(name x y ...)`. Unchanged on
    /// failure.
    bool readAllFiles(const wchar_t* path, CMORAdsLispVar& files);
    /// Adds `((path value) ...)` of all files whose path matches the pattern, part by part. Skips
    /// paths over 127 characters. False, and nothing added, when there is no root or the pattern
    /// does not begin with "/".
    bool readAllMatchingFiles(const wchar_t* pattern, CMORAdsLispVar& files);

    /// Prints a directory, or a single file, with the memory figures on the command line; with
    /// `recursive` all that lies below it. False after a break, and when the path names nothing;
    /// for an invalid path nothing is printed.
    bool dir(const wchar_t* path, bool recursive);

    /// Resolves every directory once, which repairs what can be repaired, under the document's
    /// lock. Nothing through a read-only view, and while the current document is not the active
    /// one.
    void checkFileSystem();
    /// Erases all directories. What refers to them stays: while the drawing is open, look-ups and
    /// the check restore the directories that they reach. Once it was saved and opened again, the
    /// next look-up of the root finds its link dead and clears it away.
    void removeFileSystem();
    /// The same; entities on the control layer inside block definitions move to layer "0".
    void removeFileSystemEx();

protected:
    enum EntryType : int { Directories = 1, Files = 2, All = 3 };

    static void callBack(int message);  ///< receives the messages
    static void doIfGewerkWechsel();    ///< does nothing

    /// Both work in place on a path of the caller's own: the parent path ("/" is a constant) and
    /// the name behind the last "/"; `mergePath` makes the path whole again. The path has a "/".
    static const wchar_t* splitPath(const wchar_t* path, const wchar_t*& name);
    static bool mergePath(const wchar_t* path, const wchar_t* name);
    /// See dwgfs/link_names.h. `link` has room for 128 characters, and is empty for a name that is
    /// too long.
    static void makeXDataDirNameFromDirName(wchar_t* link, const wchar_t* name);
    /// False, and `name` untouched, for other attributes. `name` may be `link`.
    static bool makeDirNameFromXDataDirName(wchar_t* name, const wchar_t* link);

    /// Starts an empty file system; the directories of the old one stay, out of reach. Does nothing
    /// while it runs already.
    void zero();
    void protected_removeFileSystem(bool extended);
    void deleteAllInserts();
    bool makeBlock();
    /// False, and nothing changed, when the platform refuses the insert.
    bool makeDir(CMOREntity& parent, const wchar_t* name, const wchar_t* path, CMOREntity& dir);
    bool getBlockEntity(CMOREntity& block);
    /// Connects, and moves the entity to model space when it lies elsewhere.
    bool commonConnectEntity(const ads_name name, CMOREntity& entity);
    /// Puts the root link and the block's definition right: a root link that leads to nothing that
    /// can be erased is dropped and all directories erased, a first entity of another kind
    /// replaced. Nothing through a read-only view, and while a dialog box is active.
    void checkBlock(CMOREntity& block);

    // Resolving. `path` is a buffer of the caller's own, which is whole again afterwards.
    bool getDir(const wchar_t* path, bool create, CMOREntity& dir);
    bool getDir(CMOREntity& parent, const wchar_t* name, const wchar_t* path, CMOREntity& dir,
                bool create);
    bool getDirFromHashTable(const wchar_t* path, bool create, CMOREntity& dir);
    bool putDirInHashTable(const wchar_t* path, CMOREntity& dir);
    /// `name` has room for 128 characters.
    bool getParentDir(const wchar_t* path, bool create, CMOREntity& parent, wchar_t* name);
    bool getFile(const wchar_t* path, bool create, CMOREntity& dir, wchar_t* name);
    bool isDirectory(CMOREntity& dir, const wchar_t* name);
    bool isFile(CMOREntity& dir, const wchar_t* name);

    bool readWrite(const wchar_t* path, CMORAdsLispVar& value, bool write);
    /// Destroys the directory and all below it, deepest first; the parent's link stays. False when
    /// it does not resolve, and for the root, which is reported on the command line.
    bool removeDir(CMOREntity& parent, const wchar_t* name, const wchar_t* path);

    // `path` is a buffer for 1023 characters, which is whole again afterwards.
    /// Prints what lies in the directory; false after a break, which is printed too, and when it
    /// does not resolve.
    bool printDir(wchar_t* path, bool recursive);
    bool printFile(const wchar_t* path);
    bool printSingleDir(const wchar_t* path);
    void checkDirAndSubdirs(wchar_t* path);

    bool getAll(const CMOREntity& dir, CMORStringList& names, EntryType type);
    bool getAll(const wchar_t* path, CMORStringList& names, EntryType type);

private:
    struct RemovalWay;
    class Revisits;

    bool readAllMatchingFiles(const wchar_t* path, CStringArray& parts, int index,
                              CMORAdsLispVar& files);
    bool readMatchesBelow(const wchar_t* path, CStringArray& parts, int index, Revisits& revisits,
                          CMORAdsLispVar& files);
    void readMatchingFile(const wchar_t* path, CMORAdsLispVar& files);
    bool getLinkedDir(const wchar_t* handle, CMOREntity& dir);
    bool mayRemove(const wchar_t* name);
    void noteAncestors(std::wstring_view path, RemovalWay& way);
    bool beginRemoval(CMOREntity& parent, const wchar_t* name, const wchar_t* path,
                      RemovalWay& way);
    static void endRemoval(RemovalWay& way);
    [[nodiscard]] mor::EntityName linkedEntity(CMOREntity& parent, const wchar_t* name) const;
    void checkBelow(wchar_t* path, std::set<mor::EntityName>& checked);
    bool printBelow(wchar_t* path, bool recursive, Revisits& revisits);
    [[nodiscard]] bool isOwnAncestor(const wchar_t* path) const;
    void warnIfReadOnly(const wchar_t* operation, bool create) const;

    struct PathHash {
        using is_transparent = void;
        [[nodiscard]] std::size_t operator()(std::wstring_view path) const noexcept {
            return std::hash<std::wstring_view>{}(path);
        }
    };

    std::unordered_map<std::wstring, mor::EntityName, PathHash, std::equal_to<>>
        m_directories;           // by full path
    mutable CMORCadView m_view;  // mutable: its type can only be asked of a changeable one
    bool m_zeroing = false;

    friend int mor::detachModule();                             // releases what is still listed
    static mor::OwnedList<CMORCadDwgFileSystem> s_fileSystems;  // see frame/module.cpp
    static bool s_skipNextCheck;                                // one removal skips one check
};

/// Where refused and read-only work on a view that cannot be written is reported. Writes nothing:
/// it is the place for a breakpoint.
void reportViewNotWriteable(const wchar_t* operation, const CMORCadView& view,
                            const wchar_t* message, int severity);
