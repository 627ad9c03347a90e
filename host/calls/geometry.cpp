#include "platform/geometry.h"

CMORMathTransMatrix::CMORMathTransMatrix() { Identity(); }

void CMORMathTransMatrix::Identity() {
    rows = {};
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i][i] = 1.0;
}

void CMORMathTransMatrix::Transform(double* point) const {
    const std::array<double, 3> from{point[0], point[1], point[2]};
    for (std::size_t row = 0; row < 3; ++row) {
        double sum = rows[row][3];
        for (std::size_t column = 0; column < 3; ++column) sum += rows[row][column] * from[column];
        point[row] = sum;
    }
}
