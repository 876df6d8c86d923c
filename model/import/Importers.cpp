#include "model/import/Importers.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "model/element/FileName.h"
#include "model/import/UnusableGeometry.h"
#include "model/import/ifc/StepCycles.h"

#ifdef ZVG_HAVE_IFC
#include "model/import/ifc/IfcImporter.h"
#include "model/import/ifc/IfcZip.h"
#endif
#ifdef ZVG_HAVE_ASSIMP
#include "model/import/mesh/MeshImporter.h"
#endif

namespace ZVSmartModel {

namespace {

enum class Format { Empty, Unknown, Ifc, IfcZip, IfcXml, Mesh };

Format FormatOf(const ModelFile& file, std::string_view path) {
    constexpr std::string_view meshes[] = {"glb", "gltf", "obj", "stl", "ply", "fbx", "dae"};
    const std::string extension = ExtensionOf(path);
    constexpr std::uint64_t headBytes = 1024;
    const std::string bytes = file.Bytes(0, headBytes);
    if (bytes.empty()) return Format::Empty;
    const bool xml = bytes.find("<?xml") != std::string::npos;
    if (bytes.find("ISO-10303-21") != std::string::npos) return Format::Ifc;
    if (bytes.starts_with("PK\x03\x04") && (extension == "ifczip" || extension == "zip")) {
        return Format::IfcZip;
    }
    if (extension == "ifcxml" || (xml && bytes.find("<ifc") != std::string::npos)) {
        return Format::IfcXml;
    }
    const bool isMesh = std::ranges::find(meshes, extension) != std::end(meshes);
    return isMesh ? Format::Mesh : Format::Unknown;
}

#ifdef ZVG_HAVE_IFC
Model ReadIfc(const ModelFile& file, const ImportOptions& options, const ImportReport& report) {
    std::string bytes = file.Bytes(0, file.Size());
    CutStepCycles(bytes, report);
    return ImportIfc(std::move(bytes), options, report);
}

Model ReadZippedIfc(const ModelFile& file, const ImportOptions& options,
                    const ImportReport& report) {
    std::string bytes = UnpackedIfc(file.Bytes(0, file.Size()));
    CutStepCycles(bytes, report);
    return ImportIfc(std::move(bytes), options, report);
}
#else
Model ReadZippedIfc(const ModelFile&, const ImportOptions&, const ImportReport&) {
    throw ImportError("this build has no IFC importer (it needs libifcplusplus)");
}

Model ReadIfc(const ModelFile&, const ImportOptions&, const ImportReport&) {
    throw ImportError("this build has no IFC importer (it needs libifcplusplus)");
}
#endif

#ifdef ZVG_HAVE_ASSIMP
Model ReadMesh(const std::string& name, const OpenModelFile& open, const ImportReport& report) {
    return ImportMesh(name, open, report);
}
#else
Model ReadMesh(const std::string&, const OpenModelFile&, const ImportReport&) {
    throw ImportError("this build has no importer for meshes (it needs assimp)");
}
#endif

/// What a user may try instead.
std::string Readable() {
    std::string text;
    for (const std::string& name : ImporterNames()) text += (text.empty() ? " " : ", ") + name;
    return text.empty() ? "; this build reads none" : "; these are read:" + text;
}

Model Read(const std::string& path, const OpenModelFile& open, const ImportOptions& options,
           const ImportReport& report) {
    const std::optional<ModelFile> file = open("");
    if (!file) throw ImportError("it is gone");
    switch (FormatOf(*file, path)) {
        case Format::Ifc:
            return ReadIfc(*file, options, report);
        case Format::IfcZip:
            return ReadZippedIfc(*file, options, report);
        case Format::IfcXml:
            throw ImportError("ifcXML is not supported: save the model as IFC (STEP) first");
        case Format::Mesh:
            return ReadMesh(path.substr(path.rfind('/') + 1), open, report);
        case Format::Empty:
            throw ImportError("the file is empty" + Readable());
        case Format::Unknown:
            break;
    }
    throw ImportError("not a known model format" + Readable());
}

}  // namespace

std::vector<std::string> ImporterNames() {
    std::vector<std::string> names;
#ifdef ZVG_HAVE_IFC
    names.insert(names.end(), {"IFC"});
#endif
#ifdef ZVG_HAVE_ASSIMP
    names.insert(names.end(), {"glTF", "OBJ", "STL", "PLY", "FBX", "Collada"});
#endif
    return names;
}

Model ImportModel(const std::string& path, const OpenModelFile& open, const ImportOptions& options,
                  const ImportReport& report) {
    Model model = Read(path, open, options, report);
    LeaveOutUnusable(model, report);
    const bool nothing =
        std::all_of(model.elements.begin(), model.elements.end(),
                    [](const ModelElement& element) { return element.entityType == L"Node"; });
    if (nothing) throw ImportError("nothing in it can be packed");
    return model;
}

}  // namespace ZVSmartModel
