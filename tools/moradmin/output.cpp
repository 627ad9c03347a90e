#include "tools/moradmin/output.h"

#include "host/host.h"
#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <unistd.h>
#include <utility>

namespace mor::tool {

namespace {

/// One list on the way of `jsonValue`; no recursion, values may be nested deeply.
struct OpenList {
    std::vector<CMORAdsLispVar> items;
    std::size_t next = 0;
    bool dotted = false;
    Json done = Json::array();
};

/// Writers and readers of JSON go down a level of the stack for each array.
constexpr std::size_t kDeepestJson = 256;

Json jsonAtom(const CMORAdsLispVar& value) {
    switch (host::kindOf(value)) {
        case host::ValueKind::Integer:
            return host::integerOf(value);
        case host::ValueKind::Real:
            return host::realOf(value);
        case host::ValueKind::String:
            return utf8(host::stringOf(value));
        case host::ValueKind::EntityName: {
            const std::string text = host::lispText(value);  // (handent "1A2F")
            const std::size_t quote = text.find('"');
            const std::size_t end = text.rfind('"');
            return Json{{"handle", quote == end ? "" : text.substr(quote + 1, end - quote - 1)}};
        }
        default:
            return nullptr;
    }
}

bool isList(const CMORAdsLispVar& value) {
    const host::ValueKind kind = host::kindOf(value);
    return kind == host::ValueKind::List || kind == host::ValueKind::DottedList;
}

OpenList openList(const CMORAdsLispVar& value) {
    OpenList list;
    list.items = host::elementsOf(value);
    list.dotted = host::kindOf(value) == host::ValueKind::DottedList;
    return list;
}

Json closeList(OpenList list) {
    if (!list.dotted) return std::move(list.done);
    Json tail = std::move(list.done.back());
    list.done.erase(list.done.size() - 1);
    return Json{{"list", std::move(list.done)}, {"tail", std::move(tail)}};
}

Json s_noteHead;  ///< what notes begin with as JSON; null where they are text
bool s_prefixed = false;
std::optional<bool> s_terminal;
bool s_headings = false;     ///< wanted before the next table
bool s_headingLine = false;  ///< is being printed

/// The headings of a plain table.
void printHeadings(const std::vector<std::string>& headings) {
    s_headingLine = true;
    bool first = true;
    for (const std::string& heading : headings)
        std::cout << (std::exchange(first, false) ? "" : "\t")
                  << (heading.starts_with('>') ? heading.substr(1) : heading);
    std::cout << "\n";
    s_headingLine = false;
}

void printRow(const std::vector<std::string>& headings, const std::vector<std::size_t>& widths,
              const std::vector<std::string>& cells, bool isHeading) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const bool right = headings[i][0] == '>';
        const bool last = i + 1 == cells.size();
        const std::string cell = isHeading && right ? cells[i].substr(1) : cells[i];
        const std::string blanks(widths[i] - characterCount(cell), ' ');
        const std::string shown = last && !isHeading ? coloured(cell, cell.ends_with('/')) : cell;
        if (right)
            std::cout << blanks << shown;
        else
            std::cout << shown << (last ? std::string() : blanks);
        std::cout << (last ? "\n" : "  ");
    }
}

}  // namespace

Json jsonHead(const Options& options) {
    Json head{{"moradmin", kJsonVersion}, {"command", textOrNull(options.command)}};
    head["drawing"] = textOrNull(options.drawing);
    return head;
}

Json textOrNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

