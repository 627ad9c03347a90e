#include "tools/moradmin/references/passage.h"

#include "platform/entity.h"
#include "platform/runtime.h"
#include "space/global_view.h"
#include "tools/moradmin/failure.h"
#include "tools/moradmin/line/suggest.h"
#include "tools/moradmin/output.h"
#include "tools/moradmin/picture/geometry.h"
#include "tools/moradmin/references/references.h"
#include "xref/space_iterator.h"
#include "xref/xref_view.h"

#include <algorithm>
#include <cmath>

namespace mor::tool {

namespace {

constexpr char kBar = '|';
constexpr std::size_t kMostChoices = 20;

/// The references of the drawing itself; reads no file.
std::vector<std::string> referenceNames(AcApDocument* document) {
    std::vector<std::string> names;
    host::forEachBlock(document, L"", [&names](const host::BlockInfo& block) {
        if (block.reference) names.push_back(utf8(block.symbol.symbol));
    });
    return names;
}

std::string whyNotLoaded(const host::ReferenceInfo& info) {
    std::string why = "the reference " + utf8(info.name) + " is not loaded";
    for (const host::ReferenceTry& attempt : info.tries) why += "; " + whyNot(attempt);
    return why + "; " + kWhereReferencesLie;
}

/// Why a view does not find its insert again, where the handle leads to another record; or empty.
std::string whyNotPlaced(const AcApDocument* document, mor::EntityName insert) {
    const std::string handle = host::handleText(host::recordInfo(document, insert)->handle);
    const auto first = host::findHandle(document, wide(handle));
    if (!first || *first == insert) return {};
    return ": the handle " + handle +
           " of its insert stands twice, and the first record with it (" +
           host::recordInfo(document, *first)->type +
           ") keeps it; the audit of a CAD program gives the insert another one";
}

}  // namespace

void Passage::refuse(const std::string& text, const std::string& word) const {
    throw Failure(kRefused, m_host + ": " + text, word);
}

mor::EntityName Passage::findInsert(const std::string& word) {
    const std::wstring name = wide(word);
    mor::EntityName found;
    std::vector<std::string> handles;
    host::forEachInsert(m_document, name, [&](const host::RecordInfo& info) {
        if (found.isNone()) found = info.name;
        handles.push_back(host::handleText(info.handle));
    });
    noteChoices(word, handles);
    if (!found.isNone()) return found;
    if (host::hasBlock(m_document, name)) {
        const auto info = host::findReference(m_document, name);
        if (!info) refuse(word + " is no external reference", word);
        refuse(
            word + " is attached but nowhere inserted" +
                (info->inserts == 0 ? "" : " in a space; an insert in a block goes by its handle"),
            word);
    }
    const auto record = host::findHandle(m_document, name);
    if (!record || host::recordInfo(m_document, *record)->type != "INSERT")
        refuse("there is no reference \"" + word + "\" and no insert of that handle" +
                   hintFor(word, referenceNames(m_document)) +
                   "; \"moradmin xrefs\" lists the references",
               word);
    const auto info = host::recordInfo(m_document, *record);
    if (info->place == host::Place::BlockDefinition) m_placedIn = info->container;
    return *record;
}

void Passage::noteChoices(const std::string& word, const std::vector<std::string>& handles) {
    if (handles.size() < 2 || !m_choices.empty()) return;
    m_choices = word + " is inserted " + std::to_string(handles.size()) + " times, by";
    for (std::size_t i = 0; i < handles.size() && i < kMostChoices; ++i)
        m_choices += " " + handles[i];
    if (handles.size() > kMostChoices) m_choices += " ...";
    m_choices += "; --in " + handles.front() + " says which one is meant";
}

mor::EntityName Passage::findInsertBelow(const std::string& word) {
    const std::wstring block = m_reference + L"|" + wide(word);
    MOR_SpaceIterator entities(*CMORCadView::getTheGlobalObject());
    std::vector<mor::EntityName> all;
    while (const ads_name* name = entities()) {
        const auto inserted = insertedBlock(mor::EntityName(*name));
        if (inserted && equalNoCase(*inserted, block)) all.emplace_back(*name);
    }
    if (!all.empty()) {
        std::vector<std::string> handles;
        for (const mor::EntityName& name : all)
            handles.push_back(utf8(m_reference) + "|" +
                              host::handleText(host::recordInfo(m_document, name)->handle));
        noteChoices(word, handles);
        return all.front();
    }
    ads_name found{};
    if (CMORCadView::getTheGlobalObject()->handEnt(wide(word).c_str(), found) &&
        insertedBlock(mor::EntityName(found)))
        return mor::EntityName(found);
    refuse(utf8(m_reference) + " has no insert of a reference \"" + word +
               "\" and no insert of that handle",
           word);
}

void Passage::goThrough(mor::EntityName insert, const std::string& word) {
    const std::wstring block = insertedBlock(insert).value_or(L"");
    const auto info = host::findReference(m_document, block);
    if (!info) refuse(word + " is no external reference", word);
    if (info->status != host::ReferenceStatus::Loaded) refuse(whyNotLoaded(*info), word);
    // A view finds its insert again by the handle; old drawings may have none.
    const auto record = host::recordInfo(m_document, insert);
    if (record->handle == 0 && m_inserts.empty())
        static_cast<void>(host::renewHandle(m_document, insert));  // in memory, never saved
    if (!CMORCadView::connectTheGlobalObject(insert))
        refuse("the reference " + utf8(block) +
                   (info->entities == 0 ? " has no entities to look through"
                                        : " cannot be looked through: its name is too long, or its "
                                          "insert has no handle"),
               word);
    m_inserts.push_back(insert);
    m_reference = info->name;
    m_file = info->found.string();
}

void Passage::enter(const std::string& words) {
    // A name with bars in it, or what the drawing itself inserts of a reference's reference.
    bool whole = false;
    host::forEachInsert(m_document, wide(words),
                        [&whole](const host::RecordInfo& /*insert*/) { whole = true; });
    if (whole) return goThrough(findInsert(words), words);
    for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
        end = words.find(kBar, begin);
        const std::string word = words.substr(begin, end == std::string::npos ? end : end - begin);
        goThrough(m_inserts.empty() ? findInsert(word) : findInsertBelow(word), word);
    }
}

CMORMathTransMatrix Passage::placement() const {
    if (!m_choices.empty()) refuse(m_choices);
    CMORMathTransMatrix result;
    for (const mor::EntityName& insert : m_inserts) {
        const mor::EntityName words = insert;
        CMORAdsTransformation step;
        // A view looks its insert up in the drawing itself: further in, the transformation is read
        // from the insert of the referenced drawing.
        MOR_XRefView first;
        const bool read = insert == m_inserts.front() ? first.connect(words) && first.getMat(step)
                                                      : step.loadFromEntity(words);
        if (!read)
            refuse("the placement of " + utf8(m_reference) + " cannot be read" +
                   whyNotPlaced(m_document, m_inserts.front()));
        result = product(result, step.matrix);
    }
    for (const auto& row : result.rows)
        if (!std::ranges::all_of(row, [](double value) { return std::isfinite(value); }))
            refuse("the placement of " + utf8(m_reference) +
                   " holds numbers that are out of range");
    return result;
}

}  // namespace mor::tool
