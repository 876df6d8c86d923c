#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ZVSmartModel {

/// What the importer is to do: read a model and write it, as a block file, to the file that its
/// parent opened. It opens what is named here besides the model, enters its cage, and then begins
/// to read.
struct PackJob {
    std::string modelPath;
    std::string outputPath;    ///< for messages only
    std::string settingsPath;  ///< displacement settings; empty for none
    std::string previewPath;   ///< a PNG file; empty for none
    bool drawPreview = true;   ///< where there is no such file and the importer can draw
    unsigned int geosPerBlock = 0;
    unsigned int formatVersion = 4;
    bool fast = false;
    bool seal = false;         ///< write a checksum of the whole file behind its end
    bool strict = false;       ///< pack nothing of a model of which something is lost
    double tolerance = 0.001;  ///< metres that lines may be off curves of the model
    unsigned int threads = 1;  ///< that draw and compress
};

/// The job as words on a command line.
std::vector<std::string> WordsOf(const PackJob& job);

/// The job that the words tell; none where they tell no job.
std::optional<PackJob> JobOf(const std::vector<std::string_view>& words);

/// The word that asks an importer what it can do instead.
constexpr std::string_view aboutWord = "about";

}  // namespace ZVSmartModel
