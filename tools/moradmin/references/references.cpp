#include "tools/moradmin/references/references.h"

#include "host/host.h"
#include "space/record_flags.h"
#include "tools/moradmin/output.h"

namespace mor::tool {

std::vector<std::wstring> loadedReferences(const Session& session) {
    const std::wstring prefix = session.reference().empty() ? L"" : session.reference() + L"|";
    std::vector<std::wstring> names;
    for (const host::ReferenceInfo& info : host::references(session.document()))
        if (info.loaded && info.name.starts_with(prefix)) names.push_back(info.name);
    return names;
}

void tellMissing(const Session& session, const Options& options) {
    if (options.quiet) return;
    std::size_t count = 0;
    std::string names;
    for (const host::ReferenceInfo& info : host::references(session.document())) {
        if (info.status != host::ReferenceStatus::NotFound &&
            info.status != host::ReferenceStatus::Unresolved)
            continue;
        ++count;
        names += (names.empty() ? "" : ", ") + utf8(info.name) + " (" + utf8(info.saved) + ")";
    }
    if (count != 0)
        printNote(
            session.message((count == 1 ? "a reference is missing: " : "references are missing: ") +
                            names + "; " + kWhereReferencesLie));
}

void tellOwn(const Session& session, const Options& options, std::size_t count, const char* what) {
    if (options.verbose && count != 0)
        printNote(session.message(std::to_string(count) + " " + what +
                                  " of the store are not listed; --all lists them"));
}

std::string whyNot(const host::ReferenceTry& attempt) {
    const std::string file = attempt.path.string();
    // What is wrong with a file that was opened names it already.
    return file.empty() || attempt.why.starts_with(file) ? attempt.why : file + ": " + attempt.why;
}

std::vector<std::string> layerNames(const Session& session) {
    std::vector<std::string> names;
    host::forEachSymbol(session.document(), session.reference(), "LAYER",
                        [&](const host::SymbolInfo& symbol) {
                            names.push_back(nameWithin(session, symbol.qualified));
                        });
    return names;
}

std::string nameWithin(const Session& session, const std::wstring& qualified) {
    const std::wstring prefix = session.reference() + L"|";
    return utf8(qualified.starts_with(prefix) ? qualified.substr(prefix.size()) : qualified);
}

std::optional<std::wstring> insertedBlock(mor::EntityName insert) {
    CMOREntity entity;
    const wchar_t* block = nullptr;
    if (!entity.Connect(insert) || entity.Type().CompareNoCase(L"INSERT") != 0 ||
        !entity.GetEntityEntry(kGroupName, block) || block == nullptr)
        return std::nullopt;
    return block;
}

}  // namespace mor::tool
