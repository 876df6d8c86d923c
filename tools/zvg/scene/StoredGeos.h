#pragma once

#include <string>

#include "ZVSmartZvg/Geo.h"
#include "tools/zvg/reading/OpenedBlock.h"

/// Geometries by their identification, where those that the file does not hold and those that
/// cannot be read are told apart: names may be the host's own, and lead nowhere rightly.
class StoredGeos {
  public:
    /// `block` is borrowed.
    explicit StoredGeos(OpenedBlock& block) : block(block) {}

    /// Reads into `geo`, which is fresh. False where the file holds no such geometry. Throws
    /// ToolError Damaged where it holds one that cannot be read.
    bool Read(const std::wstring& identification, ZVSmartZvg::SZVLGZvgGeo& geo);

  private:
    OpenedBlock& block;
};
