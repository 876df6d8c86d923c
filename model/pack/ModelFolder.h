#pragma once

#include <string>

#include "model/element/OwnedDescriptor.h"

namespace ZVSmartModel {

/// The files that belong to a model: itself, and the regular files in or below the folder that
/// its path names. Links are followed first, so one that leads elsewhere does not help; only the
/// model itself, which the user named, may be such a link.
class ModelFolder {
  public:
    /// Throws Error InputOutput where there is no such file, or it is none to read.
    explicit ModelFolder(const std::string& modelPath);

    unsigned long long ModelBytes() const { return modelBytes; }

    /// Opens a file for reading by the name that the model gives, from the folder; the model itself
    /// where the name is empty. Nothing is open where there is no such file. Throws Error
    /// InputOutput, with the name in the message, where it is not the model's, or cannot be read.
    /// Whatever is not a regular file is not even opened.
    OwnedDescriptor Open(const std::string& name) const;

  private:
    std::string modelPath;
    std::string folderPath;  ///< without links; ends in a slash
    OwnedDescriptor folder;
    unsigned long long modelBytes = 0;
};

}  // namespace ZVSmartModel
