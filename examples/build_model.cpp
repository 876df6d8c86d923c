// Makes a small building of two floors from nothing:  build_model house.zvg

#include <cstdio>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Builder.h"

using namespace ZVSmartModel;

/// A box with a corner at the origin; sizes in metres.
static NewShape MadeBox(double x, double y, double z, const Look& look) {
    Triangles box;
    box.look = look;
    for (int i = 0; i < 8; ++i) box.points.push_back({i & 1 ? x : 0, i & 2 ? y : 0, i & 4 ? z : 0});
    box.triangles = {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
                     {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
    return {{box}, {}};
}

static NewElement Made(const char* className, std::size_t floor, std::size_t shape, Point at) {
    NewElement element;
    element.className = className;
    element.guid = className + std::to_string(floor);
    element.floor = floor;
    element.shapes = {{shape, {1, 0, 0, at[0], 0, 1, 0, at[1], 0, 0, 1, at[2]}}};
    return element;
}

int main(int argc, char** argv) try {
    if (argc != 2) return std::fputs("usage: build_model FILE\n", stderr), 2;
    Builder builder(argv[1]);
    const auto slabShape = builder.AddShape(MadeBox(8, 5, 0.2, {"Concrete", {150, 150, 150}}));
    const auto wallShape = builder.AddShape(MadeBox(8, 0.3, 2.8, {"Brick", {170, 90, 70}}));
    const auto doorShape = builder.AddShape(MadeBox(0.9, 0.05, 2.1, {"Wood", {120, 80, 40}}));
    for (const double height : {0.0, 3.0}) {
        const auto floor = builder.AddFloor({height == 0 ? "Ground" : "Upstairs", height, 3});
        builder.AddElement(Made("IfcSlab", floor, slabShape, {0, 0, height - 0.2}));
        NewElement wall = Made("IfcWall", floor, wallShape, {0, 0, height});
        wall.properties = {{"Pset_WallCommon", "IsExternal", "true", "boolean", ""},
                           {"BaseQuantities", "Length", "8000", "length", "mm"}};
        wall.materials = {{"Plaster", "", 0.02, {}}, {"Brick", "masonry", 0.28, {}}};
        builder.AddElement(wall);
        NewElement door = Made("IfcDoor", floor, doorShape, {2, 0.1, height});
        door.parents = {wall.guid};
        builder.AddElement(door);
    }
    builder.Finish();

    for (const Floor& floor : BlockFile(argv[1]).Floors()) {
        std::printf("%s, %g m: %u elements\n", floor.name.c_str(), floor.elevation, floor.elements);
    }
} catch (const Error& error) {
    return std::fprintf(stderr, "%s\n", error.what()), 1;
}
