#pragma once

#include "platform/entity.h"
#include "tools/moradmin/picture/pencil.h"
#include "tools/moradmin/picture/views.h"
#include "tools/moradmin/references/patterns.h"
#include "tools/moradmin/session.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace mor::tool {

/// Draws the entities of a space, and what they insert, into a scene.
class Painter {
public:
    struct Choice {
        std::vector<std::string> layers;  ///< patterns; none: all layers
        bool references = true;
        bool all = false;  ///< what is not plotted too
        Layout layout;     ///< of the drawing itself
    };
    Painter(Session& session, const Palette& palette, Choice choice);

    /// Draws everything; once. Throws Failure.
    void paint();
    [[nodiscard]] const Scene& scene() const { return m_scene; }
    [[nodiscard]] Scene& scene() { return m_scene; }
    [[nodiscard]] Fonts& fonts() { return *m_fonts; }
    /// What was not drawn and why, and how often.
    [[nodiscard]] const std::map<std::string, std::size_t>& leftOut() const { return m_leftOut; }
    /// What is drawn in part, or as a frame, likewise.
    [[nodiscard]] const std::map<std::string, std::size_t>& partly() const { return m_desk.partly; }
    /// What of it is hidden in the drawing itself.
    [[nodiscard]] const std::map<std::string, std::size_t>& hidden() const { return m_hidden; }
    struct Missing {
        std::size_t count = 0;
        std::string why;
    };
    /// References that are not loaded, by their saved path, or by name where there is none.
    [[nodiscard]] const std::map<std::string, Missing>& missing() const { return m_missing; }

private:
    /// A block as an insert names it.
    struct Block {
        const std::wstring* key = nullptr;             ///< the name, in upper case
        std::optional<host::ReferenceInfo> reference;  ///< empty for an ordinary block
        std::string path;                              ///< name of the reference
        bool looked = false;                           ///< the following is known
        bool found = false;
        std::optional<mor::EntityName> first;  ///< its first entity
        std::vector<mor::EntityName>
            ordered;  ///< all of them, where the file's order is not theirs
    };
    /// How the block is inserted whose entities are drawn. Names of any length are drawn at any
    /// depth: they are kept elsewhere, once each.
    struct Inserted {
        CMORMathTransMatrix placement;
        const std::string* reference = nullptr;   ///< null in the drawing itself
        const std::string* layer = nullptr;       ///< the insert's, which entities on layer 0 take
        Look look;                                ///< the insert's, which entities BYBLOCK take
        std::vector<const std::wstring*> blocks;  ///< on the way, against circles
    };
    /// An insert and what is known of it.
    struct Insert {
        mor::EntityName name;
        const EntityRecord& record;
        const Origin& origin;
        const LayerLook& layer;
        const Look& look;
    };

    [[nodiscard]] bool isFull() const;
    /// Why a block is not drawn there; null when it is.
    [[nodiscard]] static const char* whyNotWithin(const Inserted& where, const Block& block);
    [[nodiscard]] static Origin originOf(const CMOREntity& entity, const Inserted& where);
    [[nodiscard]] const LayerLook& layerOf(const Origin& origin, const Inserted& where);
    /// Whether things on the layer are drawn; counts those that are not.
    [[nodiscard]] bool isShown(const LayerLook& layer, bool insert);
    [[nodiscard]] bool wanted(const std::string& layer) const;

    void paintSpace(const Inserted& top);
    void putInOrder(std::vector<mor::EntityName>& names, mor::EntityName block) const;
    void paintEntity(mor::EntityName name, const Inserted& where);
    void paintShape(const Insert& entity, const Inserted& where);
    void paintInsert(const Insert& insert, const Inserted& where);
    void paintBlock(const Block& block, const Inserted& inner);
    void paintAttributes(const Insert& insert, const Inserted& where);
    /// A dimension's lines, or a table's, stand in a block of its own.
    void paintOwnBlock(const Insert& entity, const Inserted& where);
    void paintMissing(const Insert& insert, const host::ReferenceInfo& reference,
                      const Inserted& where);
    void paintViewport(const Insert& viewport, const Inserted& where);
    /// A block as a part of an entity.
    bool paintPart(const Pencil& pen, const std::string& block, const CMORMathTransMatrix& own);
    [[nodiscard]] static std::optional<CMORMathTransMatrix> placementOf(mor::EntityName insert,
                                                                        bool reference,
                                                                        bool nested);
    [[nodiscard]] std::optional<Scene::Group> clipBlock(const Insert& insert,
                                                        const CMORMathTransMatrix& placement);
    [[nodiscard]] Path clipPath(const EntityRecord& viewport, mor::EntityName name,
                                const View& view) const;
    [[nodiscard]] Block& findBlock(const std::wstring& name);
    /// Looks its entities up; once for each block.
    void lookUp(Block& block) const;
    void leaveOut(const std::string& why) { ++m_leftOut[why]; }
    void hide(const std::string& why) { ++m_hidden[why]; }

    Session& m_session;
    Choice m_choice;
    TextPatterns m_patterns;
    std::string m_prefix;  ///< of layer names within the reference that is looked through
    std::string m_top;     ///< the reference that is looked through
    Scene m_scene;
    std::unique_ptr<Fonts> m_fonts;
    Looks m_looks;
    Desk m_desk;
    const Origin* m_origin = nullptr;        ///< of the entity that is drawn, and where it stands
    const Inserted* m_where = nullptr;       ///< of the entity that is drawn
    std::vector<mor::EntityName> m_names;    ///< of the space that is drawn
    std::vector<mor::EntityName> m_model;    ///< of model space, for viewports of a sheet
    std::map<std::wstring, Block> m_blocks;  ///< by upper-case name
    const std::set<std::string>* m_frozen = nullptr;  ///< in the viewport that is drawn
    std::size_t m_viewports = 0;
    std::size_t m_visited = 0;
    std::size_t m_inserts = 0;
    std::map<std::string, std::size_t> m_leftOut;
    std::map<std::string, std::size_t> m_hidden;
    std::map<std::string, Missing> m_missing;
};

}  // namespace mor::tool
