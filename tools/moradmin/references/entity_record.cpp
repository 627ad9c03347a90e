#include "tools/moradmin/references/entity_record.h"

#include "platform/entity_calls.h"
#include "platform/types.h"
#include "space/record_flags.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <span>

namespace mor::tool {

namespace {

constexpr int kApplication = 1001;
constexpr int kControl = 102;
constexpr int kEmbedded = 101;
constexpr int kExtension = 360;
// Flags of a polyline.
constexpr int kClosed = 1;
constexpr int kSpatial = 8;
constexpr int kMesh = 16;
constexpr int kFaces = 64;
// Flags of a vertex.
constexpr int kSplineFrame = 16;  // it only controls a fitted curve
constexpr int kMeshVertex = 64;
constexpr int kFace = 128;

/// Entities whose coordinates stand in the plane of their normal; those of all others are their
/// owner's.
bool isPlanar(std::string_view type) {
    static constexpr std::string_view planar[] = {"ARC",    "ATTDEF", "ATTRIB", "CIRCLE", "HATCH",
                                                  "INSERT", "SHAPE",  "SOLID",  "TEXT",   "TRACE"};
    return std::ranges::find(planar, type) != std::end(planar);
}

bool isText(std::string_view type) {
    return type == "TEXT" || type == "ATTRIB" || type == "ATTDEF";
}

/// Group codes of the points that define an entity.
std::vector<int> pointCodes(const EntityRecord& record) {
    const std::string_view type = record.type();
    if (isText(type)) return {isAligned(record) ? 11 : 10};
    if (type == "LINE") return {10, 11};
    if (type == "SOLID" || type == "TRACE" || type == "3DFACE") return {10, 11, 12, 13};
    return {10};
}

std::string_view bare(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

}  // namespace

namespace {

/// A number of few digits and no exponent, as nearly all are: both parts of the fraction are exact,
/// so that one division gives the number that is nearest. False for what has to be read otherwise.
bool readPlainReal(std::string_view text, double& value) {
    static constexpr std::array<double, 20> kPowers = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,
                                                       1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13,
                                                       1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
    constexpr std::uint64_t kMostExact = std::uint64_t{1} << 53U;
    if (text.size() >= kPowers.size()) return false;
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);
    std::uint64_t digits = 0;
    std::size_t decimals = 0;
    std::size_t points = 0;
    for (const char c : text) {
        const auto digit = static_cast<unsigned>(c) - '0';
        if (digit < 10) {
            digits = 10 * digits + digit;
            decimals += points;
        } else if (c != '.' || ++points > 1) {
            return false;
        }
    }
    if (digits > kMostExact || text.size() == points) return false;
    const double size = static_cast<double>(digits) / kPowers[decimals];
    value = negative ? -size : size;
    return true;
}

}  // namespace

std::optional<double> readReal(std::string_view text) {
    text = bare(text);
    double value = 0.0;
    if (readPlainReal(text, value)) return value;
    if (text.starts_with('+')) text.remove_prefix(1);
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<std::int64_t> readInteger(std::string_view text) {
    text = bare(text);
    if (text.starts_with('+')) text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

GroupKind groupKind(int code) {
    const auto among = [code](int first, int last) { return code >= first && code <= last; };
    if (among(10, 59) || among(110, 149) || among(210, 239) || among(460, 469) || among(1010, 1059))
        return GroupKind::Real;
    if (among(60, 99) || among(160, 179) || among(270, 299) || among(370, 389) || among(400, 409) ||
        among(420, 429) || among(440, 459) || among(1060, 1071))
        return GroupKind::Integer;
    return GroupKind::Text;
}

EntityRecord::EntityRecord(std::string type, std::span<const host::GroupView> groups)
    : m_type(std::move(type)) {
    for (const host::GroupView& group : groups) add(group);
}

void EntityRecord::add(const host::GroupView& group) {
    if (group.code >= 0 && static_cast<std::size_t>(group.code) < kUsualCodes) {
        First& first = m_first[static_cast<std::size_t>(group.code)];
        if (first.record != m_record)
            first = {m_record, static_cast<std::uint32_t>(m_groups.size())};
    }
    m_groups.push_back(group);
}

void EntityRecord::read(const AcApDocument* document, mor::EntityName name) {
    take(m_reader.read(document, name));
}

void EntityRecord::take(std::span<const host::GroupView> all) {
    ++m_record;
    m_type.clear();
    m_bytes = 0;
    m_groups.clear();
    m_embedded.clear();
    m_extension = {};
    bool inGroup = false;
    bool extended = false;
    bool embedded = false;
    m_groups.reserve(all.size());
    for (const host::GroupView& group : all) {
        m_bytes += sizeof(host::RecordGroup) + group.value.size();
        extended = extended || group.code == kApplication;
        if (extended) continue;
        if (group.code == 0 && m_type.empty()) m_type = group.value;
        embedded = embedded || group.code == kEmbedded;
        if (embedded)
            m_embedded.push_back(group);
        else if (group.code == kControl)
            inGroup = group.value.starts_with("{");
        else if (!inGroup)
            add(group);
        else if (group.code == kExtension)
            m_extension = group.value;
    }
}

const std::string_view* EntityRecord::search(int code) const {
    const auto found = std::ranges::find(m_groups, code, &host::GroupView::code);
    return found == m_groups.end() ? nullptr : &found->value;
}

std::string EntityRecord::text(int code) const {
    const std::string_view* found = find(code);
    return found == nullptr ? std::string() : std::string(*found);
}

double EntityRecord::real(int code, double missing) const {
    const std::string_view* found = find(code);
    return found == nullptr ? missing : readReal(*found).value_or(missing);
}

int EntityRecord::integer(int code, int missing) const {
    const double value = real(code, missing);
    return std::fabs(value) < 2147483648.0 ? static_cast<int>(value) : missing;
}

std::optional<Point> EntityRecord::point(int code) const {
    if (find(code) == nullptr) return std::nullopt;
    return Point{real(code), real(code + 10), real(code + 20)};
}

host::PlaneAxes EntityRecord::plane() const {
    static constexpr Point upwards{0.0, 0.0, 1.0};
    static const host::PlaneAxes usual = host::planeAxes(upwards);
    const Point normal = point(210, upwards);
    return normal == upwards ? usual : host::planeAxes(normal);
}

std::vector<Vertex> verticesOf(const EntityRecord& polyline) {
    const double elevation = polyline.real(38);
    const double width = polyline.real(43);
    std::vector<Vertex> vertices;
    vertices.reserve(polyline.groups().size() / 2);
    for (const host::GroupView& group : polyline.groups()) {
        if (group.code < 10 || group.code > 42) continue;
        const double value = readReal(group.value).value_or(0.0);
        if (group.code == 10)
            vertices.push_back({{value, 0.0, elevation}, 0.0, width, width});
        else if (group.code == 20 && !vertices.empty())
            vertices.back().at[1] = value;
        else if (group.code == 30 && !vertices.empty())
            vertices.back().at[2] = value;
        else if (group.code == 40 && !vertices.empty())
            vertices.back().startWidth = value;
        else if (group.code == 41 && !vertices.empty())
            vertices.back().endWidth = value;
        else if (group.code == 42 && !vertices.empty())
            vertices.back().bulge = value;
    }
    return vertices;
}

std::vector<Vertex> verticesBehind(const AcApDocument* document, mor::EntityName name,
                                   const EntityRecord& polyline, std::size_t& read) {
    // The height of a flat one stands in its own record, and most writers repeat it.
    const double elevation = isSpatial(polyline) ? 0.0 : polyline.real(30);
    std::vector<Vertex> vertices;
    ads_name at{};
    name.copyTo(at);
    EntityRecord vertex;
    while (acdbEntNext(at, at) == RTNORM) {
        vertex.read(document, mor::EntityName(at));
        read += vertex.bytes();
        if (vertex.type() != "VERTEX") break;
        const int flags = vertex.integer(kGroupFlags);
        const bool face = (flags & kFace) != 0 && (flags & kMeshVertex) == 0;  // names vertices
        if ((flags & kSplineFrame) != 0 || face) continue;
        vertices.push_back({vertex.point(10, {}), vertex.real(42),
                            vertex.real(40, polyline.real(40)),
                            vertex.real(41, polyline.real(41))});
        if (elevation != 0.0) vertices.back().at[2] = elevation;
    }
    return vertices;
}

bool isAligned(const EntityRecord& text) {
    const int across = text.integer(72);
    const int down = text.integer(text.type() == "TEXT" ? 73 : 74);
    return across != 3 && across != 5 && (across != 0 || down != 0) && text.find(11) != nullptr;
}

bool isSpatial(const EntityRecord& polyline) {
    return (polyline.integer(kGroupFlags) & (kSpatial | kMesh | kFaces)) != 0;
}

bool isClosed(const EntityRecord& polyline) {
    return (polyline.integer(kGroupFlags) & kClosed) != 0;
}

bool isMesh(const EntityRecord& polyline) {
    return (polyline.integer(kGroupFlags) & (kMesh | kFaces)) != 0;
}

std::vector<Point> pointsOf(const AcApDocument* document, mor::EntityName name) {
    const EntityRecord record(document, name);
    const bool old = record.type() == "POLYLINE";
    std::vector<Point> points;
    std::size_t read = 0;
    if (old || record.type() == "LWPOLYLINE") {
        for (const Vertex& vertex :
             old ? verticesBehind(document, name, record, read) : verticesOf(record))
            points.push_back(vertex.at);
    } else if (record.type() == "LEADER") {
        for (const Vertex& vertex : verticesOf(record)) points.push_back(vertex.at);
    } else {
        for (const int code : pointCodes(record))
            if (const auto point = record.point(code)) points.push_back(*point);
    }
    const bool inPlane =
        old ? !isSpatial(record) : record.type() == "LWPOLYLINE" || isPlanar(record.type());
    if (!inPlane) return points;
    const host::PlaneAxes axes = record.plane();
    for (Point& point : points) point = fromPlane(axes, point);
    return points;
}

}  // namespace mor::tool
