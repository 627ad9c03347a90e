#pragma once

#include "host/documents/document.h"
#include "host/drawing/make.h"

#include <string>
#include <vector>

namespace mor::host {

/// One entity of a definition that is not closed yet, or about to be made.
struct PendingBlock::Entity {
    std::string type;
    std::wstring layer;
    bool paper = false;
    std::vector<NewGroup> groups;
};

}  // namespace mor::host
