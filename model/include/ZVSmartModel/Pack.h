#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "ZVSmartModel/Error.h"
#include "ZVSmartModel/Values.h"

namespace ZVSmartModel {

/// How to pack a model file.
struct PackOptions {
    std::string settingsPath;        ///< displacement settings (CompDisplacement.ini); or empty
    std::string previewPath;         ///< a PNG file to show for the block file; or empty
    bool drawPreview = true;         ///< where there is no such file and the importer can draw
    unsigned int geosPerBlock = 0;   ///< 0 chooses by the sizes of the geometries
    unsigned int formatVersion = 4;  ///< 0 to 4
    bool fast = false;               ///< compress faster and weaker
    bool seal = false;               ///< write a checksum of the file behind its end
    bool strict = false;             ///< pack nothing of a model of which something is lost
    double tolerance = 0.001;        ///< metres that lines may be off the curves they stand for

    /// That draw and compress at once, up to 64; 0 takes as many as there are processors. The file
    /// does not depend on it.
    unsigned int threads = 1;

    std::uint64_t maxMemory = 0;  ///< bytes the importer may use; 0 is half of the machine's
    double maxSeconds = 0;        ///< that importing may take in all; 0 only asks for progress
    /// The program `zvg-import`; empty takes the one that the environment's ZVG_IMPORT names, else
    /// the one that is installed with this library.
    std::string importer;

    Progress progress;  ///< may be empty
    /// Told at once what else a person should know, such as why no preview was drawn; or empty.
    std::function<void(const std::string& message)> warn;
};

/// One thing that a model's author may want to know, however often it occurs.
struct PackWarning {
    std::string kind;   ///< one word, such as "openingNotCut"
    std::string text;   ///< a sentence for people
    bool lost = false;  ///< whether something of the model did not arrive
    /// How often it occurs.
    std::size_t count = 0;
    std::vector<std::string> where;  ///< the first GlobalIds, or entity numbers as "#12"
};

/// How many elements of one type a model has, and how many became components.
struct PackTypeCount {
    std::string type;  ///< such as IfcWall
    /// Of this type.
    /// @{
    std::size_t inModel = 0, arrived = 0, withBody = 0;
    /// @}
};

/// What came of a model.
struct PackReport {
    std::string schema;                 ///< of the model, such as IFC2X3; empty before it was read
    std::vector<PackTypeCount> types;   ///< by type
    std::vector<PackWarning> warnings;  ///< in the order in which they were made
    std::string lost;  ///< the first things that did not arrive, on one line; empty where all did
    /// That were written.
    /// @{
    std::size_t floors = 0, components = 0, shapes = 0, placements = 0;
    /// @}
};

/// The formats that the importer reads, such as "IFC" and "glTF"; empty where there is no importer.
ZVSM_API std::vector<std::string> ImportFormats(const std::string& importer = "");

/// What holds the importer while it reads a stranger's file, such as "seccomp, Landlock"; "none".
ZVSM_API std::string ImportCage(const std::string& importer = "");

/// Packs a model file into a new block file. The importer runs in a process of its own, which may
/// crash or run wild without harm; it opens nothing but the model and the files in its folder that
/// the model names. The same model gives the same bytes.
///
/// `blockPath` appears whole or not at all; a file of that name is replaced. `report`, if given, is
/// filled as far as the importer came, even where the call throws. Throws Error: Usage for options
/// that no file can have; InputOutput for a model that cannot be opened or is of no known format,
/// for an importer that cannot be started, passes a limit or is killed, and for a file that cannot
/// be written; Damaged for a model that is damaged or crashes the importer, and where `strict` and
/// something is lost; Cancelled.
ZVSM_API void PackModelFile(const std::string& modelPath, const std::string& blockPath,
                            const PackOptions& options = {}, PackReport* report = nullptr);

/// The same into an open file, from its beginning on. `descriptor` is borrowed, empty, and open for
/// reading and writing; after a failure its content means nothing. `blockPath` is for messages.
ZVSM_API void PackModelFile(const std::string& modelPath, int descriptor,
                            const std::string& blockPath, const PackOptions& options = {},
                            PackReport* report = nullptr);

}  // namespace ZVSmartModel
