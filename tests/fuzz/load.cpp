#include "frame/module.h"
#include "tests/fuzz/drawing_input.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/session.h"

#include <iostream>
#include <optional>
#include <sstream>
#include <string>

namespace {

/// What `dump` prints when the input was loaded into a new drawing; none when it was refused.
std::optional<std::string> loaded(const std::string& drawing, const std::string& input) {
    using namespace mor;
    tool::Options options;
    options.drawing = drawing;
    options.arguments = {input};
    std::ostringstream out;
    std::streambuf* const former = std::cout.rdbuf(out.rdbuf());
    std::optional<std::string> dump;
    try {
        tool::Session session(options);
        tool::runLoad(session, options);
        session.forget();
        options.command = "dump";
        options.arguments = {"/"};
        tool::runDump(session, options);
        dump = out.str();
    } catch (const tool::Failure& failure) {
        fuzz::require(*failure.what() != '\0', "refused without a reason");
    }
    std::cout.rdbuf(former);
    return dump;
}

}  // namespace

/// What is loaded is dumped, and what was dumped loads as the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mor;
    static const int s_attached = attachModule();
    fuzz::require(s_attached == 1, "the library does not start");
    static const std::string s_drawing = [] {
        const std::string path = fuzz::fileNamed("new.dxf");
        AcApDocument* document = host::createDocument(host::Release::R2018);
        fuzz::require(static_cast<bool>(host::saveDocument(document, {.output = path})), "no save");
        host::closeDocument(document);
        return path;
    }();
    const auto dump = loaded(s_drawing, fuzz::writeFile("input.json", fuzz::asText(data, size)));
    if (!dump) return 0;
    const auto again = loaded(s_drawing, fuzz::writeFile("dump.json", *dump));
    fuzz::require(again.has_value(), "a dump does not load", *dump);
    fuzz::require(*again == *dump, "a dump loads differently", *dump + *again);
    return 0;
}
