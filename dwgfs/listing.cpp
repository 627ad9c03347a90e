#include "dwgfs/dwg_file_system.h"
#include "dwgfs/names.h"
#include "dwgfs/revisits.h"
#include "platform/output_calls.h"

namespace {

bool breakPressed() {
    if (acedUsrBrk() == 0) return false;
    acutPrintf(mor::kListingBreak);
    return true;
}

void printHead(const wchar_t* path, bool recursive) {
    acutPrintf(mor::kListingBlank);
    acutPrintf(mor::kListingTitle);
    acutPrintf(mor::kListingBlank);
    acutPrintf(mor::kListingPath, recursive ? L"" : L"NON", path);
    acutPrintf(mor::kListingBlank);
    acutPrintf(mor::kListingColumns);
    acutPrintf(mor::kListingRule);
}

void printFoot() {
    acutPrintf(mor::kListingBlank);
    acutPrintf(mor::kListingEnd);
    acutPrintf(mor::kListingBlank);
}

}  // namespace

bool CMORCadDwgFileSystem::dir(const wchar_t* path, bool recursive) {
    mor::PathBuffer copy;
    if (!mor::copyPath(path, copy) || !mor::isDirPath(copy.view())) return false;
    bool listed = false;
    printHead(copy.c_str(), recursive);
    if (isFile(copy.c_str())) {
        listed = printFile(copy.c_str());
    } else if (isDirectory(copy.c_str())) {
        printSingleDir(copy.c_str());
        mor::PathBuffer walked = copy;
        listed = printDir(walked.data(), recursive);
    } else {
        acutPrintf(mor::kListingNotFound, copy.c_str());
    }
    printFoot();
    return listed;
}

bool CMORCadDwgFileSystem::printDir(wchar_t* path, bool recursive) {
    Revisits revisits;
    return printBelow(path, recursive, revisits);
}

bool CMORCadDwgFileSystem::printBelow(wchar_t* path, bool recursive, Revisits& revisits) {
    CMOREntity entity;
    ads_name own = {};
    if (!getDir(path, false, entity)) return false;
    entity.GetEName(own);
    if (!revisits.mayVisit(mor::EntityName{own})) return true;
    CMORStringList names;
    getAll(entity, names, Files);
    for (std::size_t i = 0; i < names.Entries(); ++i) {
        if (breakPressed()) return false;
        const mor::ExtendedPath file{path, names.Nth(i)};
        if (file.fits()) printFile(path);
    }
    getAll(entity, names, Directories);
    for (std::size_t i = 0; i < names.Entries(); ++i) {
        if (breakPressed()) return false;
        const mor::ExtendedPath subdirectory{path, names.Nth(i)};
        if (!subdirectory.fits()) continue;
        printSingleDir(path);
        if (!recursive || isOwnAncestor(path)) continue;
        if (!printBelow(path, recursive, revisits)) return false;
    }
    return true;
}

bool CMORCadDwgFileSystem::printFile(const wchar_t* path) {
    acutPrintf(mor::kListingFile, getUsedMem(path), path);
    acutPrintf(L"\n");
    return true;
}

bool CMORCadDwgFileSystem::printSingleDir(const wchar_t* path) {
    acutPrintf(mor::kListingDir, getFreeMem(path), path);
    return true;
}
