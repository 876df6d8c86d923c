#include "model/export/NodeTransform.h"

#include <cmath>
#include <cstddef>

#include "model/scene/PointMath.h"

namespace ZVSmartModel {

namespace {

using Vector = Point;
using Columns = std::array<Vector, 3>;

constexpr double sameDirection = 1e-6;  // cosine up to which axes count as perpendicular

Vector Scaled(const Vector& a, double factor) {
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

bool ArePerpendicular(const Columns& columns) {
    for (std::size_t i = 0; i < 3; ++i) {
        const Vector& a = columns[i];
        const Vector& b = columns[(i + 1) % 3];
        if (std::fabs(Dot(a, b)) > sameDirection * Length(a) * Length(b)) return false;
    }
    return true;
}

/// A direction that is perpendicular to `a`, which has length 1.
Vector Perpendicular(const Vector& a) {
    const Vector aside = std::fabs(a[0]) < 0.5 ? Vector{1, 0, 0} : Vector{0, 1, 0};
    const Vector cross = Cross(a, aside);
    return Scaled(cross, 1 / Length(cross));
}

/// Fills in the axes that have no length: `axes` then are three unit vectors, perpendicular to
/// each other. Their lengths go to `scale`.
Columns Axes(const Columns& columns, Vector& scale) {
    Columns axes = {};
    std::array<bool, 3> known = {};
    for (std::size_t i = 0; i < 3; ++i) {
        scale[i] = Length(columns[i]);
        known[i] = scale[i] > 0;
        if (known[i]) axes[i] = Scaled(columns[i], 1 / scale[i]);
    }
    for (std::size_t i = 0; i < 3; ++i) {
        if (known[i]) continue;
        const std::size_t next = (i + 1) % 3;
        const std::size_t last = (i + 2) % 3;
        if (known[next] && known[last]) {
            axes[i] = Cross(axes[next], axes[last]);
        } else if (known[next] || known[last]) {
            axes[i] = Perpendicular(axes[known[next] ? next : last]);
        } else {
            axes[i] = {1, 0, 0};
        }
        known[i] = true;
    }
    return axes;
}

/// Turns a reflection into a rotation and a negative scale.
void MakeRightHanded(Columns& axes, Vector& scale) {
    if (Dot(Cross(axes[0], axes[1]), axes[2]) >= 0) return;
    axes[2] = Scaled(axes[2], -1);
    scale[2] = -scale[2];
}

/// The unit quaternion of a rotation, by its largest component (Shepperd 1978).
std::array<double, 4> QuaternionOf(const Columns& m) {
    const double trace = m[0][0] + m[1][1] + m[2][2];
    std::size_t i = 0;
    if (m[1][1] > m[i][i]) i = 1;
    if (m[2][2] > m[i][i]) i = 2;
    const std::size_t j = (i + 1) % 3;
    const std::size_t k = (i + 2) % 3;
    std::array<double, 4> q = {};
    if (trace > m[i][i]) {
        q = {m[1][2] - m[2][1], m[2][0] - m[0][2], m[0][1] - m[1][0], 1 + trace};
    } else {
        q[i] = 1 + m[i][i] - m[j][j] - m[k][k];
        q[j] = m[i][j] + m[j][i];
        q[k] = m[i][k] + m[k][i];
        q[3] = m[j][k] - m[k][j];
    }
    const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    for (double& value : q) value /= length;
    return q;
}

/// The eigenvectors of MᵀM, made by turning pairs of columns until all of M's are perpendicular
/// (one-sided Jacobi); `m` becomes M times them.
Columns MakePerpendicular(Columns& m) {
    Columns turned = {Vector{1, 0, 0}, Vector{0, 1, 0}, Vector{0, 0, 1}};
    constexpr int mostSweeps = 40;
    for (int sweep = 0; sweep < mostSweeps; ++sweep) {
        for (std::size_t p = 0; p < 3; ++p) {
            const std::size_t q = (p + 1) % 3;
            const double pq = Dot(m[p], m[q]);
            if (std::fabs(pq) <= 1e-15 * Length(m[p]) * Length(m[q])) continue;
            const double ratio = (Dot(m[q], m[q]) - Dot(m[p], m[p])) / (2 * pq);
            const double tangent =
                std::copysign(1 / (std::fabs(ratio) + std::hypot(1, ratio)), ratio);
            const double cosine = 1 / std::hypot(1, tangent);
            for (Columns* columns : {&m, &turned}) {
                const Vector a = (*columns)[p];
                const Vector b = (*columns)[q];
                for (std::size_t row = 0; row < 3; ++row) {
                    (*columns)[p][row] = cosine * (a[row] - tangent * b[row]);
                    (*columns)[q][row] = cosine * (b[row] + tangent * a[row]);
                }
            }
        }
    }
    return turned;
}

NodeTransform FromPerpendicular(const Columns& columns) {
    NodeTransform transform;
    Columns axes = Axes(columns, transform.scale);
    MakeRightHanded(axes, transform.scale);
    transform.rotation = QuaternionOf(axes);
    return transform;
}

}  // namespace

std::vector<NodeTransform> NodeTransformsOf(const Transform& placement) {
    Columns columns;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t i = 0; i < 3; ++i) columns[i][row] = placement[row * 4 + i];
    }
    std::vector<NodeTransform> transforms;
    if (ArePerpendicular(columns)) {
        transforms.push_back(FromPerpendicular(columns));
    } else {
        const Columns turned = MakePerpendicular(columns);
        transforms.push_back(FromPerpendicular(columns));
        NodeTransform inner;
        Columns back;  // the transpose turns back
        for (std::size_t i = 0; i < 3; ++i) back[i] = {turned[0][i], turned[1][i], turned[2][i]};
        inner.rotation = QuaternionOf(back);
        transforms.push_back(inner);
    }
    transforms.front().translation = {placement[3], placement[7], placement[11]};
    return transforms;
}

}  // namespace ZVSmartModel
