#pragma once

#include "host/host.h"
#include "platform/entity_name.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mor::tool {

/// Something that is wrong with a store.
struct Finding {
    enum class Severity { Note, Warning, Error };
    std::string code = {};  ///< stable, such as "link-dead"
    Severity severity = Severity::Warning;
    std::wstring path = {};   ///< of the directory or file; empty where there is none
    std::string handle = {};  ///< of the record; empty where there is none
    bool mends = false;       ///< whether `repair` mends it
    bool stops = false;       ///< a look-up would reset, erase, or leave stored values out of reach
    std::string message = {};
};

/// A directory as its record has it.
struct StoredDirectory {
    mor::EntityName name;
    std::string handle;
    std::wstring path;     ///< by which the links reach it first; empty when none does
    bool tooDeep = false;  ///< links reach it, but no path of 1023 characters does
    bool paper = false;
    bool offLayer = false;
    host::RecordAttributes attributes;

    [[nodiscard]] const host::RecordAttribute* find(std::wstring_view attribute) const;
    /// The path with which it was made, its "$INFO"; empty when it does not say.
    [[nodiscard]] std::wstring info() const;
    /// Whether it holds a value that somebody stored.
    [[nodiscard]] bool hasFiles() const;
};

/// The text of a link as a look-up reads it: that of a value which is no text too.
[[nodiscard]] std::wstring linkText(const host::RecordAttribute& link);

/// What the records of a drawing say about its store. Not copied: paths are looked up in the
/// directories themselves.
struct StoreState {
    enum class Kind {
        None,   ///< no store was ever made
        Empty,  ///< made and emptied again: no directory is left
        Sound,  ///< look-ups are safe
        Broken  ///< a finding stops every command but check and repair
    };
    StoreState() = default;
    StoreState(StoreState&&) = default;
    StoreState& operator=(StoreState&&) = default;
    StoreState(const StoreState&) = delete;
    StoreState& operator=(const StoreState&) = delete;
    ~StoreState() = default;

    Kind kind = Kind::None;
    std::vector<Finding> findings;
    std::vector<StoredDirectory> directories;  ///< those with a path first, parents before children
    std::size_t reachable = 0;                 ///< how many have a path
    std::unordered_map<std::wstring_view, std::size_t> byPath;  ///< of those

    [[nodiscard]] const StoredDirectory* directory(std::wstring_view path) const;
    [[nodiscard]] const Finding* firstStopping() const;
};

}  // namespace mor::tool
