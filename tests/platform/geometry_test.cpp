#include "platform/geometry.h"

#include <gtest/gtest.h>

namespace {

TEST(Matrix, IsTheIdentityAtFirst) {
    double point[] = {1.0, -2.0, 3.0};
    CMORMathTransMatrix{}.Transform(point);
    EXPECT_EQ(std::to_array(point), (std::array{1.0, -2.0, 3.0}));
}

TEST(Matrix, TransformsColumnVectorsInPlace) {
    CMORMathTransMatrix matrix;
    matrix.rows = {{{0.0, -1.0, 0.0, 10.0},
                    {1.0, 0.0, 0.0, 20.0},
                    {0.0, 0.0, 2.0, 30.0},
                    {0.0, 0.0, 0.0, 1.0}}};
    double point[] = {1.0, 2.0, 3.0};
    matrix.Transform(point);
    EXPECT_EQ(std::to_array(point), (std::array{8.0, 21.0, 36.0}));
    matrix.Identity();
    matrix.Transform(point);
    EXPECT_EQ(std::to_array(point), (std::array{8.0, 21.0, 36.0}));
}

}  // namespace
