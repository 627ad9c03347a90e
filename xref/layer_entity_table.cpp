#include "xref/layer_entity_table.h"

#include "platform/geometry.h"
#include "xref/xref_iterator.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace {

/// The patterns of one query, made once for all layers.
class LayerPatterns {
public:
    void add(const wchar_t* pattern) {
        if (pattern == nullptr) return;
        m_patterns.push_back(std::make_unique<MOR_Wildcard>(upperNarrow(pattern).c_str()));
    }
    [[nodiscard]] bool match(std::wstring_view layer) const {
        const std::string text = upperNarrow(layer);
        for (const std::unique_ptr<MOR_Wildcard>& pattern : m_patterns) {
            std::size_t length = 0;
            if (pattern->index(text.c_str(), &length, 0) == 0 && length == text.size()) return true;
        }
        return false;
    }

private:
    static std::string upperNarrow(std::wstring_view text) {
        return mor::narrow(mor::upperCase(text));
    }
    std::vector<std::unique_ptr<MOR_Wildcard>> m_patterns;
};

using LayerMap = std::map<std::wstring, mor::EntitySet, mor::LessNoCase>;

std::unique_ptr<MOR_Letter_XRefSpaceIterator> collect(const LayerMap& layers,
                                                      const LayerPatterns& patterns) {
    auto iterator = std::make_unique<MOR_Letter_XRefSpaceIterator>();
    for (const auto& [layer, entities] : layers)
        if (patterns.match(layer)) iterator->add(entities.names());
    iterator->reset();
    return iterator;
}

}  // namespace

MOR_LayerXRefEntityTable::MOR_LayerXRefEntityTable() = default;

MOR_LayerXRefEntityTable::~MOR_LayerXRefEntityTable() = default;

bool MOR_LayerXRefEntityTable::add(const ads_name entity, const wchar_t* layer) {
    add(mor::EntityName{entity}, std::wstring_view{layer});
    return true;
}

void MOR_LayerXRefEntityTable::add(const mor::EntityName& entity, std::wstring_view layer) {
    if (m_last == nullptr || m_last->first != layer) {
        auto known = m_given.find(layer);
        if (known == m_given.end()) {
            mor::EntitySet& entities = m_layers.try_emplace(mor::upperCase(layer)).first->second;
            known = m_given.emplace(layer, &entities).first;
        }
        m_last = &*known;
    }
    m_last->second->add(entity);
}

MOR_Letter_XRefSpaceIterator* MOR_LayerXRefEntityTable::iteratorForLayers(
    const CMORStringList& patterns) const {
    if (patterns.Entries() == 0) return nullptr;
    LayerPatterns wildcards;
    for (std::size_t i = 0; i < patterns.Entries(); ++i) wildcards.add(patterns.Nth(i));
    return collect(m_layers, wildcards).release();  // caller owns
}

MOR_Letter_XRefSpaceIterator* MOR_LayerXRefEntityTable::iteratorForLayers(
    const CMORAdsLispVar& patterns) const {
    if (!CMORAdsLisp::ListP(patterns)) return nullptr;
    LayerPatterns wildcards;
    const std::size_t count = CMORAdsLisp::Length(patterns);
    for (std::size_t i = 0; i < count; ++i) {
        const CMORAdsLispVar pattern = CMORAdsLisp::Nth(static_cast<unsigned>(i), patterns);
        const wchar_t* text = nullptr;
        wildcards.add(CMORAdsLisp::SetQ(text, pattern));
    }
    return collect(m_layers, wildcards).release();  // caller owns
}
