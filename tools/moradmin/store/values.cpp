#include "tools/moradmin/store/values.h"

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
    object["kind"] = "file";
    addValue(object, value);
    return object;
}

}  // namespace mor::tool
