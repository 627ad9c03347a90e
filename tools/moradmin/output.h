#pragma once

#include "platform/lisp.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/options.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace mor::tool {

/// Keys in the order in which they are put.
using Json = nlohmann::ordered_json;

/// The version of the shapes of what is printed as JSON.
inline constexpr int kJsonVersion = 2;
/// An object that names this tool, the command and the drawing.
[[nodiscard]] Json jsonHead(const Options& options);
/// A text, or null where there is none.
[[nodiscard]] Json textOrNull(const std::string& text);
[[nodiscard]] std::string jsonText(const Json& object);
/// One object, one line.
void printJson(const Json& object);

/// One object, one line, whose last key holds a list that is printed as it comes.
class JsonList {
public:
    JsonList(const Json& head, const std::string& key);
    void add(const Json& item);
    void end();

private:
    bool m_first = true;
};

/// Wide text for a message or a name, as UTF-8.
[[nodiscard]] std::string utf8(std::wstring_view text);
/// A word of the command line as wide text; Failure when it is no UTF-8.
[[nodiscard]] std::wstring wide(const std::string& text);

/// The convenient form: numbers, texts, null, arrays; `{"list": [...], "tail": x}` for a dotted
/// list, `{"handle": "1A2F"}` for an entity name. Lists more than 256 levels deep are null.
[[nodiscard]] Json jsonValue(const CMORAdsLispVar& value);
/// `nil`, `integer`, `real`, `string`, `entity`, `list` or `dotted`.
[[nodiscard]] std::string typeName(const CMORAdsLispVar& value);

/// Puts type, exact text and convenient form of a stored value into an object.
void addValue(Json& object, const CMORAdsLispVar& value);

/// A real with the shortest digits that read back to the same bits.
[[nodiscard]] std::string realText(double value);
/// "X Y Z".
[[nodiscard]] std::string pointText(const std::array<double, 3>& point);

/// Whether stdout is a terminal: columns and headings there, plain lines elsewhere.
[[nodiscard]] bool onTerminal();
/// To be called when stdout has become another file: what it is is asked once, not for every row.
void lookAtOutputAgain();
/// Whether the terminal knows no escapes.
[[nodiscard]] bool onDumbTerminal();
/// A directory's name in its colour, where colour is wanted.
[[nodiscard]] std::string coloured(const std::string& text, bool directory);

/// Whether the next table begins with headings where stdout is no terminal.
void wantHeadings(bool wanted);

/// While it lives, every line on stdout begins with a text and a tab, and tables are plain.
class PrefixedLines {
public:
    explicit PrefixedLines(const std::string& prefix);
    ~PrefixedLines();
    PrefixedLines(const PrefixedLines&) = delete;
    PrefixedLines& operator=(const PrefixedLines&) = delete;

private:
    class Buffer;
    std::unique_ptr<Buffer> m_buffer;
    std::streambuf* m_former;
};

/// Whether such a text stands before each line: several drawings are listed.
[[nodiscard]] bool isPrefixed();

/// Rows of cells, each on one line: aligned under headings on a terminal, separated by tabs
/// elsewhere. A heading that begins with ">" aligns its column to the right.
void printTable(const std::vector<std::string>& headings,
                const std::vector<std::vector<std::string>>& rows);
/// The same for many: `row` makes the cells of each row, on a terminal twice.
void printTable(const std::vector<std::string>& headings, std::size_t count,
                const std::function<std::vector<std::string>(std::size_t)>& row);

/// What is said on stderr from now on is JSON where `options` want that; it names their command and
/// drawing.
void sayAs(const Options& options);
/// Says on stderr why a command ended, on one line.
void printFailure(const Options& options, const Failure& failure);
/// A remark on stderr, on one line, that changes no exit code.
void printNote(const std::string& text);

}  // namespace mor::tool
