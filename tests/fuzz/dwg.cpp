#include "host/faults.h"
#include "tests/fuzz/drawing_input.h"

/// Any bytes as a DWG drawing, whose sums count for nothing: what lies behind them must lead
/// nowhere. What can be opened is read to its last record, and a whole one is saved as it came.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mor;
    host::faults::trustSums(true);
    const auto path = fuzz::writeFile("input.dwg", fuzz::asText(data, size));
    const auto opened = host::openDocument(path);
    if (!opened) {
        fuzz::require(!opened.error().text.empty(), "a drawing is refused without a reason");
        return 0;
    }
    AcApDocument* document = opened.value();
    const std::string all = fuzz::describe(document, fuzz::Records::All);
    fuzz::require(all == fuzz::describe(document, fuzz::Records::All), "it reads differently");
    static_cast<void>(host::verifySave(document));
    const auto output = fuzz::fileNamed("saved.dwg");
    const auto saved = host::saveDocument(document, {.output = output, .backup = false});
    const bool damaged = host::documentInfo(document).damage.has_value();
    fuzz::require(!damaged || !saved, "a damaged drawing is saved");
    host::closeDocument(document);
    if (!saved) return 0;
    const auto again = host::openDocument(output);
    fuzz::require(static_cast<bool>(again), "what was saved does not open",
                  again ? "" : again.error().text);
    fuzz::require(fuzz::describe(again.value(), fuzz::Records::All) == all, "a save changed it");
    host::closeDocument(again.value());
    return 0;
}
