#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// How a surface looks.
struct Look {
    std::string name;  ///< of its style or material; may be empty
    /// Light grey where nobody says.
    Rgba colour = {0xC8, 0xC8, 0xC8, 0xFF};

    /// Whether name and colour are the same.
    /// @{
    friend bool operator==(const Look& a, const Look& b) {
        return a.name == b.name && a.colour == b.colour;
    }
    friend bool operator!=(const Look& a, const Look& b) { return !(a == b); }
    /// @}
    /// By name, then colour.
    friend bool operator<(const Look& a, const Look& b) {
        return a.name != b.name ? a.name < b.name : a.colour < b.colour;
    }
};

/// Triangles that look the same, counter-clockwise as seen from outside where the model is right.
/// All numbers are finite, all indices lead to points.
struct Triangles {
    std::optional<Look> look;   ///< none, in shapes only, takes the look of what is placed
    std::vector<Point> points;  ///< n × 3, metres
    std::vector<std::array<std::uint32_t, 3>> triangles;  ///< m × 3, indices of points
    /// n × 3, of length 1, where they were asked for; else empty.
    std::vector<std::array<float, 3>> normals;
};

/// A line beside a body: a plan symbol, an axis. Arcs and circles come as chords.
struct Polyline {
    std::string role;           ///< what it shows, such as "FootPrint" or "Axis"; may be empty
    std::vector<Point> points;  ///< metres
    bool closed = false;        ///< the last point leads back to the first
};

/// The body of an element.
struct Body {
    std::vector<Triangles> surfaces;  ///< one for each look
    /// Where they were asked for.
    std::vector<Polyline> curves;

    /// Whether there is nothing to draw.
    bool IsEmpty() const { return surfaces.empty() && curves.empty(); }
};

enum class Normals {
    None,
    Flat,    ///< of each triangle; points that triangles of other directions share are repeated
    Smooth,  ///< averaged over triangles that meet at less than the crease angle
};

/// How bodies are wanted.
struct BodyOptions {
    /// Which normals surfaces get.
    Normals normals = Normals::None;
    double creaseAngle = 0.5236;  ///< radians (30 degrees), for Normals::Smooth
    bool curves = false;          ///< the curves as well
    /// How far chords of arcs and circles may be off, in metres where the body lies, or in those of
    /// the shape for shapes. A full circle has 24 to 4096 chords.
    double chordError = 0.001;
};

/// What can be measured of a body.
struct Measures {
    Box box;              ///< around the surfaces, metres
    double area = 0;      ///< of the surfaces, square metres
    double volume = 0;    ///< cubic metres; right where `closed`
    bool closed = false;  ///< whether every edge of every surface has its other side
};

/// Measures a body by its triangles: the volume as the sum of the tetrahedra from a corner of the
/// box, so that it is right far from the origin too. For closedness, points that agree to the
/// micrometre are one. Triangles whose indices lead nowhere do not count.
ZVSM_API Measures Measure(const Body& body);

/// The body of an element, in the model's coordinates; what is placed mirrored turns round, so that
/// outside stays outside. Empty where it has none, or its names lead to no geometry in the file.
/// The file keeps a few MiB of what was read, so that asking for all elements one by one costs
/// about what reading them once does. Throws Error: NotFound for a place that is not in the file,
/// Damaged for what cannot be read, Usage for a chord error that is not above 0.
ZVSM_API Body ReadBody(const BlockFile& file, ElementIndex index, const BodyOptions& options = {});

/// A body that stands once, however often it is placed, in its own coordinates.
struct Shape {
    std::string key;  ///< the name under which the file stores it
    /// One for each look.
    std::vector<Triangles> surfaces;
    /// Where they were asked for.
    std::vector<Polyline> curves;
};

/// Where a shape stands, as a part of an element.
struct Placement {
    /// Which it is a part of.
    ElementIndex element;
    std::uint32_t shape = 0;  ///< number in Shapes::shapes
    Look look;                ///< of the shape's surfaces that have none
    /// The shape's coordinates to the model's.
    Transform toWorld = identityTransform;
};

/// What a renderer draws.
struct Shapes {
    /// Each once; some may stand nowhere.
    std::vector<Shape> shapes;
    std::vector<Placement> placements;  ///< element by element, in the file's order
    std::size_t missing = 0;            ///< names that lead to no geometry in the file
};

/// The shapes of all selected elements and their placements. Geometry that cannot be read is left
/// out and remembered by the file, which `progress` must not ask. Throws Error: Cancelled, Damaged
/// above 4,000,000 placements, Usage as above, and NotFound for a floor that is not there.
ZVSM_API Shapes ReadShapes(const BlockFile& file, const Selection& selection = {},
                           const BodyOptions& options = {}, const Progress& progress = {});

/// Whether the host has a shape already, by its key.
using KnownShape = std::function<bool(const std::string& key)>;

/// The same for a host that asks for a file part by part: of a shape of which `isKnown`, which must
/// not ask the file, says true for the key that it came with, only the key may come, without
/// surfaces and curves. It is not read again then where it was read by such a call before and
/// places no others.
ZVSM_API Shapes ReadShapes(const BlockFile& file, const Selection& selection,
                           const BodyOptions& options, const Progress& progress,
                           const KnownShape& isKnown);

}  // namespace ZVSmartModel
