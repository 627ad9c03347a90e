#include "tools/moradmin/changes/text_dump.h"

#include "tools/moradmin/changes/fingerprint.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/session.h"
#include "tools/moradmin/shown_text.h"

#include <iostream>
#include <sstream>

namespace mor::tool {

namespace {

/// Keeps remarks from stderr.
class Silence {
public:
    Silence() : m_former(std::cerr.rdbuf(m_text.rdbuf())) {}
    ~Silence() { std::cerr.rdbuf(m_former); }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    std::ostringstream m_text;
    std::streambuf* m_former;
};

/// Whether a directory holds nothing: what lies in it would stand behind it.
bool isEmpty(Contents::const_iterator at, const Contents& contents) {
    const auto below = contents.lower_bound(at->first + L"/");
    return below == contents.end() || !below->first.starts_with(at->first + L"/");
}

/// A message without the name of the file, which is not the same for both sides of a comparison,
/// and without what lies beside it.
std::string withoutName(std::string message, const std::string& file) {
    message = message.substr(0, message.find("; " + file + ".bak"));
    if (!message.starts_with(file + ":")) return message;
    message.erase(0, file.size() + 1);
    return message.starts_with(' ') ? message.substr(1) : "line " + message;
}

}  // namespace

TextDump textDumpOf(const std::string& file) {
    TextDump dump;
    if (file == "/dev/null") return dump;
    const Silence silence;
    try {
        Session session(file);
        const StoreState& state = session.state();
        dump.contents = contentsOf(state);
        dump.outside = outsideOf(session.document());
        if (const auto damage = host::documentInfo(session.document()).damage)
            dump.trouble = "the drawing is damaged " + damagePlace(*damage);
        else if (const Finding* finding = state.firstStopping())
            dump.trouble = "the store is damaged: " + finding->message;
        refuseLostReadings();
    } catch (const std::exception& error) {
        dump.trouble = withoutName(error.what(), file);
    }
    static_cast<void>(takeSawDamage());
    if (!dump.trouble.empty())
        dump.outside += (dump.outside.empty() ? "bytes " : " bytes ") + fingerprintOfFile(file);
    return dump;
}

void printTextDump(const TextDump& dump) {
    for (auto at = dump.contents.begin(); at != dump.contents.end(); ++at) {
        const auto& [path, held] = *at;
        if (!held.directory)
            std::cout << utf8(path) << "\t" << held.lisp << "\n";
        else if (isEmpty(at, dump.contents))
            std::cout << utf8(path) << "/\t\n";
    }
    if (!dump.outside.empty()) std::cout << "drawing\t" << oneLine(dump.outside) << "\n";
    if (!dump.trouble.empty()) std::cout << "unreadable\t" << oneLine(dump.trouble) << "\n";
}

}  // namespace mor::tool
