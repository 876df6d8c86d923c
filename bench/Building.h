#pragma once

#include <cstdint>
#include <string>

#include "ZVSmartZvg/Comp.h"

namespace bench {

using ZVSmartZvg::SZVLGZvgComp;
using ZVSmartZvg::SZVLGZvgGeo;
using ZVSmartZvg::u32;
using ZVSmartZvg::u64;

/// A made-up building of walls, slabs, windows and pipes, the same for every run: each component
/// and each shape is drawn from a fixed seed and its own number, so that any of them can be had
/// without the others.
///
/// Floors of 1,000 components; 12 properties each; one shape for every ten components of a floor.
/// Shapes are render meshes in world position, in millimetres, welded and split by turns.
class Building {
  public:
    static constexpr u32 componentsPerFloor = 1000;
    static constexpr u32 shapesPerFloor = 100;

    explicit Building(u32 componentCount) : componentCount(componentCount) {}

    u32 ComponentCount() const { return componentCount; }
    u32 ShapeCount() const;

    /// Component `i`; it refers to its shape and does not bring it.
    SZVLGZvgComp Component(u32 i) const;
    /// The shape of component `i`.
    u32 ShapeOf(u32 i) const;

    /// The identification of shape `shape`: 32 hexadecimal digits, as of a hash of its content.
    static std::wstring ShapeKey(u32 shape);
    static SZVLGZvgGeo Shape(u32 shape);
    /// A small box somewhere in the building: eight points.
    static SZVLGZvgGeo Pin(u32 number);
    /// A welded mesh of `pointCount` points (a square number) in a grid, with a normal each and two
    /// triangles per cell.
    static SZVLGZvgGeo Terrain(u32 pointCount);

  private:
    u32 componentCount;
};

}  // namespace bench
