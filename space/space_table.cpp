#include "space/space_table.h"

#include "frame/message_system.h"
#include "platform/document_data.h"
#include "space/letter_factory.h"
#include "space/letter_lists.h"
#include "space/model_space.h"
#include "space/space.h"
#include "space/view.h"

#include <memory>
#include <set>
#include <string>
#include <utility>

namespace mor {
namespace {

std::set<CMORCadLetterSpace*>& currentTable() {
    return CMORMDIDocumentData::GetCurrentDocumentData().GetSpaceTable2();
}

void destroyLetter(CMORCadLetterSpace* letter) {
    std::unique_ptr<CMORCadLetterSpace> owner = LetterLists::s_liveLetters.take(letter);
    if (owner == nullptr)
        owner.reset(letter);  // came into the table by another way; the table owns it
}

}  // namespace

Forgotten::Forgotten(std::unique_ptr<CMORCadLetterView> forgottenLetter)
    : document(&CMORMDIDocumentData::GetCurrentDocumentData()),
      letter(std::move(forgottenLetter)) {}

Forgotten::Forgotten(std::unique_ptr<CMORCadSpace> forgottenSpace)
    : document(&CMORMDIDocumentData::GetCurrentDocumentData()), space(std::move(forgottenSpace)) {}

CMORCadLetterSpace* insertLetter(CMORCadLetterSpace* letter) {
    std::set<CMORCadLetterSpace*>& table = currentTable();
    if (table.empty()) MOR_AdsMsgSystemClass::getTheGlobalObject()->registerFct(spaceTableCallBack);
    LetterLists::s_liveLetters.reserveOne();
    if (table.insert(letter).second)
        LetterLists::s_liveLetters.append(std::unique_ptr<CMORCadLetterSpace>{letter});
    return letter;
}

bool removeLetter(CMORCadLetterSpace* letter) {
    if (currentTable().erase(letter) == 0) return false;
    destroyLetter(letter);
    return true;
}

CMORCadLetterSpace* findOrCreateXRefLetter(const wchar_t* name) {
    if (name == nullptr) return nullptr;
    const std::wstring wanted{name};  // `name` may be the text of the very letter that is replaced
    for (CMORCadLetterSpace* letter : currentTable()) {
        if (letter == nullptr || !letter->hasName(wanted.c_str())) continue;
        if (letter->isValid()) return letter;
        removeLetter(letter);
        break;
    }
    std::unique_ptr<CMORCadLetterSpace> letter = makeXRefLetter(wanted.c_str());
    if (letter == nullptr) return nullptr;
    insertLetter(letter.get());
    return letter.release();  // the table owns it
}

CMORCadLetterSpace* findOrCreateModelSpaceLetter() {
    for (CMORCadLetterSpace* letter : currentTable())
        if (letter != nullptr && letter->isModelSpace()) return letter;
    auto letter = std::make_unique<CMORCadLetterModelSpace>();
    insertLetter(letter.get());
    return letter.release();  // the table owns it
}

void clearSpaceTable() {
    std::set<CMORCadLetterSpace*>& table = currentTable();
    for (CMORCadLetterSpace* letter : table) destroyLetter(letter);
    table.clear();
    MOR_AdsMsgSystemClass::getTheGlobalObject()->unregisterFct(spaceTableCallBack);
}

void spaceTableCallBack(int message) {
    if (message != MOR_AdsMsgSystemClass::ReleaseDocumentObjects) return;
    CMORCadView::deleteTheGlobalObject();
    clearSpaceTable();
    LetterLists::releaseForgotten();
}

bool isLiveLetter(CMORCadLetterSpace* letter, std::uint64_t serial) {
    if (currentTable().contains(letter)) return letter->serial() == serial;
    return CMORCadLetterSpace::livesHere(letter, serial);
}

void LetterLists::forget(std::unique_ptr<CMORCadLetterView> letter) {
    s_forgotten.append(std::make_unique<Forgotten>(std::move(letter)));
}

void LetterLists::forget(std::unique_ptr<CMORCadSpace> space) {
    s_forgotten.append(std::make_unique<Forgotten>(std::move(space)));
}

void LetterLists::releaseForgotten() noexcept {
    const void* closing = &CMORMDIDocumentData::GetCurrentDocumentData();
    s_forgotten.removeIf([closing](const Forgotten& item) { return item.document == closing; });
}

void LetterLists::releaseAll() noexcept {
    s_forgotten.clear();
    currentTable().clear();
    s_liveLetters.clear();
}

}  // namespace mor
