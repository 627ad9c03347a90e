#include "platform/runtime.h"
#include "tools/moradmin/commands.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/looking/foreign.h"
#include "tools/moradmin/output.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace mor::tool {

namespace {

/// Prints the extended data of records, those of one application when one is asked for.
class Listing {
public:
    Listing(const Session& session, const Options& options)
        : m_session(session), m_options(options) {}

    void add(const host::RecordInfo& record) {
        for (const ExtendedData& data :
             extendedData(host::recordGroups(m_session.document(), record.name))) {
            m_applications.insert(data.application);
            if (!m_options.application.empty() &&
                upperCase(wide(data.application)) != upperCase(wide(m_options.application)))
                continue;
            ++m_count;
            print(record, data);
        }
    }
    [[nodiscard]] std::size_t count() const { return m_count; }
    [[nodiscard]] const std::set<std::string>& applications() const { return m_applications; }

private:
    void print(const host::RecordInfo& record, const ExtendedData& data) const {
        if (m_options.json) {
            Json object = jsonHead(m_options);
            object["handle"] = textOrNull(host::handleText(record.handle));
            object["type"] = record.type;
            object["application"] = data.application;
            object["groups"] = Json::array();
            for (const host::RecordGroup& group : data.groups)
                object["groups"].push_back(groupJson(group));
            printJson(object);
            return;
        }
        std::vector<std::vector<std::string>> rows;
        for (const host::RecordGroup& group : data.groups)
            rows.push_back({host::handleText(record.handle), record.type, data.application,
                            std::to_string(group.code), group.value});
        printTable({"HANDLE", "TYPE", "APPLICATION", ">CODE", "VALUE"}, rows);
    }

    const Session& m_session;
    const Options& m_options;
    std::size_t m_count = 0;
    std::set<std::string> m_applications;
};

}  // namespace

int runXdata(Session& session, const Options& options) {
    if (options.arguments.empty() && options.application.empty())
        throw Failure(kUsage, "a HANDLE is wanted, or --app NAME for all records");
    Listing listing(session, options);
    if (!options.arguments.empty()) {
        for (const std::string& word : options.arguments) {
            const auto name = host::findHandle(session.document(), wide(word));
            const auto record = name ? host::recordInfo(session.document(), *name) : std::nullopt;
            if (!record)
                throw Failure(kRefused, session.message("no record has the handle " + word), word);
            listing.add(*record);
        }
    } else {
        host::forEachRecord(session.document(), [&listing](const host::RecordInfo& record) {
            if (!record.erased && record.extended) listing.add(record);
        });
    }
    if (listing.count() == 0)
        printNote(
            session.message(std::string(options.arguments.empty() ? "no record has extended data"
                                                                  : "there is no extended data") +
                            (options.application.empty() ? "" : " of " + options.application) +
                            hintFor(options.application, {listing.applications().begin(),
                                                          listing.applications().end()})));
    return listing.count() == 0 ? kNo : kDone;
}

}  // namespace mor::tool
