#include "tools/moradmin/references/deep.h"

#include "platform/entity_calls.h"
#include "platform/owned.h"
#include "platform/runtime.h"
#include "platform/table_calls.h"
#include "space/record_flags.h"
#include "tools/moradmin/changes/own_records.h"
#include "tools/moradmin/picture/geometry.h"
#include "tools/moradmin/references/cells.h"
#include "tools/moradmin/references/entity_record.h"
#include "tools/moradmin/references/references.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

namespace mor::tool {

namespace {

constexpr std::size_t kMost = 1'000'000;
constexpr std::size_t kMostCounted = std::size_t{1} << 60U;
constexpr std::size_t kDeepest = 256;
constexpr int kPaperCode = 67;

/// The members of a block, by qualified name; read once.
using Members = std::vector<mor::EntityName>;

bool isSubEntity(const std::string& type) {
    return type == "ATTRIB" || type == "VERTEX" || type == "SEQEND";
}

class Walk {
public:
    Walk(const Session& session, const std::function<void(const DeepEntity&)>& visit)
        : m_document(session.document()), m_visit(visit) {}

    /// The insert's block with all that lies in it, in each of its rows and columns.
    void insert(mor::EntityName name, const CMORMathTransMatrix& owner, const std::string& way) {
        const std::wstring block = insertedBlock(name).value_or(L"");
        const std::wstring key = upperCase(block);
        if (isOwn(key) || m_open.size() >= kDeepest ||
            std::ranges::find(m_open, key) != m_open.end())
            return;
        const mor::EntityName words = name;
        CMORAdsTransformation own;
        if (!own.loadFromEntity(words)) return;
        m_open.push_back(key);
        const std::string inner = (way.empty() ? "" : way + "/") + utf8(block);
        forEachCell(EntityRecord(m_document, name), owner, [&](const CMORMathTransMatrix& moved) {
            members(block, product(moved, own.matrix), inner);
            return m_count < kMost;
        });
        m_open.pop_back();
    }
    [[nodiscard]] bool whole() const { return m_count < kMost; }
    /// How many lie below an insert, counted once for each block.
    std::size_t countBelow(mor::EntityName name, std::size_t depth = 0) {
        const auto block = insertedBlock(name);
        if (!block || depth >= kDeepest) return 0;
        const std::wstring key = upperCase(*block);
        if (isOwn(key)) return 0;
        const auto [known, added] = m_counts.try_emplace(key, 0);  // within itself it adds nothing
        if (added) {
            std::size_t count = 0;
            for (const mor::EntityName& member : membersOf(*block))
                count = std::min(count + 1 + countBelow(member, depth + 1), kMostCounted);
            known->second = count;
        }
        const std::size_t cells = cellCount(EntityRecord(m_document, name));
        return std::min(known->second, kMostCounted / cells) * cells;
    }

private:
    static bool isOwn(const std::wstring& key) {
        const std::size_t bar = key.rfind(L'|');
        return isOwnBlock(bar == std::wstring::npos ? key : key.substr(bar + 1));
    }
    void members(const std::wstring& block, const CMORMathTransMatrix& placement,
                 const std::string& way) {
        for (const mor::EntityName& name : membersOf(block)) {
            if (++m_count >= kMost) return;
            m_visit({name, placement, way});
            insertIfOne(name, placement, way);
        }
    }
    void insertIfOne(mor::EntityName name, const CMORMathTransMatrix& placement,
                     const std::string& way) {
        if (insertedBlock(name)) insert(name, placement, way);
    }
    const Members& membersOf(const std::wstring& block) {
        const auto [known, added] = m_blocks.try_emplace(upperCase(block));
        if (!added) return known->second;
        const mor::ResbufList record{acdbTblSearch(L"BLOCK", block.c_str(), 0)};
        const resbuf* first = mor::findGroup(record, mor::kGroupFirstEntity);
        if (first == nullptr) return known->second;
        ads_name at{};
        mor::EntityName(first->resval.rlname).copyTo(at);
        CMOREntity entity;
        do {
            short paper = 0;
            if (!entity.Connect(at) || isSubEntity(utf8(entity.Type().GetString()))) continue;
            if (entity.GetGroupShort(kPaperCode, &paper) && paper != 0) continue;
            known->second.emplace_back(at);
        } while (acdbEntNext(at, at) == RTNORM);
        return known->second;
    }

    AcApDocument* m_document;
    const std::function<void(const DeepEntity&)>& m_visit;
    std::map<std::wstring, Members> m_blocks;
    std::map<std::wstring, std::size_t> m_counts;
    std::vector<std::wstring> m_open;
    std::size_t m_count = 0;
};

}  // namespace

bool forEachDeepEntity(const Session& session, const std::vector<mor::EntityName>& inserts,
                       const std::function<void(const DeepEntity&)>& visit) {
    Walk walk(session, visit);
    const CMORMathTransMatrix top = session.placement();
    for (const mor::EntityName& name : inserts) walk.insert(name, top, "");
    return walk.whole();
}

std::size_t countDeepEntities(const Session& session, const std::vector<mor::EntityName>& inserts) {
    Walk walk(session, {});
    std::size_t count = 0;
    for (const mor::EntityName& name : inserts) count += walk.countBelow(name);
    return count;
}

}  // namespace mor::tool
