#include "host/host.h"
#include "tools/moradmin/changes/contents.h"
#include "tools/moradmin/changes/own_records.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/damage/store_walk.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/references/references.h"

#include <regex.h>
#include <set>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// An extended regular expression, as other greps have it; or a text as it stands.
class Pattern {
public:
    Pattern(const std::string& text, bool fixed, bool ignoreCase) {
        const int flags = REG_EXTENDED | REG_NOSUB | (ignoreCase ? REG_ICASE : 0);
        const int wrong =
            ::regcomp(&m_expression, fixed ? quoted(text).c_str() : text.c_str(), flags);
        if (wrong == 0) return;
        std::string why(200, '\0');
        why.resize(::regerror(wrong, &m_expression, why.data(), why.size()) - 1);
        throw Failure(kUsage, "\"" + text + "\" is no regular expression: " + why +
                                  "; -F takes it as it stands");
    }
    ~Pattern() { ::regfree(&m_expression); }
    Pattern(const Pattern&) = delete;
    Pattern& operator=(const Pattern&) = delete;

    [[nodiscard]] bool matches(const std::string& text) const {
        return ::regexec(&m_expression, text.c_str(), 0, nullptr, 0) == 0;
    }

private:
    static std::string quoted(const std::string& text) {
        std::string result;
        for (const char c : text) {
            if (std::string("\\^$.[]|()*+?{}").find(c) != std::string::npos) result += '\\';
            result += c;
        }
        return result;
    }
    regex_t m_expression{};
};

struct Hit {
    std::string space;   ///< where it lies: a space or block, a table, a reference in front
    std::string handle;  ///< empty for none
    std::string what;    ///< the record's type, "file", or the application of extended data
    std::string text;
};

/// Whether a group of a record holds a text of its own, not the name of something that is searched
/// where it is defined.
bool isSearched(const host::RecordInfo& record, int code) {
    if (code == 1 || (code >= 300 && code <= 309) || code == 1000) return true;
    const bool named = record.place == host::Place::Table || record.type == "BLOCK" ||
                       record.type == "ATTRIB" || record.type == "ATTDEF";
    if (code == 2) return named && record.type != "BLOCK_RECORD";
    if (code != 3) return false;
    return record.type == "MTEXT" || record.type == "ATTDEF" || record.place == host::Place::Object;
}

std::string spaceOf(const host::RecordInfo& record) {
    switch (record.place) {
        case host::Place::ModelSpace:
            return "ModelSpace";
        case host::Place::PaperSpace:
            return record.container.empty() ? "*Paper_Space" : record.container;
        case host::Place::Object:
            return "OBJECTS";
        case host::Place::Header:
            return "HEADER";
        default:
            return record.container.empty() ? record.type : record.container;
    }
}

class Search {
public:
    Search(const Options& options, const Pattern& pattern)
        : m_options(options), m_pattern(pattern) {}

    /// A drawing with its store; `prefix` names the reference.
    void drawing(AcApDocument* document, const std::string& prefix) {
        OwnRecords own(document);
        host::forEachRecord(document, [&](const host::RecordInfo& record) {
            if (!own.isOwn(record) && !record.erased) searchRecord(document, record, prefix);
        });
        const StoreState state = walkStore(document);
        for (const auto& [path, held] : contentsOf(state)) {
            const std::string shown = utf8(path);
            if (m_pattern.matches(shown) || m_pattern.matches(held.lisp))
                report({prefix + shown, "", held.directory ? "directory" : "file", held.lisp});
        }
    }
    [[nodiscard]] std::size_t count() const { return m_count; }

private:
    void searchRecord(AcApDocument* document, const host::RecordInfo& record,
                      const std::string& prefix) {
        std::string application;
        std::string whole;  // of a long text, which is cut into pieces
        const std::string place = prefix + spaceOf(record);
        const std::string handle = host::handleText(record.handle);
        for (const host::RecordGroup& group : host::recordGroups(document, record.name)) {
            if (group.code == 1001) application = group.value;
            if (!isSearched(record, group.code)) continue;
            if (record.type == "MTEXT" && group.code < 1000) {
                whole += group.value;
                continue;
            }
            if (m_pattern.matches(group.value))
                report({place, handle, group.code < 1000 ? record.type : application, group.value});
        }
        if (!whole.empty() && m_pattern.matches(whole)) report({place, handle, record.type, whole});
    }
    void report(const Hit& hit) {
        ++m_count;
        if (m_options.quiet) return;
        if (m_options.json) {
            Json object = jsonHead(m_options);
            object["space"] = hit.space;
            object["handle"] = textOrNull(hit.handle);
            object["what"] = hit.what;
            object["text"] = textOrNull(hit.text);
            printJson(object);
            return;
        }
        printTable({"SPACE", "HANDLE", "WHAT", "TEXT"},
                   {{hit.space, hit.handle.empty() ? "-" : hit.handle, hit.what, hit.text}});
    }

    const Options& m_options;
    const Pattern& m_pattern;
    std::size_t m_count = 0;
};

}  // namespace

int runGrep(Session& session, const Options& options) {
    const Pattern pattern(options.argument(), options.fixed, options.ignoreCase);
    Search search(options, pattern);
    search.drawing(session.document(), "");
    std::set<std::string> searched;
    for (const host::ReferenceInfo& reference : host::references(session.document())) {
        if (!reference.loaded || !searched.insert(reference.found.string()).second) continue;
        const auto opened = host::openDocument(reference.found);
        if (!opened) continue;  // it was readable a moment ago; `xrefs` says what is wrong now
        search.drawing(opened.value(), utf8(reference.name) + "|");
        host::closeDocument(opened.value());
    }
    session.activate();
    if (!isPrefixed()) tellMissing(session, options);
    return search.count() == 0 ? kNo : kDone;
}

}  // namespace mor::tool
