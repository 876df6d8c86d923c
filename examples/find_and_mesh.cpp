// Finds an element by its GUID and asks what it is: its class, its body's triangles and volume,
// and one of its properties.

#include <cstdio>
#include <string>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"

using namespace ZVSmartModel;

namespace {

void PrintBody(const Body& body) {
    std::size_t triangles = 0;
    for (const Triangles& surface : body.surfaces) triangles += surface.triangles.size();
    const Measures measures = Measure(body);
    std::printf("%zu triangles, %.3f m2, %s%.3f m3\n", triangles, measures.area,
                measures.closed ? "" : "not closed, about ", measures.volume);
    const Point &low = measures.box.low, &high = measures.box.high;
    std::printf("from (%.2f, %.2f, %.2f) to (%.2f, %.2f, %.2f)\n", low[0], low[1], low[2], high[0],
                high[1], high[2]);
}

void PrintProperty(const Element& element, const std::string& set, const std::string& name) {
    const Property* property = element.Find(set, name);
    if (property == nullptr) return;
    std::printf("%s: %s %s (%s)\n", property->FullName().c_str(), property->value.c_str(),
                property->unit.c_str(), property->kind.c_str());
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 5) return std::fputs("find_and_mesh FILE GUID SET PROPERTY\n", stderr), 2;
    const BlockFile file{std::string(argv[1])};
    const std::optional<ElementIndex> index = file.FindGuid(argv[2]);
    if (!index) return std::printf("no element %s\n", argv[2]), 5;
    const Element element = file.Read(*index);
    std::printf("%s, %s on %s\n", element.name.c_str(), element.className.c_str(),
                element.floorName.c_str());
    PrintBody(ReadBody(file, *index));
    PrintProperty(element, argv[3], argv[4]);
    return 0;
} catch (const Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return static_cast<int>(error.GetStatus());
}
