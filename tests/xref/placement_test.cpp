#include "platform/geometry.h"
#include "tests/xref/reference_fixture.h"
#include "xref/xref_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>
#include <iomanip>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace mor::test {
namespace {

using Point = std::array<long double, 3>;

/// A block reference by its groups, and step by step in long numbers where it puts a point.
struct Placement {
    Point base{};  ///< of the block
    std::map<int, double> groups;

    [[nodiscard]] long double group(int code, long double missing = 0) const {
        const auto found = groups.find(code);
        return found == groups.end() ? missing : found->second;
    }
    [[nodiscard]] Point place(Point p) const {
        for (std::size_t i = 0; i < 3; ++i)
            p[i] = (p[i] - base[i]) * group(41 + static_cast<int>(i), 1);
        const long double turn = group(50) * std::acos(-1.0L) / 180;
        p = {p[0] * std::cos(turn) - p[1] * std::sin(turn),
             p[0] * std::sin(turn) + p[1] * std::cos(turn), p[2]};
        p = {p[0] + group(10), p[1] + group(20), p[2] + group(30)};
        return fromPlane(p, unit({group(210), group(220), group(230, 1)}));
    }
    /// How large numbers become on the way of a point of that size: what rounding is measured by.
    [[nodiscard]] long double reach(long double size) const {
        long double most = 1;
        for (const int code : {41, 42, 43}) most = std::max(most, std::fabs(group(code, 1)));
        return most * (size + std::fabs(base[0])) + std::hypot(group(10), group(20), group(30));
    }
    [[nodiscard]] std::string tags() const {
        std::ostringstream text;
        for (const auto& [code, value] : groups)
            text << code << ' ' << std::setprecision(17) << value << '|';
        return text.str();
    }

private:
    static Point unit(const Point& p) {
        const long double length = std::hypot(p[0], p[1], p[2]);
        return {p[0] / length, p[1] / length, p[2] / length};
    }
    static Point fromPlane(const Point& p, const Point& z) {
        const bool steep = std::fabs(z[0]) < 1.0L / 64 && std::fabs(z[1]) < 1.0L / 64;
        const Point x = unit(steep ? Point{z[2], 0, -z[0]} : Point{-z[1], z[0], 0});
        const Point y = {z[1] * x[2] - z[2] * x[1], z[2] * x[0] - z[0] * x[2],
                         z[0] * x[1] - z[1] * x[0]};
        Point world{};
        for (std::size_t i = 0; i < 3; ++i) world[i] = p[0] * x[i] + p[1] * y[i] + p[2] * z[i];
        return world;
    }
};

class Placements : public ReferenceTest {
protected:
    double number(double size) { return std::uniform_real_distribution{-size, size}(m_engine); }
    double oneOf(std::initializer_list<double> numbers) {
        return numbers.begin()[m_engine() % numbers.size()];
    }
    bool chance() { return m_engine() % 2 == 0; }
    std::map<int, double> random() {
        std::map<int, double> groups;
        const double size = oneOf({1, 500, 1e7});
        for (const int code : {10, 20, 30})
            if (chance()) groups[code] = number(size);
        for (const int code : {41, 42, 43})
            if (chance()) groups[code] = number(50);
        if (chance()) groups[50] = oneOf({90, 180, 270, -90, 360, 45, number(800)});
        if (chance()) groups.merge(std::map<int, double>{{70, 3}, {71, 2}, {44, 7.5}, {45, -2}});
        if (chance()) return groups;
        // Vertical, nearly so on either side of the bound, level, any; as a unit or not.
        const double below = (1 - 1e-9) / 64;
        const double above = (1 + 1e-9) / 64;
        const double x = oneOf({0, below, -below, above, -above, oneOf({1, -1, number(1)})});
        const double y = oneOf({0, below, -above, number(1)});
        const double z = std::sqrt(std::max(0.0, 1 - x * x - y * y)) * oneOf({1, -1});
        const double length = oneOf({1, 1, 37.5, 0.001});
        groups.insert({{210, length * x}, {220, length * y}, {230, length * z}});
        return groups;
    }
    /// Random inserts of a block, which are added to `made`.
    std::string inserts(const std::string& block, const Point& base, std::vector<Placement>& made) {
        std::string tags;
        for (int i = 0; i < 40; ++i) {
            made.push_back({base, random()});
            tags += insertEntity(std::to_string(99 + made.size()), "0", block, made.back().tags());
        }
        return tags;
    }
    static void expectAt(const Point& expected, const CMORMathPoint& point, long double size) {
        const Point found = {point.x, point.y, point.z};
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_LE(std::fabs(found[i] - expected[i]), 1e-12L * size) << "coordinate " << i;
    }
    std::mt19937 m_engine;
};

/// M1 and the reference within both have the base of their drawing's header, M2 that of its block.
/// The reference within is named like another one of the drawing.
TEST_F(Placements, APointLiesWhereTheStepsLeadThroughNestedReferencesToo) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
        m_engine.seed(seed);
        std::vector<Placement> inner;
        std::vector<Placement> outer;
        DxfDrawing leaf{.entities = lineEntity("F1", "0"),
                        .header = "9 $INSBASE|10 1000.5|20 -2.25|30 7.0|"};
        leaf.save("leaf.dxf");
        DxfDrawing middle{.blocks = blockDefinition("M2", "", 4, "leaf.dxf", "10 3.0|20 4.0|"),
                          .entities = inserts("M2", {1000.5L, -2.25L, 7}, inner)};
        middle.save("m2.dxf");
        middle.header = "9 $INSBASE|10 -8.0|20 0.5|30 2.0|";
        middle.save("m1.dxf");
        open(DxfDrawing{
            .blocks = blockDefinition("M1", "", 4, "m1.dxf", "10 3.0|20 -4.0|30 5.0|") +
                      blockDefinition("M2", "", 4, "m2.dxf", "10 3.0|20 -4.0|30 5.0|"),
            .entities = inserts("M1", {-8, 0.5L, 2}, outer) + inserts("M2", {3, -4, 5}, outer)}
                 .save("site.dxf"));
        for (std::size_t i = 0; i < outer.size(); ++i) {
            ads_name name{};
            find(std::to_wstring(100 + i).c_str(), name);
            MOR_XRefView view;
            ASSERT_TRUE(view.connect(name));
            const std::size_t within = i % inner.size();
            SCOPED_TRACE("seed " + std::to_string(seed) + ": " + outer[i].tags() + " then " +
                         inner[within].tags());
            ASSERT_TRUE(view.handEnt(std::to_wstring(100 + within).c_str(), name));
            const double size = oneOf({1, 1000, 1e7});
            const CMORMathPoint from{number(size), number(size), number(size)};
            const Point start{from.x, from.y, from.z};
            CMORMathPoint to = from;
            ASSERT_TRUE(view.toWCS(to));
            expectAt(outer[i].place(start), to, outer[i].reach(2 * size));
            CMORAdsTransformation first;
            CMORAdsTransformation second;
            ASSERT_TRUE(first.loadFromEntity(name) && view.getMat(second));
            double point[] = {from.x, from.y, from.z};
            first.matrix.Transform(point);
            second.matrix.Transform(point);
            expectAt(outer[i].place(inner[within].place(start)), {point[0], point[1], point[2]},
                     outer[i].reach(inner[within].reach(2 * size)));
        }
    }
}

}  // namespace
}  // namespace mor::test
