#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "model/element/Budget.h"
#include "model/element/OpenedBlock.h"
#include "model/scene/StoredShape.h"

namespace ZVSmartModel {

/// The shapes of the geometry blocks that a walk comes to next, made by the threads that decode
/// these. What cannot be made there is not: whoever wants it reads it himself and is told why.
///
/// The shapes of one block take up to 64 MiB, more are not made; nor are more than 64 MiB kept for
/// the walk: blocks that it may have left behind go first.
class ShapesAhead {
  public:
    /// `block`, and what `wants` borrows, must outlive the walk.
    ShapesAhead(OpenedBlock& block, const ShapeWants& wants) : block(block), wants(wants) {}

    /// What a FileWalk is given, which ends before this object does. Charges nothing.
    GeoBlockUse Use();

    /// Hands over, once, the shape at `place` and charges what it took; none where it is not
    /// made. Waits for threads that are at its block.
    std::optional<StoredShape> Take(std::uint64_t place);

  private:
    struct MadeShape {
        StoredShape shape;
        std::uint64_t work = 0, memory = 0;  ///< that were charged apart
    };
    struct MadeBlock {
        std::unordered_map<std::uint32_t, MadeShape> shapes;  ///< by number in the block
        std::uint64_t bytes = 0;
        std::uint64_t steps = 0;  ///< of processor time that making them took
    };

    void Make(std::uint32_t number, std::uint32_t geoNum,
              const ZVSmartZvg::CZVLGBlockReader::ReadGeoOfBlock& read, Budget limits);
    void Keep(std::uint32_t number, MadeBlock made);
    std::optional<MadeShape> TakeMade(std::uint32_t number, std::uint32_t inBlock);
    std::uint64_t TakeSteps(std::uint32_t number);

    OpenedBlock& block;
    const ShapeWants wants;
    std::optional<std::uint32_t> reached;  ///< the block that was asked for last
    std::mutex mutex;                      ///< of what follows
    std::map<std::uint32_t, MadeBlock> blocks;
    std::uint64_t keptBytes = 0;
};

}  // namespace ZVSmartModel
