#include "tools/moradmin/store/paths.h"

#include "dwgfs/path_rules.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/shown_text.h"

namespace mor::tool {

namespace {

static_assert(kMaxPathLength == 1023 && kMaxFileNameLength == 127);  // as the texts say

constexpr const char* kNameRule =
    "names begin with a letter or digit, go on with letters, digits, blanks, - and _, and hold a "
    "letter";

/// The names in a directory, a slash behind those of directories.
std::vector<std::string> namesIn(Session& session, const std::wstring& directory) {
    std::vector<std::string> names;
    if (!session.hasDirectories()) return names;
    for (const Store::Entry& entry : session.store().entries(directory))
        names.push_back(utf8(entry.name) + (entry.directory ? "/" : ""));
    return names;
}

/// What is near a path that is not there, or what there is.
std::string missingHint(Session& session, const std::wstring& path) {
    std::wstring missing = path;
    while (missing != L"/" && !isStoredDirectory(session, parentOf(missing)))
        missing = parentOf(missing);
    if (isStoredFile(session, missing)) return "; " + utf8(missing) + " is a file";
    const std::wstring directory = parentOf(missing);
    const std::vector<std::string> names = namesIn(session, directory);
    if (names.empty())
        return directory == L"/" ? "; the store holds nothing"
                                 : "; " + utf8(directory) + " holds nothing";
    std::vector<std::string> paths;
    std::vector<std::string> bare;
    for (const std::string& name : names) {
        paths.push_back((directory == L"/" ? "" : utf8(directory)) + "/" + name);
        bare.push_back(name.ends_with('/') ? paths.back().substr(0, paths.back().size() - 1)
                                           : paths.back());
    }
    return hintFor(utf8(missing), nearest(utf8(missing), bare).empty() ? paths : bare);
}

}  // namespace

std::wstring filePath(const Session& session, const std::string& word) {
    std::wstring path = wide(word);
    if (isFilePath(path) && path.size() <= kMaxPathLength &&
        nameOf(path).size() <= kMaxFileNameLength)
        return path;
    std::string hint = kNameRule;
    if (!path.starts_with(L'/'))
        hint = "a path begins with /, as in /cfg/x";
    else if (path.find(L'/', 1) == std::wstring::npos)
        hint = "files lie in directories, as in /cfg/x";
    else if (path.size() > kMaxPathLength)
        hint = kPathLimit;
    else if (nameOf(path).size() > kMaxFileNameLength)
        hint = "a file name has at most 127 characters";
    throw Failure(kRefused, session.message("\"" + oneLine(word) + "\" is no file path: " + hint),
                  word);
}

std::wstring directoryPath(const Session& session, const std::string& word) {
    std::wstring path = wide(word);
    if (path.size() > 1 && path.ends_with(L'/')) path.pop_back();
    if (isDirPath(path) && path.size() <= kMaxPathLength) return path;
    std::string hint = kNameRule;
    if (!path.starts_with(L'/'))
        hint = "a path begins with /, as in /cfg";
    else if (path.size() > kMaxPathLength)
        hint = kPathLimit;
    throw Failure(kRefused,
                  session.message("\"" + oneLine(word) + "\" is no directory path: " + hint), word);
}

std::wstring parentOf(const std::wstring& path) {
    const std::size_t slash = path.rfind(L'/');
    return slash == 0 ? L"/" : path.substr(0, slash);
}

std::wstring nameOf(const std::wstring& path) { return path.substr(path.rfind(L'/') + 1); }

std::wstring joined(const std::wstring& directory, const std::wstring& name) {
    return (directory == L"/" ? L"" : directory) + L"/" + name;
}

bool isStoredFile(Session& session, const std::wstring& path) {
    return isFilePath(path) && session.hasDirectories() && session.store().isFile(path.c_str()) &&
           !session.store().isDirectory(path.c_str());
}

bool isStoredDirectory(Session& session, const std::wstring& path) {
    return path == L"/" || (session.hasDirectories() && session.store().isDirectory(path.c_str()));
}

void refuse(const Session& session, const std::wstring& path, const std::string& text) {
    throw Failure(kRefused, session.message(text), utf8(path));
}

void refuseMissing(Session& session, const std::wstring& path) {
    const std::string shown = utf8(path);
    if (path == L"/" || (session.hasDirectories() && session.store().isDirectory(path.c_str())))
        throw Failure(kRefused,
                      session.message(shown + " is a directory, not a file" +
                                      hintFor("", namesIn(session, path)) +
                                      "; \"moradmin ls\" lists it, \"moradmin dump\" prints all"),
                      shown);
    if (isStoredFile(session, path))
        throw Failure(
            kRefused,
            session.message(shown + " is a file, not a directory; \"moradmin cat\" prints it"),
            shown);
    throw Failure(kRefused, session.message(shown + " is not there" + missingHint(session, path)),
                  shown);
}

}  // namespace mor::tool
