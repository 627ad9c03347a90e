#include "tools/moradmin/changes/own_records.h"

#include "dwgfs/names.h"
#include "platform/runtime.h"

#include <string>
#include <string_view>

namespace mor::tool {

namespace {

constexpr int kNameCode = 2;

}  // namespace

bool isOwnBlock(std::wstring_view name) { return equalNoCase(name, kFileSystemBlock); }

bool isOwnLayer(std::wstring_view name) { return equalNoCase(name, kControlLayer); }

bool OwnRecords::isOwnMain(const host::RecordInfo& record) const {
    const auto name = [&] {
        const auto text = host::recordGroup(m_document, record.name, kNameCode);
        return text ? host::fromUtf8(*text).value_or(L"") : std::wstring();
    };
    const std::string_view type = record.type;
    if (type == "INSERT") return isOwnBlock(name());
    if (record.place == host::Place::BlockDefinition)
        return isOwnBlock(host::fromUtf8(record.container).value_or(L""));
    if (type == "BLOCK" || type == "BLOCK_RECORD") return isOwnBlock(name());
    if (type == "LAYER") return isOwnLayer(name());
    return type == "APPID" && equalNoCase(name(), L"MOR_ATTRIBUTES");
}

bool OwnRecords::isOwn(const host::RecordInfo& record) {
    const std::string_view type = record.type;
    if (type == "ENDBLK") return m_blockIsOwn;
    if (!record.subEntity) m_lastWasOwn = isOwnMain(record);
    if (type == "BLOCK") m_blockIsOwn = m_lastWasOwn;
    return m_lastWasOwn;
}

}  // namespace mor::tool
