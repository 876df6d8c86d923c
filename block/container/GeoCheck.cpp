#include "container/GeoCheck.h"

#include <algorithm>

namespace ZVSmartZvg {

namespace {

/// Faces whose count passes the list's end, or with an index outside the points. Numbers are
/// unsigned in the file.
std::size_t BadFaces(const std::vector<int>& faces, std::size_t pointCount) {
    const auto isOutside = [pointCount](int index) {
        return static_cast<u32>(index) >= pointCount;
    };
    std::size_t badFaces = 0;
    for (std::size_t i = 0; i < faces.size();) {
        const u32 count = static_cast<u32>(faces[i++]);
        if (count > faces.size() - i) return badFaces + 1;
        const auto face = faces.begin() + static_cast<std::ptrdiff_t>(i);
        if (std::any_of(face, face + count, isOutside)) ++badFaces;
        i += count;
    }
    return badFaces;
}

std::size_t BadFaces(const SZVLGZvgGeo& geo) {
    std::size_t badFaces = 0;
    const auto check = [&](const std::vector<int>& faces, std::size_t pointCount) {
        badFaces += BadFaces(faces, pointCount);
    };
    for (const CZVIMShell& shell : geo.shells)
        check(shell.GetFacesIndex(), shell.GetPoints().size());
    for (const CZVIMVisualShell& visual : geo.visualShells)
        check(visual.shell.GetFacesIndex(), visual.shell.GetPoints().size());
    for (const CZVIMVisualPolyFaceMesh& mesh : geo.polyFaceMeshes)
        check(mesh.facesIndex, mesh.points.size());
    return badFaces;
}

}  // namespace

std::string FaultOf(const SZVLGZvgGeo& root) {
    std::size_t badFaces = 0;
    std::string badImage;
    std::vector<const SZVLGZvgGeo*> pending = {&root};
    while (!pending.empty()) {
        const SZVLGZvgGeo& geo = *pending.back();
        pending.pop_back();
        badFaces += BadFaces(geo);
        for (const SZVLGZvgGeoImage& image : geo.images)
            if (u64{image.width} * image.height != image.PixelBytes() / 4 && badImage.empty())
                badImage = "an image of " + std::to_string(image.width) + " x " +
                           std::to_string(image.height) + " has only " +
                           std::to_string(image.PixelBytes()) + " bytes of pixels";
        for (const SZVLGZvgSubGeo& sub : geo.subGeos) pending.push_back(&sub.geo);
    }
    if (badFaces == 0) return badImage;
    return std::to_string(badFaces) + (badFaces == 1 ? " face names" : " faces name") +
           " points that are not there" + (badImage.empty() ? "" : "; " + badImage);
}

}  // namespace ZVSmartZvg
