#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <initializer_list>

#include "ZVSmartModel/Exports.h"
#include "model/element/FileName.h"
#include "model/element/FileSink.h"
#include "model/element/NewFile.h"

namespace ZVSmartModel {

namespace {

/// A file that is filled before it gets its name.
class Target {
  public:
    explicit Target(const std::string& path)
        : path(path), file(path), sink(dup(file.Descriptor())) {}

    FileSink& Sink() { return sink; }

    /// Throws Error InputOutput for what the sink kept to itself.
    void Close() {
        if (sink.Close()) return;
        throw Error(Status::InputOutput, path + ": " + std::strerror(sink.Failure()), path);
    }
    void Commit() { file.Commit(); }

  private:
    std::string path;
    NewFile file;
    FileSink sink;
};

/// Has `write()` write to the targets, and names them in this order.
template <class Write>
ExportSummary Fill(Write write, std::initializer_list<Target*> targets) {
    ExportSummary summary = write();
    for (Target* const target : targets) target->Close();
    for (Target* const target : targets) target->Commit();
    return summary;
}

}  // namespace

ExportSummary ExportFile(const BlockFile& file, const std::string& path,
                         const ExportOptions& options, const Progress& progress) {
    namespace fs = std::filesystem;
    const std::string extension = ExtensionOf(path);
    if (extension == "glb") {
        Target glb(path);
        return Fill([&] { return WriteGlb(file, glb.Sink(), options, progress); }, {&glb});
    }
    if (extension != "obj") {
        throw Error(Status::Usage, path + ": the name must end in .glb or .obj", path);
    }
    const fs::path materials = fs::path(path).replace_extension(".mtl");
    Target mtl(materials.string());
    Target obj(path);
    return Fill(
        [&] {
            return WriteObj(file, obj.Sink(), mtl.Sink(), materials.filename().string(), options,
                            progress);
        },
        {&mtl, &obj});
}

}  // namespace ZVSmartModel
