#pragma once

#include "platform/entity.h"
#include "tools/moradmin/picture/pencil.h"
#include "tools/moradmin/picture/views.h"
#include "tools/moradmin/references/patterns.h"
#include "tools/moradmin/session.h"
#include "xref/space_iterator.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
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
            ordered;                       ///< all of them, where the file's order is not theirs
        std::optional<std::size_t> bytes;  ///< that were read when it was drawn first
        std::vector<mor::EntityName> members;      ///< once its records are kept
        std::unique_ptr<host::RecordRun> records;  ///< those of the members
    };
    /// How the block is inserted whose entities are drawn. Names of any length are drawn at any
    /// depth: they are kept elsewhere, once each.
    struct Inserted {
        CMORMathTransMatrix placement;
        const std::string* reference = nullptr;   ///< null in the drawing itself
        const LayerLook* layer = nullptr;         ///< the insert's, which entities on layer 0 take
        Look look;                                ///< the insert's, which entities BYBLOCK take
        std::vector<const std::wstring*> blocks;  ///< on the way, against circles

        /// The reference by its path; empty for the drawing itself.
        [[nodiscard]] const std::string& path() const;
    };
    /// What is known of a type of entities.
    struct Kind {
        enum class Way { Never, Shape, Definition, Insert, OwnBlock, Viewport };
        Way way = Way::Shape;
        bool (*draw)(Pencil&) = nullptr;    ///< null where its form is not known
        const std::string* type = nullptr;  ///< its name
    };
    using Groups = std::optional<std::span<const host::GroupView>>;
    /// A record that is read, or taken where that was done; while it lives the next one gets
    /// another place.
    class Reading {
    public:
        Reading(Painter& painter, mor::EntityName name, const Groups& groups = {});
        ~Reading() { --m_painter.m_reading; }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

        [[nodiscard]] const EntityRecord& record() const { return m_record; }

    private:
        Painter& m_painter;
        EntityRecord& m_record;
    };
    /// An insert and what is known of it.
    struct Insert {
        mor::EntityName name;
        const Kind& kind;
        const EntityRecord& record;
        const Origin& origin;
        const LayerLook& layer;
        const Look& look;
    };

    [[nodiscard]] bool isFull() const;
    /// Why a block is not drawn there; null when it is.
    [[nodiscard]] static const char* whyNotWithin(const Inserted& where, const Block& block);
    [[nodiscard]] const Kind& kindOf(std::string_view type);
    /// `type` stays where it is.
    [[nodiscard]] static Kind newKind(const std::string& type);
    /// The layer on which an entity lies, as the drawing knows it.
    [[nodiscard]] const LayerLook& layerOf(const host::EntityFacts& facts, mor::EntityName name);
    /// Where an entity shows: those on layer 0 in a block on the layer of the insert.
    [[nodiscard]] static const LayerLook& layerWithin(const LayerLook& own, const Inserted& where) {
        return where.layer != nullptr && *own.name == "0" ? *where.layer : own;
    }
    /// Whether things on the layer are drawn; counts those that are not.
    [[nodiscard]] bool isShown(const LayerLook& layer, bool insert);
    [[nodiscard]] bool wanted(const std::string& layer) const;

    void paintSpace(const Inserted& top);
    void putInOrder(std::vector<mor::EntityName>& names, mor::EntityName block) const;
    /// Entities one after the other, whose records another thread reads ahead.
    void paintAll(const std::vector<mor::EntityName>& names, const Inserted& where);
    void paintEntity(mor::EntityName name, const Inserted& where, const Groups& groups = {});
    void paintShape(const Insert& entity, const Inserted& where);
    void paintInsert(const Insert& insert, const Inserted& where);
    void paintBlock(Block& block, const Inserted& inner);
    [[nodiscard]] static std::vector<mor::EntityName> membersOf(const Block& block);
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
    MOR_SpaceIterator m_entities;  ///< of all spaces
    std::string m_prefix;          ///< of layer names within the reference that is looked through
    std::string m_top;             ///< the reference that is looked through
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
    std::map<std::string, Kind, std::less<>> m_kinds;
    const Kind* m_kind = nullptr;  ///< the one that was asked for last
    /// Layers by their numbers, of each drawing and reference; null where nobody has asked yet.
    std::map<std::int64_t, std::vector<const LayerLook*>> m_layers;
    CMOREntity m_entity;
    std::deque<EntityRecord> m_records;  ///< that are read, one within the other
    std::size_t m_reading = 0;           ///< how many of them are in use
    std::size_t m_viewports = 0;
    std::size_t m_visited = 0;
    std::size_t m_keptBytes = 0;  ///< of records of blocks
    std::size_t m_inserts = 0;
    std::map<std::string, std::size_t> m_leftOut;
    std::map<std::string, std::size_t> m_hidden;
    std::map<std::string, Missing> m_missing;
};

}  // namespace mor::tool
