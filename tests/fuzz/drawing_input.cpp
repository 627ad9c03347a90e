#include "tests/fuzz/drawing_input.h"

#include "host/faults.h"
#include "tests/support/process.h"
#include "tests/support/run_folder.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <utility>
#include <vector>

namespace mor::fuzz {

namespace {

namespace fs = std::filesystem;

/// A drawing that was opened, or why it was not.
struct Opened {
    AcApDocument* document = nullptr;
    std::string text;  ///< all that could be read
    bool damaged = false;
};

Opened open(const fs::path& path, host::Opening opening = host::Opening::AsItIs) {
    const auto document = host::openDocument(path, opening);
    if (!document) {
        require(!document.error().text.empty(), "a drawing is refused without a reason");
        return {nullptr, document.error().message(), false};
    }
    const host::DocumentInfo info = host::documentInfo(document.value());
    std::string text = describe(document.value(), Records::All);
    if (info.damage)
        text += info.damage->text + " " + std::to_string(info.damage->line) + " " +
                std::to_string(info.damage->offset);
    for (const host::Problem& problem : host::documentProblems(document.value()))
        text += problem.text + "\n";
    return {document.value(), std::move(text), info.damage.has_value()};
}

bool isContent(const host::RecordInfo& record) {
    return record.place != host::Place::Structure && record.place != host::Place::Header;
}

void keepsEveryByte(AcApDocument* document, std::string_view bytes) {
    for (const std::string& oddity : host::verifySave(document))
        require(false, "a save would not keep everything", oddity);
    const fs::path output = fileNamed("saved.dxf");
    const auto saved = host::saveDocument(document, {.output = output, .backup = false});
    require(static_cast<bool>(saved), "a whole drawing is not saved",
            saved ? "" : saved.error().text);
    require(test::readFile(output) == bytes, "a save changed bytes");
}

void salvages(const fs::path& path) {
    const Opened part = open(path);
    const std::string content = describe(part.document, Records::Content);
    host::closeDocument(part.document);
    const Opened salvaged = open(path, host::Opening::Salvaged);
    require(!salvaged.damaged, "what was salvaged is damaged", salvaged.text);
    require(describe(salvaged.document, Records::Content) == content, "salvaging changed records");
    const fs::path output = fileNamed("saved.dxf");
    const auto saved = host::saveDocument(salvaged.document, {.output = output, .backup = false});
    require(static_cast<bool>(saved), "what was salvaged is not saved",
            saved ? "" : saved.error().text);
    host::closeDocument(salvaged.document);
    const Opened again = open(output);
    require(again.document != nullptr && !again.damaged, "what was salvaged reads back damaged",
            again.text);
    require(describe(again.document, Records::Content) == content, "a save lost what was salvaged");
    host::closeDocument(again.document);
}

}  // namespace

void require(bool holds, std::string_view text, std::string_view more) {
    if (holds) return;
    std::cerr << "FAILED: " << text << (more.empty() ? "" : ": ") << more << std::endl;
    std::abort();
}

fs::path fileNamed(std::string_view name) {
    static const test::RunFolder s_folder(fs::is_directory("/dev/shm") ? fs::path("/dev/shm")
                                                                       : fs::temp_directory_path());
    return s_folder.path() / name;
}

fs::path writeFile(std::string_view name, std::string_view bytes) {
    fs::path path = fileNamed(name);
    test::writeFile(path, bytes);
    return path;
}

std::string describe(const AcApDocument* document, Records which) {
    std::vector<std::string> lines;
    host::forEachRecord(document, [&](const host::RecordInfo& record) {
        if (record.erased || (which == Records::Content && !isContent(record))) return;
        std::string line = record.type + " " + std::to_string(static_cast<int>(record.place)) +
                           " " + record.container + (record.subEntity ? " sub" : "");
        for (const host::RecordGroup& group : host::recordGroups(document, record.name))
            line += "|" + std::to_string(group.code) + " " + group.value;
        const host::RecordAttributes attributes = host::recordAttributes(document, record.name);
        for (const host::RecordAttribute& attribute : attributes.items)
            line += "|" + host::toUtf8(attribute.name) + " " + std::to_string(attribute.bytes);
        lines.push_back(line + "|" + attributes.damage);
    });
    if (which == Records::Content) std::ranges::sort(lines);
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

void roundTrip(std::string_view bytes) {
    const fs::path path = writeFile("input.dxf", bytes);
    host::faults::readLineByLine(true);
    const Opened slow = open(path);
    if (slow.document != nullptr) host::closeDocument(slow.document);
    host::faults::readLineByLine(false);
    const Opened fast = open(path);
    require(fast.text == slow.text && fast.damaged == slow.damaged, "the two scans differ",
            "\n" + fast.text + "\n" + slow.text);
    if (fast.document == nullptr) return;
    if (!fast.damaged) keepsEveryByte(fast.document, bytes);
    host::closeDocument(fast.document);
    if (fast.damaged) salvages(path);
}

}  // namespace mor::fuzz
