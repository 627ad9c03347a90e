// fill_drawing FROM TO N: adds N lines, circles and texts on 40 layers to the model space of a
// drawing and saves it under another name, so that a DWG and a DXF come to hold the same.

#include "host/host.h"
#include "platform/entity_calls.h"
#include "platform/list_calls.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace mor::bench {
namespace {

/// Numbers with all their digits, as measured ones have them.
int makeEntity(int number) {
    const std::wstring layer = L"WALLS" + std::to_wstring(number / 10 % 40);
    const double at = number * std::sqrt(0.137);
    const double from[] = {at, (number % 997) * std::sqrt(1.57), 0.0};
    const double to[] = {at * 1.11, std::sqrt(157.0), 0.0};
    resbuf* list = nullptr;
    if (number % 10 == 7)
        list = acutBuildList(RTDXF0, L"CIRCLE", 8, layer.c_str(), 10, from, 40, 2.5, 0);
    else if (number % 10 == 9)
        list =
            acutBuildList(RTDXF0, L"TEXT", 8, layer.c_str(), 10, from, 40, 2.5, 1, L"Room 17", 0);
    else
        list = acutBuildList(RTDXF0, L"LINE", 8, layer.c_str(), 10, from, 11, to, 0);
    const int made = acdbEntMake(list);
    acutRelRb(list);
    return made;
}

int fill(const char* from, const char* to, int count) {
    auto opened = host::openDocument(from);
    if (!opened) return std::fprintf(stderr, "%s\n", opened.error().message().c_str()), 1;
    host::setCurrentDocument(opened.value());
    host::setActiveDocument(opened.value());
    for (int i = 0; i < count; ++i)
        if (makeEntity(i) != RTNORM) return std::fprintf(stderr, "nothing can be made\n"), 1;
    host::SaveOptions options;
    options.output = to;
    options.backup = false;
    const auto saved = host::saveDocument(opened.value(), options);
    if (!saved) return std::fprintf(stderr, "%s\n", saved.error().message().c_str()), 1;
    host::closeDocument(opened.value());
    return 0;
}

}  // namespace
}  // namespace mor::bench

int main(int argc, char** argv) {
    if (argc == 4) return mor::bench::fill(argv[1], argv[2], std::atoi(argv[3]));
    std::fputs("fill_drawing FROM TO N\n", stderr);
    return 2;
}
