#include "tools/moradmin/line/help.h"

#include <algorithm>
#include <array>
#include <utility>

namespace mor::tool {

namespace {

constexpr auto kExamples = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"new", "moradmin new fresh.dxf --release R2018"},
    {"info", "moradmin info floor_plan.dxf site_plan.dxf"},
    {"put", "moradmin put floor_plan.dxf /cfg/user/x '(1 2 3)'"},
    {"cat", "moradmin cat floor_plan.dxf '/cfg/*'"},
    {"ls", "moradmin ls floor_plan.dxf /cfg -l --header"},
    {"tree", "moradmin tree floor_plan.dxf /cfg"},
    {"dir", "moradmin dir floor_plan.dxf / -R"},
    {"find", "moradmin find floor_plan.dxf site_plan.dxf '/**/x' --values"},
    {"df", "moradmin df floor_plan.dxf --header"},
    {"rm", "moradmin rm -r floor_plan.dxf /cfg/old"},
    {"cp", "moradmin cp floor_plan.dxf:/cfg site_plan.dxf:/copied"},
    {"mv", "moradmin mv floor_plan.dxf /cfg/title /cfg/name"},
    {"mkdir", "moradmin mkdir floor_plan.dxf /cfg/new"},
    {"rmdir", "moradmin rmdir floor_plan.dxf /cfg/new"},
    {"dump", "moradmin dump floor_plan.dxf --text"},
    {"load", "moradmin load floor_plan.dxf store.json"},
    {"export", "moradmin export floor_plan.dxf:/cfg values"},
    {"import", "moradmin import values site_plan.dxf:/imported"},
    {"diff", "moradmin diff floor_plan.dxf site_plan.dxf"},
    {"check", "moradmin check -r ."},
    {"verify", "moradmin verify floor_plan.dxf"},
    {"xrefs", "moradmin xrefs floor_plan.dxf --tree"},
    {"layers", "moradmin layers floor_plan.dxf --in SITE"},
    {"blocks", "moradmin blocks floor_plan.dxf"},
    {"entities", "moradmin entities floor_plan.dxf --in SITE --layer 'T*,ROAD' --type CIRCLE"},
    {"entity", "moradmin entity floor_plan.dxf 43"},
    {"grep", "moradmin grep -i lot floor_plan.dxf site_plan.dxf"},
    {"header", "moradmin header floor_plan.dxf '$INS*'"},
    {"dict", "moradmin dict floor_plan.dxf /"},
    {"xdata", "moradmin xdata floor_plan.dxf --app MOR_ATTRIBUTES"},
    {"point", "moradmin point floor_plan.dxf --in SITE 1 2"},
    {"matrix", "moradmin matrix floor_plan.dxf --in SITE"},
    {"draw", "moradmin draw floor_plan.dxf -o floor_plan.svg"},
    {"layouts", "moradmin layouts floor_plan.dxf --header"},
    {"view", "moradmin view floor_plan.dxf -o floor_plan.html"},
    {"repair", "moradmin repair floor_plan.dxf --dry-run"},
    {"wipe", "moradmin wipe floor_plan.dxf --yes"},
    {"run", "moradmin run floor_plan.dxf -c 'put /cfg/a 1; put /cfg/b (1 2)'"},
    {"shell", "moradmin shell floor_plan.dxf"},
    {"help", "moradmin help put"},
});

}  // namespace

std::string_view exampleOf(const Command& command) {
    const auto* const found =
        std::ranges::find(kExamples, command.name, &decltype(kExamples)::value_type::first);
    return found == kExamples.end() ? std::string_view() : found->second;
}

}  // namespace mor::tool
