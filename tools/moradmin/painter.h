#pragma once

#include "tools/moradmin/patterns.h"
#include "tools/moradmin/picture.h"
#include "tools/moradmin/session.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mor::tool {

/// Draws the entities of a session's space, and what they insert, into a picture.
class Painter {
public:
    struct Choice {
        std::vector<std::string> layers;  ///< patterns; none: all layers
        bool references = true;
    };
    Painter(Session& session, const Choice& choice);

    /// Draws everything; once. Throws Failure.
    void paint();
    [[nodiscard]] const Picture& picture() const { return m_picture; }
    /// What was not drawn and why, and how often.
    [[nodiscard]] const std::map<std::string, std::size_t>& leftOut() const { return m_leftOut; }
    struct Missing {
        std::size_t count = 0;
        std::string why;
    };
    /// References that are not loaded, by their saved path, or by name where there is none.
    [[nodiscard]] const std::map<std::string, Missing>& missing() const { return m_missing; }

private:
    struct Layer {
        bool off = false;
        bool frozen = false;
        std::string colour;
    };
    /// How the block is inserted whose entities are drawn.
    struct Inserted {
        CMORMathTransMatrix placement;
        std::string reference;
        std::string layer;   ///< the insert's, which entities on layer 0 take; or empty
        std::string colour;  ///< the insert's, which entities BYBLOCK take
        std::vector<std::wstring> blocks;  ///< on the way, against circles
    };

    [[nodiscard]] bool isFull() const;
    /// Why a block is not drawn there; null when it is.
    [[nodiscard]] static const char* whyNotWithin(const Inserted& where, const std::wstring& block);
    void paintEntity(mor::EntityName name, const Inserted& where);
    void paintInsert(mor::EntityName name, const EntityRecord& record, const Origin& origin,
                     const std::string& layer, const std::string& colour, const Inserted& where);
    void paintCells(mor::EntityName first, const EntityRecord& insert,
                    const CMORMathTransMatrix& own, const CMORMathTransMatrix& owner,
                    Inserted& inner);
    void paintBlock(mor::EntityName first, const Inserted& inner);
    void paintAttributes(mor::EntityName insert, const Inserted& where);
    void paintDimension(const EntityRecord& record, const Origin& origin, const std::string& layer,
                        const std::string& colour, const Inserted& where);
    void paintMissing(const EntityRecord& insert, const Origin& origin,
                      const host::ReferenceInfo& reference, const Inserted& where);
    /// The placement of the insert itself, as a view gives it for a reference of the drawing.
    [[nodiscard]] static std::optional<CMORMathTransMatrix> placementOf(mor::EntityName insert,
                                                                        bool reference,
                                                                        bool nested);
    [[nodiscard]] const Layer& layer(const std::string& name);
    [[nodiscard]] std::string colourOf(const EntityRecord& record, const Layer& layer,
                                       const Inserted& where) const;
    [[nodiscard]] bool wanted(const std::string& layer) const;
    /// Null for an ordinary block.
    [[nodiscard]] const host::ReferenceInfo* findReference(const std::wstring& block);
    void leaveOut(const std::string& why) { ++m_leftOut[why]; }

    Session& m_session;
    TextPatterns m_patterns;
    bool m_references;
    std::string m_prefix;  ///< of layer names within the reference that is looked through
    Picture m_picture;
    /// Whether the blocks that are inserted are references, by upper-case name.
    std::map<std::wstring, std::optional<host::ReferenceInfo>> m_known;
    std::size_t m_visited = 0;
    std::size_t m_inserts = 0;
    std::map<std::string, Layer> m_layers;
    std::map<std::string, std::size_t> m_leftOut;
    std::map<std::string, Missing> m_missing;
};

}  // namespace mor::tool