std::string jsonText(const Json& object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void printJson(const Json& object) { std::cout << jsonText(object) << "\n"; }

JsonList::JsonList(const Json& head, const std::string& key) {
    std::string text = jsonText(head);
    text.pop_back();  // the brace
    std::cout << text << ",\"" << key << "\":[";
}

void JsonList::add(const Json& item) {
    std::cout << (std::exchange(m_first, false) ? "" : ",") << jsonText(item);
}

void JsonList::end() { std::cout << "]}\n"; }

std::string utf8(std::wstring_view text) { return host::toUtf8(text); }

std::wstring wide(const std::string& text) {
    auto result = host::fromUtf8(text);
    if (!result) throw Failure(kUsage, "the argument \"" + text + "\" is not UTF-8");
    return std::move(*result);
}

Json jsonValue(const CMORAdsLispVar& value) {
    if (!isList(value)) return jsonAtom(value);
    std::vector<OpenList> open;
    open.push_back(openList(value));
    while (true) {
        OpenList& list = open.back();
        if (list.next < list.items.size()) {
            const CMORAdsLispVar item = list.items[list.next++];
            if (!isList(item))
                list.done.push_back(jsonAtom(item));
            else if (open.size() == kDeepestJson)
                list.done.push_back(nullptr);
            else
                open.push_back(openList(item));
            continue;
        }
        Json closed = closeList(std::move(list));
        open.pop_back();
        if (open.empty()) return closed;
        open.back().done.push_back(std::move(closed));
    }
}

std::string typeName(const CMORAdsLispVar& value) {
    switch (host::kindOf(value)) {
        case host::ValueKind::Nil:
            return "nil";
        case host::ValueKind::Integer:
            return "integer";
        case host::ValueKind::Real:
            return "real";
        case host::ValueKind::String:
            return "string";
        case host::ValueKind::EntityName:
            return "entity";
        case host::ValueKind::List:
            return "list";
        case host::ValueKind::DottedList:
            return "dotted";
    }
    return "nil";
}

void addValue(Json& object, const CMORAdsLispVar& value) {
    object["type"] = typeName(value);
    object["lisp"] = host::lispText(value);
    object["value"] = jsonValue(value);
}

std::string realText(double value) { return host::lispText(host::makeReal(value)); }

std::string pointText(const std::array<double, 3>& point) {
    std::string text;
    for (const double coordinate : point) text += (text.empty() ? "" : " ") + realText(coordinate);
    return text;
}

bool onTerminal() {
    if (!s_terminal) s_terminal = ::isatty(STDOUT_FILENO) == 1;
    return !s_prefixed && *s_terminal;
}

void lookAtOutputAgain() { s_terminal.reset(); }

bool onDumbTerminal() {
    const char* terminal = std::getenv("TERM");
    return terminal == nullptr || *terminal == '\0' || std::string_view(terminal) == "dumb";
}

bool isPrefixed() { return s_prefixed; }

void wantHeadings(bool wanted) { s_headings = wanted; }

/// Passes what it gets on to another buffer, a prefix before every line.
class PrefixedLines::Buffer : public std::streambuf {
public:
    Buffer(std::streambuf& target, std::string prefix)
        : m_target(target), m_prefix(std::move(prefix)) {}

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        const char letter = traits_type::to_char_type(c);
        return xsputn(&letter, 1) == 1 ? c : traits_type::eof();
    }
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        std::string_view rest(text, static_cast<std::size_t>(count));
        while (!rest.empty()) {
            if (m_begins) put(s_headingLine ? "DRAWING\t" : m_prefix);
            const std::size_t end = rest.find('\n');
            m_begins = end != std::string_view::npos;
            const std::size_t length = m_begins ? end + 1 : rest.size();
            put(rest.substr(0, length));
            rest.remove_prefix(length);
        }
        return count;
    }
    int sync() override { return m_target.pubsync(); }

private:
    void put(std::string_view text) {
        m_target.sputn(text.data(), static_cast<std::streamsize>(text.size()));
    }
    std::streambuf& m_target;
    std::string m_prefix;
    bool m_begins = true;
};

PrefixedLines::PrefixedLines(const std::string& prefix)
    : m_buffer(std::make_unique<Buffer>(*std::cout.rdbuf(), oneLine(prefix) + "\t")),
      m_former(std::cout.rdbuf(m_buffer.get())) {
    s_prefixed = true;
}

PrefixedLines::~PrefixedLines() {
    s_prefixed = false;
    std::cout.rdbuf(m_former);
}

std::string coloured(const std::string& text, bool directory) {
    const char* refused = std::getenv("NO_COLOR");
    if (!directory || !onTerminal() || onDumbTerminal() || (refused != nullptr && *refused != '\0'))
        return text;
    return "\033[1;34m" + text + "\033[0m";
}

void printTable(const std::vector<std::string>& headings, std::size_t count,
                const std::function<std::vector<std::string>(std::size_t)>& row) {
    const auto shown = [&row](std::size_t i) {
        std::vector<std::string> cells = row(i);
        for (std::string& cell : cells) cell = oneLine(cell);
        return cells;
    };
    if (!onTerminal()) {
        if (std::exchange(s_headings, false)) printHeadings(headings);
        for (std::size_t i = 0; i < count; ++i) {
            bool first = true;
            for (const std::string& cell : shown(i))
                std::cout << (std::exchange(first, false) ? "" : "\t") << cell;
            std::cout << "\n";
        }
        return;
    }
    std::vector<std::size_t> widths;
    widths.reserve(headings.size());
    for (const std::string& heading : headings)
        widths.push_back(characterCount(heading) - (heading[0] == '>' ? 1 : 0));
    for (std::size_t i = 0; i < count; ++i) {
        const std::vector<std::string> cells = shown(i);
        for (std::size_t column = 0; column < cells.size(); ++column)
            widths[column] = std::max(widths[column], characterCount(cells[column]));
    }
    printRow(headings, widths, headings, true);
    for (std::size_t i = 0; i < count; ++i) printRow(headings, widths, shown(i), false);
}

void printTable(const std::vector<std::string>& headings,
                const std::vector<std::vector<std::string>>& rows) {
    printTable(headings, rows.size(), [&rows](std::size_t i) { return rows[i]; });
}

void printFailure(const Options& options, const Failure& failure) {
    if (!options.json) {
        std::cerr << "moradmin: " << oneLine(failure.what()) << "\n";
        return;
    }
    Json object = jsonHead(options);
    object["error"] = Json{{"code", static_cast<int>(failure.code())}, {"message", failure.what()}};
    object["error"]["path"] = textOrNull(failure.path());
    std::cerr << jsonText(object) << "\n";
}

void sayAs(const Options& options) {
    s_noteHead = options.json ? jsonHead(options) : Json(nullptr);
}

void printNote(const std::string& text) {
    if (s_noteHead.is_null()) {
        std::cerr << "moradmin: " << oneLine(text) << "\n";
        return;
    }
    Json object = s_noteHead;
    object["note"] = text;
    std::cerr << jsonText(object) << "\n";
}

}  // namespace mor::tool
