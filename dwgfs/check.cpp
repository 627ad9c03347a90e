#include "dwgfs/dwg_file_system.h"

void CMORCadDwgFileSystem::checkBlock(CMOREntity& /*block*/) {}
