#include "tools/moradmin/changes/fingerprint.h"

#include "host/host.h"
#include "tools/moradmin/changes/own_records.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <vector>

namespace mor::tool {

namespace {

constexpr int kVariableCode = 9;
constexpr std::uint64_t kPrime = 0x100000001B3;

/// Two running sums of the kind that tells texts apart.
class Sum {
public:
    void add(std::string_view bytes) {
        for (const char c : bytes) {
            const auto byte = static_cast<unsigned char>(c);
            m_first = (m_first ^ byte) * kPrime;
            m_second = (m_second ^ byte ^ (m_second >> 29U)) * kPrime;
        }
    }
    /// An end that tells "ab", "c" from "a", "bc".
    void end() { add(std::string_view("\0\xFF", 2)); }
    [[nodiscard]] std::string text() const {
        static constexpr std::string_view digits = "0123456789abcdef";
        std::string text;
        for (const std::uint64_t sum : {m_first, m_second})
            for (int shift = 60; shift >= 0; shift -= 4)
                text += digits[(sum >> static_cast<unsigned>(shift)) & 15U];
        return text;
    }

private:
    std::uint64_t m_first = 0xCBF29CE484222325;
    std::uint64_t m_second = 0x84222325CBF29CE4;
};

/// Whether a save that stores something may make or change the header variable.
bool isOwnVariable(const std::string& name) { return name == "$HANDSEED" || name == "$HANDLING"; }

/// Frames of sections and tables say nothing but counts, which change with the store; so does the
/// name of an application that every drawing has.
bool isFrame(const std::vector<host::RecordGroup>& kept) {
    const std::string& type = kept.front().value;
    if (type == "SECTION") return kept.size() <= 2;
    if (type == "APPID")
        return std::ranges::any_of(kept, [](const host::RecordGroup& group) {
            return group.code == 2 && group.value == "ACAD";
        });
    return type == "TABLE" || type == "ENDTAB" || type == "ENDSEC" || type == "EOF";
}

/// The groups of a record without variables of the store.
std::vector<host::RecordGroup> keptGroups(const AcApDocument* document, mor::EntityName name) {
    std::vector<host::RecordGroup> kept = host::recordGroups(document, name);
    bool own = false;
    std::erase_if(kept, [&own](const host::RecordGroup& group) {
        if (group.code == kVariableCode) own = isOwnVariable(group.value);
        return own;
    });
    return kept;
}

/// False for a record that only frames others.
bool addRecord(Sum& sum, const AcApDocument* document, const host::RecordInfo& record) {
    const std::vector<host::RecordGroup> kept = keptGroups(document, record.name);
    if (kept.empty() || isFrame(kept)) return false;
    for (const host::RecordGroup& group : kept) {
        sum.add(std::to_string(group.code));
        sum.end();
        sum.add(group.value);
        sum.end();
    }
    sum.add(host::undecodedBytes(document, record.name));
    sum.end();
    return true;
}

}  // namespace

std::string outsideOf(const AcApDocument* document) {
    Sum sum;
    OwnRecords own(document);
    std::size_t records = 0;
    host::forEachRecord(document, [&](const host::RecordInfo& record) {
        if (!own.isOwn(record) && !record.erased && addRecord(sum, document, record)) ++records;
    });
    const host::DocumentInfo info = host::documentInfo(document);
    return info.form + " " + host::releaseName(info.release) + ", " + std::to_string(records) +
           " records, fingerprint " + sum.text();
}

std::string fingerprintOfFile(const std::string& file) {
    std::ifstream bytes(file, std::ios::binary);
    if (!bytes) return {};
    Sum sum;
    std::array<char, 65536> piece{};
    while (bytes.read(piece.data(), piece.size()) || bytes.gcount() > 0)
        sum.add({piece.data(), static_cast<std::size_t>(bytes.gcount())});
    return sum.text();
}

}  // namespace mor::tool
