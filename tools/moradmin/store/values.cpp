#include "tools/moradmin/store/values.h"

#include "host/host.h"
#include "tools/moradmin/store/paths.h"

namespace mor::tool {

CMORAdsLispVar valueOf(Session& session, const std::wstring& path) {
    CMORAdsLispVar value;
    if (!session.store().read(path.c_str(), value))
        refuse(session, path, utf8(path) + " cannot be read");
    return value;
}

Json valueJson(const Options& options, const std::wstring& path, const CMORAdsLispVar& value) {
    Json object = jsonHead(options);
    object["path"] = utf8(path);
    object["type"] = typeName(value);
    object["lisp"] = host::lispText(value);
    object["value"] = jsonValue(value);
    return object;
}

}  // namespace mor::tool
