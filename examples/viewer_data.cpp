// Reads what a renderer draws: each shape once, with normals, and where it is placed. Shows the
// progress, and what the numbers would take on a graphics card.

#include <cstdio>
#include <string>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"

using namespace ZVSmartModel;

namespace {

/// Answers whether to go on; a host's cancel button comes in here.
bool Show(const std::string& work, double fraction) {
    std::fprintf(stderr, "\r%s: %.0f %%", work.c_str(), fraction * 100);
    return true;
}

std::size_t TrianglesOf(const Shape& shape) {
    std::size_t triangles = 0;
    for (const Triangles& surface : shape.surfaces) triangles += surface.triangles.size();
    return triangles;
}

std::size_t BytesOf(const Shape& shape) {
    constexpr std::size_t bytesOfPoint = 6 * sizeof(float);  // and its normal, near the middle
    std::size_t bytes = TrianglesOf(shape) * sizeof(Triangles().triangles[0]);
    for (const Triangles& surface : shape.surfaces) bytes += surface.points.size() * bytesOfPoint;
    return bytes;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) return std::fputs("viewer_data FILE\n", stderr), 2;
    const BlockFile file{std::string(argv[1])};
    Selection withoutRooms;
    withoutRooms.rooms = false;
    const Shapes shapes = ReadShapes(file, withoutRooms, {Normals::Smooth}, Show);
    std::size_t triangles = 0, bytes = 0, drawn = 0;
    for (const Shape& shape : shapes.shapes) {
        triangles += TrianglesOf(shape);
        bytes += BytesOf(shape);
    }
    for (const Placement& placed : shapes.placements) {
        drawn += TrianglesOf(shapes.shapes[placed.shape]);
    }
    std::printf("%zu shapes with %zu triangles in %zu KiB\n", shapes.shapes.size(), triangles,
                bytes / 1024);
    std::printf("%zu placements draw %zu triangles\n", shapes.placements.size(), drawn);
    if (shapes.missing != 0) std::printf("%zu shapes are not in the file\n", shapes.missing);
    for (const Damage& damage : file.DamageMet())
        std::printf("left out: %s\n", damage.reason.c_str());
    return 0;
} catch (const Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return static_cast<int>(error.GetStatus());
}
