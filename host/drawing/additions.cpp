#include "host/drawing/additions.h"

#include "host/text/group_codes.h"

#include <string>
#include <utility>

namespace mor::host {

namespace {

ContainerNumber ensureTable(Drawing& drawing, std::string_view table) {
    if (const ContainerNumber known = drawing.names().findTable(table)) return known;
    return drawing.addTable(table, drawing.tableStyle("TABLE").markers ? drawing.takeHandle() : 0);
}

RecordNumber addSymbol(Drawing& drawing, ContainerNumber table, const RecordStyle& style,
                       NewRecord record, std::string_view subclass) {
    record.owner = drawing.container(table).owner;
    const std::uint64_t handle = record.handle;
    return drawing.add(table, makeTableRecord(style, record, subclass), handle);
}

void addApplication(Drawing& drawing, ContainerNumber table, std::string_view name) {
    NewRecord record{"APPID", 0, 0, {}};
    record.groups = {{kNameCode, std::string(name)}, {kFlagsCode, std::int64_t{0}}};
    RecordStyle style = drawing.tableStyle(record.type);
    record.handle = style.markers ? drawing.takeHandle() : 0;
    // Readers take a file without a release for R12 and look for the name without markers.
    if (drawing.version().empty()) style.markers = false;
    addSymbol(drawing, table, style, std::move(record), "AcDbRegAppTableRecord");
}

/// Before R13 block records stand only where the file's own blocks name them, or where it has a
/// table of them and says what release it is.
bool wantsBlockRecords(const Drawing& drawing) {
    const RecordStyle style = drawing.entityStyle("BLOCK");
    if (style.release >= Release::R13) return true;
    if (!style.markers) return false;
    return style.owners || (!drawing.version().empty() &&
                            drawing.names().findTable("BLOCK_RECORD") != kNoContainer);
}

std::uint64_t addBlockRecord(Drawing& drawing, std::wstring_view name) {
    const ContainerNumber table = ensureTable(drawing, "BLOCK_RECORD");
    NewRecord record{"BLOCK_RECORD", drawing.takeHandle(), 0, {}};
    record.groups.push_back({kNameCode, drawing.text().encode(name)});
    if (drawing.release() >= Release::R2000) record.groups.push_back({340, std::string("0")});
    if (drawing.release() >= Release::R2007)
        record.groups.insert(
            record.groups.end(),
            {{kFlagsCode, std::int64_t{0}}, {280, std::int64_t{1}}, {281, std::int64_t{0}}});
    const std::uint64_t handle = record.handle;
    const RecordStyle style = drawing.tableStyle(record.type);
    addSymbol(drawing, table, style, std::move(record), "AcDbBlockTableRecord");
    return handle;
}

}  // namespace

RecordNumber addLayer(Drawing& drawing, std::wstring_view name) {
    NewRecord record{"LAYER", 0, 0, {}};
    record.groups = {{kNameCode, drawing.text().encode(name)},
                     {kFlagsCode, std::int64_t{0}},
                     {62, std::int64_t{7}}};
    const RecordStyle style = drawing.tableStyle(record.type);
    const RecordNumber zero = drawing.names().findSymbol("LAYER", L"0");
    const GroupList model = zero == 0 ? GroupList() : drawing.groupsOf(zero);
    const Group* linetype = model.find(6);
    record.groups.push_back({6, linetype != nullptr ? std::string(linetype->text())
                                : style.markers     ? "Continuous"
                                                    : "CONTINUOUS"});
    if (style.markers) {
        if (const Group* weight = model.find(370))
            record.groups.push_back({370, weight->integer().value_or(-3)});
        for (const int code : {390, 347, 348})
            if (const Group* group = model.find(code))
                record.groups.push_back({code, group->shown()});
    }
    const ContainerNumber table = ensureTable(drawing, "LAYER");
    record.handle = style.markers ? drawing.takeHandle() : 0;
    return addSymbol(drawing, table, style, std::move(record), "AcDbLayerTableRecord");
}

void registerApplication(Drawing& drawing, std::string_view name) {
    const std::wstring wide(name.begin(), name.end());
    if (drawing.names().findSymbol("APPID", wide) != 0) return;
    const bool fresh = drawing.names().findTable("APPID") == kNoContainer;
    const ContainerNumber table = ensureTable(drawing, "APPID");
    // Without it CAD programs refuse a file of R13 or later, or one that looks like that.
    if (fresh && (drawing.release() >= Release::R13 || drawing.entityForm().marked))
        addApplication(drawing, table, "ACAD");
    addApplication(drawing, table, name);
}

ContainerNumber addBlock(Drawing& drawing, std::wstring_view name, std::int64_t flags,
                         const double* base) {
    const std::uint64_t owner =
        wantsBlockRecords(drawing) ? addBlockRecord(drawing, name) : std::uint64_t{0};
    const ContainerNumber block = drawing.addBlock(name, owner);
    const RecordStyle style = drawing.entityStyle("BLOCK");
    const NewRecord begin{"BLOCK", style.markers ? drawing.takeHandle() : 0, owner, {}};
    drawing.add(block, makeBlockBegin(style, begin, drawing.container(block).name, flags, base),
                begin.handle, kEdge);
    return block;
}

void redefineBlock(Drawing& drawing, ContainerNumber block, std::int64_t flags,
                   const double* base) {
    drawing.clearBlock(block);
    const RecordNumber head = drawing.container(block).head;
    drawing.setGroup(head, kFlagsCode, flags);
    for (int i = 0; i < 3; ++i) drawing.setGroup(head, 10 * (i + 1), base[i]);
}

void endBlock(Drawing& drawing, ContainerNumber block) {
    if (drawing.container(block).end != 0) return;
    const NewRecord end{"ENDBLK", drawing.takeHandle(), drawing.container(block).owner, {}};
    drawing.add(block, makeBlockEnd(drawing.entityStyle("ENDBLK"), end), end.handle, kEdge);
}

}  // namespace mor::host
