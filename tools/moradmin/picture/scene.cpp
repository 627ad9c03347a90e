#include "tools/moradmin/picture/scene.h"

#include "tools/moradmin/shown_text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <initializer_list>
#include <numbers>
#include <utility>

namespace mor::tool {

namespace {

constexpr double kBox = 0.25;         // width of a box for what is missing, of the longer side
constexpr double kPointShare = 0.05;  // of the picture's height, for points of no size
constexpr double kRayMargin = 0.01;   // how far endless lines go beyond what is not
// About how long things are as SVG.
constexpr std::size_t kElementBytes = 60;
constexpr std::size_t kNumberBytes = 10;
constexpr std::size_t kAttributeBytes = 60;
constexpr int kGrey = 0x808080;

/// A number in which all of them have a part.
std::uint64_t mixed(std::initializer_list<std::uint64_t> parts) {
    std::uint64_t result = 0;
    for (const std::uint64_t part : parts) result = (result ^ part) * 0x9E3779B97F4A7C15U;
    return result >> 40U;
}

/// How long a text is once it is escaped.
std::size_t escapedBytes(const std::string& text) { return xmlText(text).size(); }

}  // namespace

Scene::Scene(const Point& shift) : m_shift(shift), m_owners(1), m_dashes(1) {
    static const std::string none;
    static_cast<void>(numberOf(Kin{&none, &none, &none}));  // number 0
}

const std::string* Scene::kept(const std::string& text) { return &*m_kept.insert(text).first; }

std::uint32_t Scene::dash(const std::vector<float>& lengths) {
    const auto [known, added] =
        m_dashNumbers.try_emplace(lengths, static_cast<std::uint32_t>(m_dashes.size()));
    if (added) m_dashes.push_back(lengths);
    return known->second;
}

void Scene::expect(std::size_t elements) {
    constexpr std::size_t kNumbers = 6;
    m_elements.reserve(elements);
    m_owners.reserve(elements + 1);
    m_ops.reserve(2 * elements);
    m_numbers.reserve(kNumbers * elements);
}

std::uint32_t Scene::numberOf(const Kin& kin) {
    if (m_lastKin.given == kin) return m_lastKin.number;
    RecentKin& recent = m_recentKins[mixed({std::bit_cast<std::uintptr_t>(kin.layer),
                                            std::bit_cast<std::uintptr_t>(kin.type),
                                            std::bit_cast<std::uintptr_t>(kin.reference)}) %
                                     kRecent];
    if (recent.given == kin) return (m_lastKin = recent).number;
    const Kin own{kept(*kin.layer), kept(*kin.type), kept(*kin.reference)};
    const auto [known, added] = m_kinNumbers.try_emplace({own.layer, own.type, own.reference},
                                                         static_cast<std::uint32_t>(m_kins.size()));
    if (added) m_kins.push_back({own, kAttributeBytes + escapedBytes(*own.layer)});
    recent = m_lastKin = {kin, known->second};
    return known->second;
}

std::uint32_t Scene::numberOf(const Style& style) {
    const auto bits = [](float number) {
        return std::uint64_t{std::bit_cast<std::uint32_t>(number)};
    };
    const auto rgb = static_cast<std::uint64_t>(style.rgb);
    const std::size_t place =
        mixed({rgb ^ std::uint64_t{style.dash} << 32U,
               bits(style.weight) ^ bits(style.width) << 32U, bits(style.opacity)}) %
        kRecent;
    std::uint32_t& recent = m_recentStyles[place];
    if (recent >= m_styles.size() || m_styles[recent] != style) {
        recent = static_cast<std::uint32_t>(m_styles.size());
        m_styles.push_back(style);
    }
    return recent;
}

void Scene::setOrigin(const Origin& origin) {
    const Owner owner{origin.handle, numberOf(origin.kin)};
    m_ownerBytes = m_kins[owner.kin].bytes;
    if (m_used + 1 < m_owners.size())
        m_owners.back() = owner;  // the one before has left no mark
    else
        m_owners.push_back(owner);
}

std::uint32_t Scene::useOwner() {
    m_used = static_cast<std::uint32_t>(m_owners.size() - 1);
    return m_used;
}

void Scene::countStroke() {
    ++m_strokes;
    const auto owner = static_cast<std::uint32_t>(m_owners.size() - 1);
    if (owner != m_lastDrawn) ++m_drawn;
    m_lastDrawn = owner;
}

Scene::Element& Scene::push(Kind kind) {
    Element element;
    element.kind = kind;
    element.origin = useOwner();
    element.op = m_ops.size();
    element.number = m_numbers.size();
    m_bytes += kElementBytes + m_ownerBytes;
    m_elements.push_back(element);
    return m_elements.back();
}

bool Scene::noteExtent(const Extent& extent) {
    ++m_offered;
    Extent seen = extent;
    if (!m_clips.empty()) {
        seen = extent.within(m_clips.back());
        if (seen.empty) return false;
    }
    m_extent.include(seen);
    countStroke();
    return true;
}

void Scene::add(Kind kind, const Path& path, const Style& style) {
    if (path.empty() || !path.isFinite()) return;
    Extent extent = path.extent();
    if (kind == Kind::Stroke && style.width > 0.0F) {
        const double half = static_cast<double>(style.width) / 2;
        extent.include(extent.left - half, extent.bottom - half);
        extent.include(extent.right + half, extent.top + half);
    }
    if (!noteExtent(extent)) return;
    Element& element = push(kind);
    element.ops = static_cast<std::uint32_t>(path.ops().size());
    m_ops += path.ops();
    m_numbers.insert(m_numbers.end(), path.numbers().begin(), path.numbers().end());
    m_bytes += path.numbers().size() * kNumberBytes;
    element.style = numberOf(style);
}

void Scene::text(TextRun run, const Style& style) {
    Extent extent;
    for (const double x : {0.0, run.width})
        for (const double y : {-run.rise, run.fall}) {
            const Point corner = run.at + x * run.right + y * run.down;
            extent.include(corner[0], corner[1]);
        }
    if (!isWithin(run.right, kFarthest) || !isWithin(run.down, kFarthest) ||
        !isWithin(run.at, kFarthest) || !(run.size <= kFarthest) || !(run.width <= kFarthest))
        return;
    if (!noteExtent(extent)) return;
    Element& element = push(Kind::Text);
    m_bytes += escapedBytes(run.text) + kAttributeBytes;
    element.text = static_cast<std::uint32_t>(m_texts.size());
    m_texts.push_back(std::move(run));
    element.style = numberOf(style);
}

void Scene::defer(Deferred deferred) {
    if (!isWithin(deferred.at, kFarthest)) return;
    ++m_offered;
    Extent spot;
    spot.include(deferred.at[0], deferred.at[1]);
    const bool line = deferred.kind == Deferred::Kind::Ray || deferred.kind == Deferred::Kind::Line;
    if (!m_clips.empty() && !line && spot.within(m_clips.back()).empty) return;
    if (!m_clips.empty())
        deferred.clip = m_clips.back();
    else
        m_extent.include(spot);
    deferred.origin = useOwner();
    countStroke();
    m_bytes += 2 * (kElementBytes + m_ownerBytes + escapedBytes(deferred.text));
    m_deferred.push_back(std::move(deferred));
}

void Scene::ray(const Point& at, const Point& direction, bool both, const Style& style) {
    defer({both ? Deferred::Kind::Line : Deferred::Kind::Ray,
           0,
           at - m_shift,
           direction,
           {},
           style,
           {},
           {}});
}

void Scene::mark(const Point& at, const Point& right, const Point& up, const Style& style) {
    defer({Deferred::Kind::Mark, 0, at - m_shift, right, up, style, {}, {}});
}

void Scene::missing(const Point& place, const std::string& text, double share) {
    Style grey;
    grey.rgb = kGrey;
    defer({Deferred::Kind::Box, 0, place - m_shift, {share, 0.0, 0.0}, {}, grey, text, {}});
}

Scene::Group Scene::open(const Origin& origin, const std::string& block) {
    setOrigin(origin);
    const Group group{m_elements.size(), false};
    push(Kind::Open).text = static_cast<std::uint32_t>(m_blocks.size());
    m_blocks.push_back(kept(block));
    return group;
}

Scene::Group Scene::clip(const Path& path) {
    const Group group{m_elements.size(), true};
    Element& element = push(Kind::Clip);
    element.ops = static_cast<std::uint32_t>(path.ops().size());
    m_ops += path.ops();
    m_numbers.insert(m_numbers.end(), path.numbers().begin(), path.numbers().end());
    m_clips.push_back(m_clips.empty() ? path.extent() : path.extent().within(m_clips.back()));
    return group;
}

void Scene::close(const Group& group) {
    if (group.clips) m_clips.pop_back();
    if (m_elements.size() == group.begin + 1) {
        m_ops.resize(m_elements.back().op);
        m_numbers.resize(m_elements.back().number);
        m_elements.pop_back();
        return;
    }
    push(Kind::Close);
}

void Scene::finish(const Marks& marks, const std::optional<Extent>& window) {
    const Extent drawn = window.value_or(m_extent);
    double size = marks.size > 0.0 ? marks.size : drawn.height() * kPointShare;
    if (marks.size < 0.0) size = drawn.height() * -marks.size / 100.0;
    if (marks.mode == 0 || !(size > 0.0) || !(size < kFarthest)) size = 0.0;
    const std::size_t strokes = m_strokes;  // these were counted
    const std::size_t records = m_drawn;
    for (const Deferred& one : m_deferred) {
        m_owners.push_back(m_owners[one.origin]);
        if (one.kind == Deferred::Kind::Mark) drawMark(one, marks, size);
        if (one.kind == Deferred::Kind::Box) drawBox(one, longerSide(drawn) * kBox * one.first[0]);
    }
    // Rays last: they go to the edge of all that is not endless.
    Extent all = window.value_or(m_extent);
    const double margin = window ? 0.0 : longerSide(all) * kRayMargin;
    if (!all.empty)
        all = {all.left - margin, all.bottom - margin, all.right + margin, all.top + margin, false};
    for (const Deferred& one : m_deferred) {
        if (one.kind != Deferred::Kind::Ray && one.kind != Deferred::Kind::Line) continue;
        m_owners.push_back(m_owners[one.origin]);
        drawRay(one, one.clip.empty ? all : one.clip);
    }
    m_strokes = strokes;
    m_drawn = records;
    m_deferred.clear();
}

void Scene::drawRay(const Deferred& ray, const Extent& all) {
    // The part of the line within the rectangle, as lengths along it.
    double from = ray.kind == Deferred::Kind::Ray ? 0.0 : -kFarthest;
    double to = kFarthest;
    const auto cut = [&](double at, double step, double least, double most) {
        if (std::fabs(step) < 1e-12) {
            if (at < least || at > most) to = from - 1.0;
            return;
        }
        const auto [first, last] = std::minmax({(least - at) / step, (most - at) / step});
        from = std::max(from, first);
        to = std::min(to, last);
    };
    cut(ray.at[0], ray.first[0], all.left, all.right);
    cut(ray.at[1], ray.first[1], all.bottom, all.top);
    if (!(from < to)) return;
    Path line;
    line.moveTo(ray.at + from * ray.first);
    line.lineTo(ray.at + to * ray.first);
    add(Kind::Stroke, line, ray.style);
}

void Scene::drawMark(const Deferred& point, const Marks& marks, double size) {
    constexpr int kCircle = 32;
    constexpr int kSquare = 64;
    const int figure = size > 0.0 ? marks.mode % kCircle : 0;
    const double half = size / 2;
    const auto at = [&](double x, double y) {
        return point.at + x * half * point.first + y * half * point.second;
    };
    Path mark;
    const auto line = [&](double x1, double y1, double x2, double y2) {
        mark.moveTo(at(x1, y1));
        mark.lineTo(at(x2, y2));
    };
    if (figure == 0) line(0, 0, 0, 0);
    if (figure == 2) line(-1, 0, 1, 0), line(0, -1, 0, 1);
    if (figure == 3) line(-1, -1, 1, 1), line(-1, 1, 1, -1);
    if (figure == 4) line(0, 0, 0, 1);
    if (size > 0.0 && (marks.mode & kCircle) != 0) {
        mark.moveTo(at(1, 0));
        mark.along({point.at, half * point.first, half * point.second}, 0.0, 2 * std::numbers::pi);
        mark.close();
    }
    if (size > 0.0 && (marks.mode & kSquare) != 0) {
        mark.moveTo(at(-1, -1));
        for (const auto& [x, y] : {std::pair(1, -1), std::pair(1, 1), std::pair(-1, 1)})
            mark.lineTo(at(x, y));
        mark.close();
    }
    add(Kind::Stroke, mark, point.style);
}

void Scene::drawBox(const Deferred& box, double width) {
    const double height = width / 4;
    const auto dashLength = static_cast<float>(width / 30);
    Style dashed = box.style;
    dashed.dash = dash({dashLength, dashLength});
    Path frame;
    const double x = box.at[0];
    const double y = box.at[1];
    frame.polygon({{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}});
    add(Kind::Stroke, frame, dashed);
    const double letters = static_cast<double>(std::max<std::size_t>(box.text.size(), 1));
    const double size = std::min(height / 3, 1.5 * width / letters);
    const double length = std::min(0.55 * size * letters, 0.9 * width);
    TextRun run;
    run.text = box.text;
    run.right = {1.0, 0.0, 0.0};
    run.down = {0.0, -1.0, 0.0};
    run.at = {x + (width - length) / 2, y + height / 2 - size / 3, 0.0};
    run.size = size;
    run.width = length;
    text(std::move(run), box.style);
}

}  // namespace mor::tool
