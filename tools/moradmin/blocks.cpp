#include "platform/owned.h"
#include "platform/runtime.h"
#include "platform/table_calls.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references.h"
#include "xref/xref_block_map.h"

#include <cstdint>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace mor::tool {

namespace {

/// A block as look-ups show it, and the drawing's own record under the same qualified name.
struct BlockRow {
    host::BlockInfo block;
    std::int64_t flags = 0;
    std::optional<host::BlockInfo> host;
};

std::int64_t shownFlags(const host::BlockInfo& block) {
    const mor::ResbufList record{acdbTblSearch(L"BLOCK", block.symbol.qualified.c_str(), 0)};
    const resbuf* flags = mor::findGroup(record, 70);
    return flags == nullptr || block.layout ? block.flags : flags->resval.rint;
}

/// Blocks of references, with what the drawing holds under their qualified names.
std::vector<BlockRow> referenceRows(const Session& session, const std::wstring& reference,
                                    const std::vector<host::BlockInfo>& own) {
    std::vector<BlockRow> rows;
    for (const host::BlockInfo& block : host::blocks(session.document(), reference)) {
        // Only within the reference itself its spaces are blocks of it.
        if (block.layout && session.reference().empty()) continue;
        BlockRow row{block, shownFlags(block), {}};
        for (const host::BlockInfo& other : own)
            if (equalNoCase(other.symbol.symbol, block.symbol.qualified)) row.host = other;
        rows.push_back(std::move(row));
    }
    return rows;
}

std::vector<BlockRow> blockRows(const Session& session) {
    const std::vector<host::BlockInfo> own = host::blocks(session.document(), L"");
    // What is kept of dependent blocks has a bar in its name.
    std::vector<host::BlockInfo> kept = own;
    std::erase_if(kept, [](const host::BlockInfo& block) {
        return block.symbol.symbol.find(L'|') == std::wstring::npos;
    });
    if (!session.reference().empty()) return referenceRows(session, session.reference(), kept);
    std::vector<BlockRow> dependent;
    for (const std::wstring& reference : loadedReferences(session))
        for (BlockRow& row : referenceRows(session, reference, kept))
            dependent.push_back(std::move(row));
    std::set<std::wstring> shown;
    for (const BlockRow& row : dependent)
        if (row.host) shown.insert(upperCase(row.host->symbol.symbol));
    std::vector<BlockRow> rows;
    for (const host::BlockInfo& block : own)
        if (!shown.contains(upperCase(block.symbol.symbol)))
            rows.push_back({block, shownFlags(block), block});
    rows.insert(rows.end(), dependent.begin(), dependent.end());
    return rows;
}

constexpr std::pair<std::int64_t, const char*> kBlockFlags[] = {
    {1, "anonymous"}, {2, "attributes"}, {8, "overlay"}, {16, "dependent"}, {32, "resolved"}};

std::string flagsText(const BlockRow& row) {
    std::string text = row.block.layout ? "layout" : row.block.reference ? "reference" : "";
    for (const auto& [bit, word] : kBlockFlags)
        if ((row.flags & bit) != 0) text += (text.empty() ? "" : ",") + std::string(word);
    return text.empty() ? "-" : text;
}

std::string hostText(const std::optional<host::BlockInfo>& block) {
    if (!block) return "-";
    return std::to_string(block->flags) + " " + pointText(block->base);
}

Json blockJson(const Session& session, const BlockRow& row) {
    const host::BlockInfo& block = row.block;
    const bool inside = !session.reference().empty();
    Json object{{"name", utf8(inside ? block.symbol.symbol : block.symbol.qualified)},
                {"qualified", utf8(block.symbol.qualified)},
                {"flags", row.flags}};
    object["layout"] = block.layout;
    object["reference"] = block.reference;
    for (const auto& [bit, word] : kBlockFlags) object[word] = (row.flags & bit) != 0;
    object["base"] = block.base;
    object["entities"] = block.entities;
    object["inserts"] = block.inserts;
    object["path"] = utf8(block.path);
    object["host"] = nullptr;
    if (row.host) object["host"] = {{"flags", row.host->flags}, {"base", row.host->base}};
    return object;
}

int dumpBlocks(const Session& session) {
    std::vector<std::wstring> names = {session.reference()};
    if (session.reference().empty()) {
        names.clear();
        for (const host::BlockInfo& block : host::blocks(session.document(), L""))
            if (block.reference) names.push_back(block.symbol.symbol);
        if (names.empty())
            printNote(session.message("there are no references whose blocks to list"));
    }
    bool all = true;
    host::setPrinter([](std::wstring_view text) { std::cout << utf8(text); });
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
    const bool inside = !session.reference().empty();
    Json blocks = Json::array();
    std::vector<std::vector<std::string>> rows;
    for (const BlockRow& row : blockRows(session)) {
        blocks.push_back(blockJson(session, row));
        const host::SymbolInfo& symbol = row.block.symbol;
        rows.push_back({utf8(inside ? symbol.symbol : symbol.qualified), flagsText(row),
                        std::to_string(row.block.entities), std::to_string(row.block.inserts),
                        pointText(row.block.base),
                        row.block.path.empty() ? "-" : utf8(row.block.path), hostText(row.host)});
    }
    if (!options.json) {
        printTable({"NAME", "FLAGS", ">ENTITIES", ">INSERTS", "BASE", "PATH", "HOST"}, rows);
        return kDone;
    }
    Json object = jsonHead(options);
    object["blocks"] = std::move(blocks);
    printJson(object);
    return kDone;
}

}  // namespace mor::tool
