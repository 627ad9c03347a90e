#include "tests/fuzz/drawing_input.h"

namespace {

void takeApart(const CMORAdsLispVar& value) {
    for (const CMORAdsLispVar& element : mor::host::elementsOf(value))
        mor::fuzz::require(mor::host::sameValue(element, element), "a value differs from itself");
}

}  // namespace

/// What reads as a value prints as a text that reads as the same value.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace mor;
    AcApDocument* document = host::createDocument(host::Release::R12);
    host::setCurrentDocument(document);
    const auto value = host::readLisp(fuzz::asText(data, size), host::UnknownHandles::Keep);
    if (value) {
        const std::string text = host::lispText(value.value());
        const auto again = host::readLisp(text, host::UnknownHandles::Keep);
        fuzz::require(again && host::sameValue(again.value(), value.value()),
                      "reads back differently", text);
        fuzz::require(host::lispText(again.value()) == text, "prints differently", text);
        fuzz::require(host::attributeText(value.value()).size() <= 2047, "a text is too long");
        takeApart(value.value());
    } else {
        fuzz::require(!value.error().text.empty(), "refused without a reason");
    }
    host::closeDocument(document);
    return 0;
}
