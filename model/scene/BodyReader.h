#pragma once

#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "ZVSmartZvg/Comp.h"
#include "model/element/OpenedBlock.h"
#include "model/scene/StoredGeos.h"
#include "model/scene/StoredShapes.h"

namespace ZVSmartModel {

/// Reads the bodies of a file's elements, one by one. Keeps where the file's geometries are, and
/// those used lately, so that asking for all costs about what reading them once does.
class BodyReader {
  public:
    /// `block` is borrowed.
    explicit BodyReader(OpenedBlock& block)
        : block(block), geos(block), shapes(block, geos, {true}) {}

    /// See ReadBody.
    Body Read(ElementIndex index, const BodyOptions& options);

    StoredGeos& Geos() { return geos; }

    /// The reader of a file, made when first asked for. Only while asking `imp`.
    static BodyReader& Of(BlockFile::Imp& imp, OpenedBlock& block);

    /// Throws Error Usage for options that say nothing.
    static void Check(const BodyOptions& options);

  private:
    OpenedBlock& block;
    StoredGeos geos;
    StoredShapes shapes;
    ZVSmartZvg::SZVLGZvgComp comp;  ///< the last; one record for all is faster
};

}  // namespace ZVSmartModel
