#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "ZVSmartModel/Body.h"
#include "web/native/Answer.h"
#include "web/native/CallRequest.h"

namespace ZVSmartModel::Web {

/// What of a file is to be drawn, floor by floor, or in parts of floors where the request asks for
/// them. Each shape and each look is answered once, with the first part that it stands in, and
/// known by its number from then on.
///
/// An answer is a u32, the length of a JSON text; the text, filled up with blanks to a multiple of
/// 8 bytes with that length; and arrays, each filled up to a multiple of 8 bytes:
///   placements: f64 × 12 each (rows), then u32 each: element's position, shape, look
///   each surface of each shape: points (f32 or f64) × 3, normals f32 × 3, indices u32 × 3
///   each curve of each shape: points (f32 or f64) × 3
/// The text tells the counts; looks and shapes have the numbers that follow those answered before.
/// Points in 32 bits are taken from the shape's `origin`, which the placements make up for, so that
/// what lies far off keeps its form.
class SceneWalk {
  public:
    explicit SceneWalk(Request request) : request(std::move(request)) {}

    /// Whether no floor is left.
    bool IsDone(const BlockFile& file) const { return NextFloor(file) == ElementIndex::none; }
    /// What stands on the next floor or part of it. The walk stays where it is, for it may have to
    /// be asked again.
    Shapes Read(const BlockFile& file);
    /// Goes on behind what was read last, and answers what of it was not answered before.
    void Take(const BlockFile& file, Shapes read, Answer& answer);

  private:
    struct Chunk;

    unsigned int NextFloor(const BlockFile& file) const;
    unsigned int PartEnd(const BlockFile& file) const;
    std::uint32_t NumberOf(const Look& look, Chunk& chunk);
    std::uint32_t NumberOf(Shape& shape, Chunk& chunk);
    Point OriginOf(std::uint32_t shape) const;
    void Tell(const Shape& shape, Chunk& chunk);
    void PutArrays(const Shape& shape, const Point& origin, Answer& answer) const;
    void PutPoints(const std::vector<Point>& points, const Point& origin, Answer& answer) const;

    Request request;
    unsigned int floor = 0;     ///< the first that was not answered
    unsigned int position = 0;  ///< on it, the first that was not answered
    unsigned int end = 0;       ///< of the part that was read last; see PartEnd
    std::map<Look, std::uint32_t> looks;
    std::unordered_map<std::string, std::uint32_t> shapes;  ///< by key
    std::unordered_map<std::uint32_t, Point> origins;  ///< of shapes that have one of their own
};

}  // namespace ZVSmartModel::Web
