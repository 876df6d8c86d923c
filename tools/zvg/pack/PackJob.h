#pragma once

#include <string>
#include <vector>

/// What a child process is to do: import a model and write it, as a block file, to the file that
/// its parent opened.
struct PackJob {
    std::string modelPath;
    std::string outputPath;    ///< for messages only
    std::string settingsPath;  ///< displacement settings; empty for none
    std::string previewPath;   ///< a PNG file; empty for none
    bool drawPreview = true;   ///< where there is no such file and this build can draw
    unsigned int geosPerBlock = 0;
    unsigned int formatVersion = 4;
    bool fast = false;
    bool seal = false;     ///< write a checksum of the whole file behind its end
    bool strict = false;   ///< pack nothing of a model of which something is lost
    double tolerance = 1;  ///< millimetres that lines may be off curves of the model
};

/// The words that the child is given. It opens what is named here besides the model, enters its
/// cage, and then begins to read. The child does it in RunChildIfAsked, and tells its parent
/// what was packed, or why that failed.
std::vector<std::string> PackJobArguments(const PackJob& job);
