#include "host/dwg/object_notes.h"

#include "host/dwg/common_data.h"
#include "host/dwg/dwg_file.h"
#include "host/dwg/two_hands.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

namespace mor::host {

namespace {

/// Fewer are read before another thread has begun.
constexpr std::size_t kManyObjects = 4096;
constexpr std::size_t kPart = 512;
constexpr std::size_t kFarApart = 128;

bool owns(std::uint16_t type) {
    static constexpr std::array<std::uint16_t, 6> types = {kDwgInsert,       kDwgManyInsert,
                                                           kDwgPolyline2D,   kDwgPolyline3D,
                                                           kDwgPolyfaceMesh, kDwgPolygonMesh};
    return std::ranges::find(types, type) != types.end();
}

/// Where objects lie, and how much they are.
struct Stretch {
    std::uint64_t first = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t last = 0;
    std::uint64_t used = 0;

    void add(const Stretch& other) {
        first = std::min(first, other.first);
        last = std::max(last, other.last);
        used += other.used;
    }
};

/// Each works for itself: in one line of the processor's memory they would wait for each other.
class alignas(kFarApart) NoteTaker {
public:
    explicit NoteTaker(const DwgFile& file) : m_file(file) {}

    /// Takes those from `begin` on; `notes` is where all of them go.
    void run(std::size_t begin, std::size_t end, ObjectNotes& notes) {
        for (std::size_t i = begin; i < end; ++i) {
            const ObjectFrame frame = m_file.frame(m_file.map().entries()[i].place, true);
            notes.objects[i] = {frame.type, flagsOf(frame, i)};
            if (!notes.next.empty() && frame.entity && frame.wrong == nullptr)
                notes.next[i] = neighboursOf(frame, m_file.release()).next;
        }
    }
    [[nodiscard]] const std::vector<ObjectNotes::Wrong>& wrong() const { return m_wrong; }
    [[nodiscard]] const Stretch& stretch() const { return m_stretch; }

private:
    std::uint8_t flagsOf(const ObjectFrame& frame, std::size_t i) {
        const MapEntry& entry = m_file.map().entries()[i];
        const std::uint64_t size = frame.whole.size();
        m_stretch.add({entry.place, entry.place + size, size});
        const char* wrong = frame.wrong;
        if (wrong == nullptr && frame.handle != entry.handle) wrong = "it carries another handle";
        unsigned flags = frame.entity ? kEntity : 0;
        if (owns(frame.type)) flags |= kOwning;
        if (wrong != nullptr) {
            m_wrong.push_back({i, wrong});
            return static_cast<std::uint8_t>(flags | kDamaged);
        }
        if (frame.extendedEnd - frame.extendedBegin > 2) flags |= kExtending;
        return static_cast<std::uint8_t>(flags);
    }

    const DwgFile& m_file;
    Stretch m_stretch;
    std::vector<ObjectNotes::Wrong> m_wrong;
};

}  // namespace

ObjectNotes noteObjects(const DwgFile& file, std::function<void()> meanwhile) {
    ObjectNotes notes;
    notes.objects.resize(file.map().entries().size());
    if (file.release() <= Release::R2000) notes.next.resize(notes.objects.size());
    std::array<NoteTaker, 2> takers{NoteTaker(file), NoteTaker(file)};
    inTwoHands({notes.objects.size(), kPart, kManyObjects, std::move(meanwhile)},
               [&](std::size_t begin, std::size_t end, unsigned hand) {
                   takers[hand].run(begin, end, notes);
               });
    Stretch stretch;
    for (const NoteTaker& taker : takers) {
        stretch.add(taker.stretch());
        notes.wrong.insert(notes.wrong.end(), taker.wrong().begin(), taker.wrong().end());
    }
    std::ranges::sort(notes.wrong, {}, &ObjectNotes::Wrong::object);
    // Up to R2000 other things lie before and behind the objects; the first place has a mark.
    if (stretch.first < stretch.last && stretch.last - stretch.first > stretch.used)
        notes.deadBytes = stretch.last - stretch.first - stretch.used;
    return notes;
}

}  // namespace mor::host
