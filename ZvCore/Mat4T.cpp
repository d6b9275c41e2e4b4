#include "ZvCore/Mat4T.h"
#include <algorithm>
#include <limits>
#include <utility>

double Mat4Math::Determinant(const double (&m)[4][4]) {
    // 2 x 2 minors of the upper and the lower two rows (Laplace expansion).
    const auto minor = [&m](int row, int i, int j) {
        return m[row][i] * m[row + 1][j] - m[row][j] * m[row + 1][i];
    };
    return minor(0, 0, 1) * minor(2, 2, 3) - minor(0, 0, 2) * minor(2, 1, 3) +
           minor(0, 0, 3) * minor(2, 1, 2) + minor(0, 1, 2) * minor(2, 0, 3) -
           minor(0, 1, 3) * minor(2, 0, 2) + minor(0, 2, 3) * minor(2, 0, 1);
}

bool Mat4Math::Inverse(const double (&m)[4][4], double (&out)[4][4]) {
    // Gauss-Jordan elimination with partial pivoting. `size` keeps the largest number that entered each
    // element: an element below its rounding error is a zero, however the rows and columns are scaled.
    double a[4][8] = {}, size[4][4];
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j)
            a[i][j] = m[i][j], size[i][j] = std::abs(m[i][j]);
        a[i][4 + i] = 1;
    }
    constexpr double rounding = 8 * std::numeric_limits<double>::epsilon();
    for (int column = 0; column < 4; ++column) {
        int pivot = -1;
        for (int row = column; row < 4; ++row) {
            const double entry = std::abs(a[row][column]);
            const bool isSignificant = entry > rounding * size[row][column] && std::isfinite(entry);
            if (isSignificant && (pivot < 0 || entry > std::abs(a[pivot][column])))
                pivot = row;
        }
        if (pivot < 0)
            return false;
        std::swap(a[pivot], a[column]);
        std::swap(size[pivot], size[column]);
        const double scale = 1 / a[column][column];
        for (int j = 0; j < 8; ++j)
            a[column][j] *= scale;
        for (int j = 0; j < 4; ++j)
            size[column][j] *= std::abs(scale);
        for (int row = 0; row < 4; ++row) {
            const double factor = a[row][column];
            if (row == column || factor == 0)
                continue;
            for (int j = 0; j < 8; ++j)
                a[row][j] -= factor * a[column][j];
            for (int j = 0; j < 4; ++j)
                size[row][j] = std::max(size[row][j], std::abs(factor) * size[column][j]);
        }
    }
    for (const auto& row : a)
        if (!std::all_of(row + 4, row + 8, [](double v) { return std::isfinite(v); }))
            return false;
    for (int i = 0; i < 4; ++i)
        std::copy(a[i] + 4, a[i] + 8, out[i]);
    return true;
}
