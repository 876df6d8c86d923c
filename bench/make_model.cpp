// Writes a made-up model through the model library, as `zvg pack` would lay it out: storeys of
// 2,000 elements by class, a shape for about twenty of them, a placement each, seven properties.
//   make_model N FILE [fast]
// The same numbers give the same file.

#include <algorithm>
#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "ZVSmartModel/Builder.h"

using namespace ZVSmartModel;

namespace {

constexpr std::size_t elementsPerStorey = 2000;
constexpr std::size_t elementsPerShape = 20;

class Random {
  public:
    std::uint64_t Below(std::uint64_t limit) { return engine() % limit; }
    double Metres(double limit) { return static_cast<double>(Below(1000)) * limit / 1000; }
    /// As IFC writes 128 bits.
    std::string GlobalId() {
        constexpr char digits[] =
            "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";
        std::string text(1, digits[Below(4)]);
        while (text.size() < 22) text += digits[Below(64)];
        return text;
    }

  private:
    std::mt19937_64 engine{1};
};

NewShape Box(Random& random) {
    const std::array<double, 3> size = {0.1 + random.Metres(6), 0.1 + random.Metres(0.5),
                                        0.1 + random.Metres(3)};
    Triangles surface;
    surface.look = Look{"Plaster", {200, 190, 180, 255}};
    for (unsigned corner = 0; corner < 8; ++corner) {
        surface.points.push_back(
            {corner & 1 ? size[0] : 0, corner & 2 ? size[1] : 0, corner & 4 ? size[2] : 0});
    }
    surface.triangles = {{0, 2, 1}, {1, 2, 3}, {4, 5, 6}, {5, 7, 6}, {0, 1, 4}, {1, 5, 4},
                         {2, 6, 3}, {3, 6, 7}, {0, 4, 2}, {2, 4, 6}, {1, 3, 5}, {3, 7, 5}};
    return {{surface}, {}};
}

Transform Somewhere(Random& random, double elevation) {
    const bool turned = random.Below(2) != 0;
    const double x = random.Metres(80), y = random.Metres(40);
    if (turned) return {0, -1, 0, x, 1, 0, 0, y, 0, 0, 1, elevation};
    return {1, 0, 0, x, 0, 1, 0, y, 0, 0, 1, elevation};
}

void AddStorey(Builder& builder, std::size_t storey, std::size_t count, Random& random) {
    constexpr std::array classes = {"IfcColumn", "IfcDoor", "IfcFurnishingElement",
                                    "IfcSlab",   "IfcWall", "IfcWindow"};
    const double elevation = static_cast<double>(storey) * 3.5;
    const std::size_t floor =
        builder.AddFloor({"Storey " + std::to_string(storey), elevation, 3.5});
    std::vector<std::size_t> shapes;
    for (std::size_t i = 0; i < count; ++i) {
        NewElement element;
        element.guid = random.GlobalId();
        element.className = classes[i * classes.size() / count];
        element.typeName = element.className + " type " + std::to_string(i / 50 % 8);
        element.name = element.typeName + ':' + std::to_string(300000 + random.Below(100000));
        element.floor = floor;
        if (i % elementsPerShape == 0) shapes.push_back(builder.AddShape(Box(random)));
        element.shapes.push_back(
            {shapes[random.Below(shapes.size())], Somewhere(random, elevation)});
        const auto say = [&](const char* set, const char* name, const std::string& value,
                             const char* kind = "text", const char* unit = "") {
            element.properties.push_back({set, name, value, kind, unit});
        };
        say("Quantities", "Length", std::to_string(random.Metres(9)), "length", "m");
        say("Quantities", "Width", std::to_string(random.Metres(9)), "length", "m");
        say("Pset_Common", "IsExternal", i % 3 == 0 ? "true" : "false", "boolean");
        say("Pset_Common", "FireRating", i % 5 == 0 ? "EI 60" : "EI 90");
        say("Pset_Common", "Reference", element.typeName);
        say("Phasing", "Phase Created", "New Construction");
        element.materials.push_back({i % 2 ? "Concrete" : "Brick", "", {}, {}});
        builder.AddElement(element);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    const std::size_t count = std::stoul(argv[1]);
    BuilderOptions options;
    options.fast = argc > 3;
    Builder builder(std::string(argv[2]), options);
    Random random;
    for (std::size_t begin = 0; begin < count; begin += elementsPerStorey) {
        AddStorey(builder, begin / elementsPerStorey, std::min(elementsPerStorey, count - begin),
                  random);
    }
    builder.Finish();
    return 0;
}
