#include "platform/owned.h"
#include "platform/runtime.h"
#include "platform/table_calls.h"
#include "space/record_flags.h"
#include "tools/moradmin/changes/own_records.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/views.h"
#include "tools/moradmin/references/references.h"
#include "tools/moradmin/shown_text.h"
#include "xref/xref_block_map.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

/// What the drawing's own record says of a block.
struct HostBlock {
    std::int64_t flags = 0;
    std::array<double, 3> base{};
};

/// A block as look-ups show it, and the drawing's own record under the same qualified name.
struct BlockRow {
    host::BlockInfo block;
    std::int64_t flags = 0;
    std::optional<HostBlock> host;
};

std::int64_t shownFlags(const host::BlockInfo& block) {
    const mor::ResbufList record{acdbTblSearch(L"BLOCK", block.symbol.qualified.c_str(), 0)};
    const resbuf* flags = mor::findGroup(record, mor::kGroupFlags);
    return flags == nullptr || block.layout ? block.flags : flags->resval.rint;
}

/// The blocks of the drawing that is looked at, then those of its references. What it keeps of
/// theirs stands with them.
std::vector<BlockRow> blockRows(const Session& session) {
    std::map<std::wstring, HostBlock> own;  // by upper-case name
    const auto note = [&own](const std::wstring& name, const host::BlockInfo& block) {
        own.try_emplace(name, HostBlock{block.flags, block.recordedBase});
    };
    const bool inside = !session.reference().empty();  // else the drawing's own blocks come first
    if (inside)
        host::forEachBlock(session.document(), L"", [&note](const host::BlockInfo& block) {
            note(upperCase(block.symbol.symbol), block);
        });
    std::vector<std::wstring> references = loadedReferences(session);
    references.insert(references.begin(), session.reference());
    std::vector<BlockRow> rows;
    std::map<std::wstring, std::size_t> known;  // by upper-case qualified name
    for (const std::wstring& reference : references)
        host::forEachBlock(session.document(), reference, [&](const host::BlockInfo& block) {
            const bool below = reference != session.reference();
            // A reference's spaces are blocks within itself only.
            if (below && block.layout) return;
            const std::wstring name = upperCase(block.symbol.qualified);
            if (!inside && !below) note(name, block);
            BlockRow row{block, shownFlags(block), {}};
            if (const auto found = own.find(name); found != own.end()) row.host = found->second;
            const auto [at, added] = known.try_emplace(name, rows.size());
            if (added)
                rows.push_back(std::move(row));
            else if (below)
                rows[at->second] = std::move(row);
        });
    return rows;
}

constexpr std::pair<std::int64_t, const char*> kBlockFlags[] = {{kBlockAnonymous, "anonymous"},
                                                                {kBlockAttributes, "attributes"},
                                                                {kBlockOverlay, "overlay"},
                                                                {kBlockDependent, "dependent"},
                                                                {kBlockResolved, "resolved"}};

bool isSet(const BlockRow& row, std::int64_t bit) {
    return (row.flags & bit) != 0 || (bit == kBlockAnonymous && row.block.anonymous) ||
           (bit == kBlockAttributes && row.block.attributes);
}

/// The name of the layout that the block holds; empty for none, and within a reference.
std::string layoutOf(const Session& session, const BlockRow& row) {
    if (!row.block.layout || !session.reference().empty()) return {};
    return layoutName(session.document(), utf8(row.block.symbol.symbol));
}

std::string flagsText(const Session& session, const BlockRow& row) {
    std::string text = row.block.layout ? "layout" : row.block.reference ? "reference" : "";
    if (const std::string name = layoutOf(session, row); !name.empty()) text += "=" + name;
    for (const auto& [bit, word] : kBlockFlags)
        if (isSet(row, bit)) text += (text.empty() ? "" : ",") + std::string(word);
    return text.empty() ? "-" : text;
}

std::string hostText(const std::optional<HostBlock>& block) {
    if (!block) return "-";
    return std::to_string(block->flags) + " " + pointText(block->base);
}

Json blockJson(const Session& session, const BlockRow& row) {
    const host::BlockInfo& block = row.block;
    Json object{{"name", nameWithin(session, block.symbol.qualified)},
                {"qualified", utf8(block.symbol.qualified)},
                {"flags", row.flags}};
    object["layout"] = block.layout;
    object["reference"] = block.reference;
    for (const auto& [bit, word] : kBlockFlags) object[word] = isSet(row, bit);
    object["base"] = block.base;
    object["entities"] = block.entities;
    object["inserts"] = block.inserts;
    object["path"] = textOrNull(utf8(block.path));
    object["host"] = nullptr;
    object["layoutName"] = nullptr;
    if (const std::string name = layoutOf(session, row); !name.empty()) object["layoutName"] = name;
    if (row.host) object["host"] = {{"flags", row.host->flags}, {"base", row.host->base}};
    return object;
}

/// A line of the library's listing. Its own line end stays, and the tab before the path; others
/// stand in names.
void printListing(std::wstring_view text) {
    const bool ends = text.ends_with(L'\n');
    const std::wstring_view line = text.substr(0, text.size() - (ends ? 1 : 0));
    const std::size_t path = line.rfind(L"\t[");
    std::cout << oneLine(utf8(line.substr(0, path)));
    if (path != std::wstring_view::npos) std::cout << "\t" << oneLine(utf8(line.substr(path + 1)));
    std::cout << (ends ? "\n" : "");
}

int dumpBlocks(const Session& session) {
    std::vector<std::wstring> names = {session.reference()};
    if (session.reference().empty()) {
        names.clear();
        host::forEachBlock(session.document(), L"", [&names](const host::BlockInfo& block) {
            if (block.reference) names.push_back(block.symbol.symbol);
        });
        if (names.empty())
            printNote(session.message("there are no references whose blocks to list"));
    }
    bool all = true;
    host::setPrinter(printListing);
    for (const std::wstring& name : names) {
        CXrefBlockMap map;
        if (map.Load(name.c_str())) {
            map.Dump();
            continue;
        }
        printNote(session.message("the reference " + utf8(name) + " has no entities to go by"));
        all = false;
    }
    host::setPrinter({});
    return all ? kDone : kRefused;
}

}  // namespace

int runBlocks(Session& session, const Options& options) {
    if (options.blockDump) {
        if (options.json)
            throw Failure(kUsage, "--dump prints the library's own listing; leave out --json");
        return dumpBlocks(session);
    }
    std::vector<BlockRow> rows = blockRows(session);
    if (!options.all)
        tellOwn(session, options,
                std::erase_if(
                    rows, [](const BlockRow& row) { return isOwnBlock(row.block.symbol.symbol); }),
                "blocks");
    tellMissing(session, options);
    if (!options.json) {
        printTable({"NAME", "FLAGS", ">ENTITIES", ">INSERTS", "BASE", "PATH", "HOST"}, rows.size(),
                   [&](std::size_t at) -> std::vector<std::string> {
                       const host::BlockInfo& block = rows[at].block;
                       return {nameWithin(session, block.symbol.qualified),
                               flagsText(session, rows[at]),
                               std::to_string(block.entities),
                               std::to_string(block.inserts),
                               pointText(block.base),
                               block.path.empty() ? "-" : utf8(block.path),
                               hostText(rows[at].host)};
                   });
        return kDone;
    }
    JsonList list(jsonHead(options), "blocks");
    for (const BlockRow& row : rows) list.add(blockJson(session, row));
    list.end();
    return kDone;
}

}  // namespace mor::tool
