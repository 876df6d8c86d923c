#pragma once

#include <compare>

/// A point in metres, or a direction.
struct ModelPoint {
    double x = 0, y = 0, z = 0;

    friend auto operator<=>(const ModelPoint&, const ModelPoint&) = default;
};
