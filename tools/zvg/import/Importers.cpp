#include "tools/zvg/import/Importers.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#ifdef ZVG_HAVE_IFC
#include "tools/zvg/import/IfcImporter.h"
#endif
#ifdef ZVG_HAVE_ASSIMP
#include "tools/zvg/import/MeshImporter.h"
#endif

namespace {

enum class Format { Empty, Unknown, Ifc, IfcZip, IfcXml, Mesh };

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::unique_ptr<std::FILE, CloseFile> Opened(const char* path) {
    std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path, "rb"));
    if (!file) throw ImportError(std::strerror(errno));
    return file;
}

std::string FirstBytes(const char* path) {
    std::string bytes(1024, '\0');
    const auto file = Opened(path);
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (std::ferror(file.get())) throw ImportError(std::strerror(errno));
    return bytes;
}

bool HasExtension(std::string_view path, std::initializer_list<std::string_view> extensions) {
    return std::any_of(extensions.begin(), extensions.end(), [&](std::string_view extension) {
        if (path.size() < extension.size()) return false;
        const std::string_view end = path.substr(path.size() - extension.size());
        return std::equal(end.begin(), end.end(), extension.begin(),
                          [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
    });
}

Format FormatOf(const char* path) {
    const std::string bytes = FirstBytes(path);
    if (bytes.empty()) return Format::Empty;
    const bool xml = bytes.find("<?xml") != std::string::npos;
    if (bytes.find("ISO-10303-21") != std::string::npos) return Format::Ifc;
    if (bytes.starts_with("PK\x03\x04") && HasExtension(path, {".ifczip", ".zip"})) {
        return Format::IfcZip;
    }
    if (HasExtension(path, {".ifcxml"}) || (xml && bytes.find("<ifc") != std::string::npos)) {
        return Format::IfcXml;
    }
    if (HasExtension(path, {".glb", ".gltf", ".obj", ".stl", ".ply", ".fbx", ".dae"})) {
        return Format::Mesh;
    }
    return Format::Unknown;
}

#ifdef ZVG_HAVE_IFC
std::string AllBytes(const char* path) {
    const auto file = Opened(path);
    std::string bytes;
    std::string piece(1 << 16, '\0');
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), file.get())) {
        bytes.append(piece, 0, count);
    }
    if (std::ferror(file.get())) throw ImportError(std::strerror(errno));
    return bytes;
}

Model ReadIfc(const char* path, const ImportReport& report) {
    return ImportIfc(AllBytes(path), report);
}
#else
Model ReadIfc(const char*, const ImportReport&) {
    throw ImportError("this build has no IFC importer (it needs libifcplusplus)");
}
#endif

#ifdef ZVG_HAVE_ASSIMP
Model ReadMesh(const char* path, const ImportReport& report) {
    return ImportMesh(path, report);
}
#else
Model ReadMesh(const char*, const ImportReport&) {
    throw ImportError("this build has no importer for meshes (it needs assimp)");
}
#endif

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

namespace {

/// What a user may try instead.
std::string Readable() {
    std::string text;
    for (const std::string& name : ImporterNames()) text += (text.empty() ? " " : ", ") + name;
    return text.empty() ? "; this build reads none" : "; these are read:" + text;
}

}  // namespace

Model ImportModel(const char* path, const ImportReport& report) {
    switch (FormatOf(path)) {
        case Format::Ifc:
            return ReadIfc(path, report);
        case Format::IfcZip:
            throw ImportError("ifcZIP is not supported: unpack the file first");
        case Format::IfcXml:
            throw ImportError("ifcXML is not supported: save the model as IFC (STEP) first");
        case Format::Mesh:
            return ReadMesh(path, report);
        case Format::Empty:
            throw ImportError("the file is empty" + Readable());
        case Format::Unknown:
            break;
    }
    throw ImportError("not a known model format" + Readable());
}
