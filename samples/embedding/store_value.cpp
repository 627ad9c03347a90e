#include "dwgfs/dwg_file_system.h"
#include "frame/message_system.h"
#include "frame/module.h"
#include "host/host.h"

#include <iostream>

/// store_value DRAWING: opens the drawing, writes 42 as /sample/answer and saves.
int main(int count, char** words) {
    if (count != 2 || mor::attachModule() != 1) return 2;
    const auto opened = mor::host::openDocument(words[1]);
    if (!opened) return std::cerr << opened.error().message() << "\n", 3;
    mor::host::setCurrentDocument(opened.value());
    mor::host::setActiveDocument(opened.value());

    CMORCadDwgFileSystem* store = CMORCadDwgFileSystem::getTheGlobalObject();
    const bool written =
        store != nullptr && store->write(L"/sample/answer", mor::host::makeInteger(42));
    const auto saved = mor::host::saveDocument(opened.value());

    MOR_AdsMsgSystemClass::getTheGlobalObject()->sendMessage(
        MOR_AdsMsgSystemClass::ReleaseDocumentObjects);
    mor::host::closeDocument(opened.value());
    mor::detachModule();
    return written && saved ? 0 : 5;
}
