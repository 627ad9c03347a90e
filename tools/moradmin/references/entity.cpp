#include "platform/entity.h"

#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/looking/foreign.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/references/listed_entity.h"
#include "tools/moradmin/shown_text.h"

#include <iostream>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

Json attributesJson(const host::RecordAttributes& attributes) {
    Json items = Json::array();
    for (const host::RecordAttribute& item : attributes.items)
        items.push_back({{"name", utf8(item.name)},
                         {"type", typeName(item.value)},
                         {"used", item.bytes},
                         {"lisp", host::lispText(item.value)},
                         {"value", jsonValue(item.value)}});
    return items;
}

mor::EntityName findEntity(const Session& session, const std::string& word) {
    ads_name name{};
    if (session.view().handEnt(wide(word).c_str(), name)) return mor::EntityName(name);
    const std::string where = session.reference().empty() ? "" : " in " + utf8(session.reference());
    const bool prefixed = word.starts_with("0x") || word.starts_with("0X");
    throw Failure(kRefused,
                  session.message("no record has the handle " + word + where +
                                  (prefixed ? "; handles are written without 0x: " + word.substr(2)
                                            : "; \"moradmin entities\" lists them")),
                  word);
}

}  // namespace

int runEntity(Session& session, const Options& options) {
    const mor::EntityName name = findEntity(session, options.argument());
    const std::vector<host::RecordGroup> groups = host::recordGroups(session.document(), name);
    const host::RecordAttributes attributes = host::recordAttributes(session.document(), name);
    if (!attributes.damage.empty())
        printNote(session.message("its attributes cannot be read: " + attributes.damage));
    const auto info = host::recordInfo(session.document(), name);
    const bool opaque = info && info->opaque;
    if (opaque && !options.json)
        printNote(session.message("the own data of this " + info->type +
                                  " are not decoded, only what all records have"));
    if (options.json) {
        CMOREntity entity;
        Json object = entityJson(options, describe(session, name, entity));
        object["groups"] = Json::array();
        for (const host::RecordGroup& group : groups) object["groups"].push_back(groupJson(group));
        object["attributes"] = attributesJson(attributes);
        object["decoded"] = !opaque;
        object["used"] = attributes.used;
        object["free"] = attributes.free;
        printJson(object);
        return kDone;
    }
    for (const host::RecordGroup& group : groups)
        std::cout << group.code << "\t" << oneLine(group.value) << "\n";
    for (const host::RecordAttribute& item : attributes.items)
        std::cout << "attribute\t" << oneLine(utf8(item.name)) << "\t"
                  << oneLine(host::lispText(item.value)) << "\n";
    return kDone;
}

}  // namespace mor::tool
