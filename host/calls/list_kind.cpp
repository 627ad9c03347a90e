#include "host/calls/list_kind.h"

#include "host/text/group_codes.h"
#include "platform/types.h"

namespace mor::host {

/// Of the types that are no group codes.
static ListKind resultKind(int type) noexcept {
    switch (type) {
        case RTREAL:
            return ListKind::Real;
        case RTPOINT:
            return ListKind::Point;
        case RTSHORT:
            return ListKind::Short;
        case RTLONG:
            return ListKind::Long;
        case RTENAME:
        case -1:
        case -2:
            return ListKind::Name;
        case RTSTR:
        case RTDXF0:
        case -4:
            return ListKind::Text;
        case RTLB:
        case RTLE:
        case RTDOTE:
        case RTNIL:
        case RTT:
        case -3:
            return ListKind::None;
        default:
            return ListKind::Unknown;
    }
}

ListKind listKind(int type) noexcept {
    switch (codeKind(type)) {
        case CodeKind::Text:
        case CodeKind::Chunk:
            return ListKind::Text;
        case CodeKind::Handle:
            return type >= kOwnerCode && type < 370 ? ListKind::Name : ListKind::Text;
        case CodeKind::Real:
            return ListKind::Real;
        case CodeKind::Point:
            return ListKind::Point;
        case CodeKind::Integer16:
        case CodeKind::Flag:
            return ListKind::Short;
        case CodeKind::Integer32:
        case CodeKind::Integer64:
            return ListKind::Long;
        case CodeKind::Unknown:
            break;
    }
    return resultKind(type);
}

}  // namespace mor::host
