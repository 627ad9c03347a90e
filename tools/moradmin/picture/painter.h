#pragma once

#include "platform/entity.h"
#include "tools/moradmin/picture/picture.h"
#include "tools/moradmin/references/patterns.h"
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
        const std::string* name = nullptr;
    };
    /// A block as an insert names it.
    struct Block {
        const std::wstring* key = nullptr;             ///< the name, in upper case
        std::optional<host::ReferenceInfo> reference;  ///< empty for an ordinary block
        std::string path;                              ///< name of the reference
        bool looked = false;                           ///< the following is known
        bool found = false;
        std::optional<mor::EntityName> first;  ///< its first entity
    };
    /// How the block is inserted whose entities are drawn. Names of any length are drawn at any
    /// depth: they are kept elsewhere, once each.
    struct Inserted {
        CMORMathTransMatrix placement;
        const std::string* reference = nullptr;   ///< null in the drawing itself
        const std::string* layer = nullptr;       ///< the insert's, which entities on layer 0 take
        std::string colour;                       ///< the insert's, which entities BYBLOCK take
        std::vector<const std::wstring*> blocks;  ///< on the way, against circles
    };

    [[nodiscard]] bool isFull() const;
    /// Why a block is not drawn there; null when it is.
    [[nodiscard]] static const char* whyNotWithin(const Inserted& where, const Block& block);
    [[nodiscard]] static Origin originOf(const CMOREntity& entity, const Inserted& where);
    [[nodiscard]] const Layer& layerOf(const Origin& origin, const Inserted& where);
    void paintEntity(mor::EntityName name, const Inserted& where);
    void paintInsert(mor::EntityName name, const EntityRecord& record, const Origin& origin,
                     const Layer& layer, const std::string& colour, const Inserted& where);
    void paintCells(mor::EntityName first, const EntityRecord& insert,
                    const CMORMathTransMatrix& own, const CMORMathTransMatrix& owner,
                    Inserted& inner);
    void paintBlock(mor::EntityName first, const Inserted& inner);
    void paintAttributes(mor::EntityName insert, const Inserted& where);
    void paintDimension(const EntityRecord& record, const Origin& origin, const Layer& layer,
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
    [[nodiscard]] Block& findBlock(const std::wstring& name);
    /// Looks its first entity up; once for each block.
    static void lookUp(Block& block);
    void leaveOut(const std::string& why) { ++m_leftOut[why]; }

    Session& m_session;
    TextPatterns m_patterns;
    bool m_references;
    std::string m_prefix;  ///< of layer names within the reference that is looked through
    Picture m_picture;
    std::string m_top;                       ///< the reference that is looked through
    std::map<std::wstring, Block> m_blocks;  ///< by upper-case name
    std::size_t m_visited = 0;
    std::size_t m_inserts = 0;
    std::size_t m_read = 0;  ///< bytes of the records that were drawn, as often as they were
    std::map<std::string, Layer> m_layers;
    std::map<std::string, std::size_t> m_leftOut;
    std::map<std::string, Missing> m_missing;
};

}  // namespace mor::tool
