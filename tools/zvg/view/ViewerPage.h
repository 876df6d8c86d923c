#pragma once

#include <string>

#include "ZVSmartFormat/Stream.h"

namespace ZVSmartModel::Tool {

/// The page that shows block files in a browser, in two halves: what it shows stands between.
class ViewerPage {
  public:
    /// Reads the page: that which the environment's ZVG_VIEWER names, else the one that is
    /// installed beside the tool, else the one that the build was told of. Throws Error: Usage
    /// where there is none, InputOutput where it cannot be read or has no single line
    /// `<!-- zvg:files -->`.
    ViewerPage();

    const std::string& Head() const { return head; }
    const std::string& Tail() const { return tail; }

  private:
    std::string head, tail;
};

/// Writes an element that holds a file, for the place between the page's halves; `name` is what
/// people call it. Neither name nor bytes can be anything but data there. Throws Error
/// InputOutput where `out` does not take it, and where `file` does not give all its bytes.
void WriteFileElement(const std::string& name, ZVSmartFormat::CZVFTInStream& file,
                      ZVSmartFormat::CZVFTOutStream& out);

}  // namespace ZVSmartModel::Tool
