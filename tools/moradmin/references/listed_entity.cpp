#include "tools/moradmin/references/listed_entity.h"

#include "host/host.h"
#include "tools/moradmin/picture/views.h"

namespace mor::tool {

namespace {

std::string spaceOf(const Session& session, const host::RecordInfo& info) {
    const bool model = info.place == host::Place::ModelSpace;
    if (!session.reference().empty() || model) return utf8(session.view().SpaceName());
    if (info.place != host::Place::PaperSpace) return info.container;
    const std::string block = layoutBlock(info);
    const std::string layout = layoutName(session.document(), block);
    return layout.empty() ? block : layout;
}

}  // namespace

ListedEntity describe(const Session& session, mor::EntityName name, CMOREntity& entity) {
    const auto info = host::recordInfo(session.document(), name);
    const std::string layer = entity.Connect(name) ? utf8(entity.GetLayer(nullptr)) : "";
    return {host::handleText(info->handle), info->type, layer, spaceOf(session, *info)};
}

Json entityJson(const Options& options, const ListedEntity& entity) {
    Json object = jsonHead(options);
    object["handle"] = textOrNull(entity.handle);
    object["type"] = entity.type;
    object["layer"] = entity.layer;
    object["space"] = entity.space;
    return object;
}

}  // namespace mor::tool
