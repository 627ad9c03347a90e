#include "tools/moradmin/changes/fingerprint.h"

#include "host/host.h"
#include "tools/moradmin/changes/own_records.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <vector>

namespace mor::tool {

namespace {

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

/// Frames of sections and tables say nothing but counts, which change with the store.
bool isFrame(const host::RecordInfo& record, std::size_t groups) {
    return record.type == "TABLE" || record.type == "ENDTAB" || record.type == "ENDSEC" ||
           record.type == "EOF" || (record.type == "SECTION" && groups <= 2);
}

/// False for a record that only frames others.
bool addRecord(Sum& sum, const AcApDocument* document, const host::RecordInfo& record) {
    const std::vector<host::RecordGroup> groups = host::recordGroups(document, record.name);
    if (isFrame(record, groups.size())) return false;
    bool seed = false;  // the next free handle
    for (const host::RecordGroup& group : groups) {
        if (group.code == 9) seed = group.value == "$HANDSEED";
        if (seed) continue;
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
