// The importers' own code on any bytes: STEP text, its cycles, the store of shapes, the messages
// of a child, the names of files that it asks for, and the JSON of glTF. The first byte chooses.

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "ZVSmartModel/Error.h"
#include "model/import/ModelFile.h"
#include "model/import/ShapeStore.h"
#include "model/import/UnusableGeometry.h"
#include "model/import/ifc/StepCycles.h"
#include "model/import/ifc/StepText.h"
#include "model/import/mesh/GltfDocument.h"
#include "model/import/mesh/MeshNodes.h"
#include "model/pack/ChildMessages.h"
#include "model/pack/ModelFolder.h"

using namespace ZVSmartModel;

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

/// What the text promises: plain ASCII, in which no string has what a reader trips over.
void FuzzStepText(std::string_view bytes) {
    const StepText step = PrepareStepText(bytes);
    for (const char c : step.schema) Require(c != '\'');
    FinishStepString(std::wstring(bytes.begin(), bytes.end()));
}

/// After the cuts no cycle is left, and nothing else has moved.
void FuzzCycles(std::string_view bytes) {
    std::string text(bytes);
    std::size_t cuts = 0;
    const ImportReport report = {[&](const std::string&) { ++cuts; }, [](double) {}};
    CutStepCycles(text, report);
    Require(text.size() == bytes.size());
    Require(cuts != 0 || text == bytes);
    std::string again = text;
    cuts = 0;
    CutStepCycles(again, report);
    Require(cuts == 0 && again == text);
}

/// Reads numbers of any kind, none of them missing: zeros follow the bytes.
class Numbers {
  public:
    explicit Numbers(std::string_view bytes) : bytes(bytes) {}
    template <typename Number>
    Number Next() {
        Number number = {};
        const std::size_t count = std::min(sizeof number, bytes.size());
        std::memcpy(&number, bytes.data(), count);
        bytes.remove_prefix(count);
        return number;
    }
    /// Small ones often, so that points coincide.
    double Coordinate() {
        const auto kind = Next<std::uint8_t>();
        return kind < 200 ? kind % 4 : Next<double>();
    }
    ModelPoint Point() { return {Coordinate(), Coordinate(), Coordinate()}; }
    bool AtEnd() const { return bytes.empty(); }

  private:
    std::string_view bytes;
};

ModelShape ShapeOf(Numbers& numbers) {
    ModelShape shape;
    ModelShell shell;
    for (int i = numbers.Next<std::uint8_t>() % 8; i-- > 0;)
        shell.points.push_back(numbers.Point());
    for (int i = numbers.Next<std::uint8_t>() % 8; i-- > 0 && !shell.points.empty();) {
        const auto corner = [&] {
            return static_cast<std::uint32_t>(numbers.Next<std::uint8_t>() % shell.points.size());
        };
        shell.triangles.push_back({corner(), corner(), corner()});
    }
    shape.parts.push_back({MakeColour(numbers.Next<double>(), 0, 0, 1), L"", {shell}});
    ModelCurves curves;
    curves.circles.push_back({numbers.Point(), numbers.Point(), numbers.Coordinate()});
    curves.arcs.push_back(
        {numbers.Point(), numbers.Point(), numbers.Point(), numbers.Point(), numbers.Coordinate()});
    curves.polylines.push_back({{numbers.Point(), numbers.Point()}, numbers.Coordinate() > 1});
    shape.curves.push_back(curves);
    return shape;
}

/// What is left has a place in space, whatever went in, and lies where it is looked for.
void FuzzShapes(std::string_view bytes) {
    Numbers numbers(bytes);
    ShapeStore store;
    Model model;
    while (!numbers.AtEnd()) {
        ModelElement element;
        element.entityType = numbers.Next<std::uint8_t>() % 2 == 0 ? L"Mesh" : L"IfcWall";
        const ModelShape shape = ShapeOf(numbers);
        const auto first = store.Add(shape);
        Require(store.Add(shape) == first);
        if (first) element.shapes.push_back({*first, identityTransform});
        if (first) element.shapes.back().placement[3] = numbers.Coordinate();
        model.elements.push_back(element);
    }
    model.shapes = store.Take();
    LeaveOutUnusable(model, {[](const std::string&) {}, [](double) {}});
    for (const ModelElement& element : model.elements) {
        for (const PlacedShape& placed : element.shapes)
            Require(placed.shape < model.shapes.size());
    }
    for (const ModelShape& shape : model.shapes) {
        Require(!shape.parts.empty() || !shape.curves.empty());
        for (const ShapePart& part : shape.parts) {
            for (const ModelPoint& point : part.shells.at(0).points) {
                Require(IsCoordinate(point.x) && IsCoordinate(point.y) && IsCoordinate(point.z));
            }
        }
        for (const ModelCurves& curves : shape.curves) Require(UnusableCurves(curves) == 0);
    }
}

/// In pieces as at once.
void FuzzMessages(std::string_view bytes) {
    const auto heard = [&](std::size_t piece) {
        MessageReader reader;
        std::string lines;
        for (std::size_t at = 0; at < bytes.size(); at += piece) {
            reader.Take(bytes.substr(at, piece), [&](ChildMessage kind, const std::string& text) {
                Require(text.size() < MessageReader::longestLine);
                lines += MessageLine(kind, text);
            });
        }
        return lines;
    };
    Require(heard(1) == heard(bytes.size() + 1));
}

/// Whatever the file, its nodes stand behind their parents and show what is there.
void FuzzGltf(std::string_view bytes) {
    OwnedDescriptor file(memfd_create("gltf", MFD_CLOEXEC));
    Require(write(file.Number(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    try {
        ImportFindings findings;
        auto document = ReadGltf(ModelFile(std::move(file)), findings);
        if (!document) return;
        for (std::size_t i = 0; i < document->nodes.size(); ++i) {
            const MeshNode& node = document->nodes[i];
            Require(node.parent.value_or(0) < i || !node.parent);
            for (const unsigned int mesh : node.meshes) {
                Require(mesh < document->materialOfMesh.size());
            }
        }
        Model model;
        AddElements(
            std::move(document->nodes), identityTransform,
            [](const auto&) { return MeshContent{}; }, model);
    } catch (const ImportError&) {  // damaged
    }
}

/// A model beside files of its own, a pipe, and links that lead out; gone with this object.
class Fixture {
  public:
    Fixture() {
        Require(mkdtemp(folder.data()) != nullptr);
        std::filesystem::create_directories(folder + "/m/d");
        for (const char* file : {"/m/a", "/m/b", "/m/d/c", "/out"}) {
            std::ofstream(folder + file) << file;
        }
        Require(mkfifo((folder + "/m/p").c_str(), 0600) == 0);
        std::filesystem::create_symlink("../out", folder + "/m/l");
        std::filesystem::create_symlink("/", folder + "/m/r");
    }
    ~Fixture() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    Fixture(const Fixture&) = delete;
    Fixture& operator=(const Fixture&) = delete;

    std::string Model() const { return folder + "/m/a"; }

  private:
    std::string folder = "/tmp/fuzz_import-XXXXXX";
};

/// Whatever the name, what opens is one of the model's files.
void FuzzNames(std::string_view bytes) {
    static const Fixture fixture;
    static const ModelFolder folder(fixture.Model());
    try {
        OwnedDescriptor file = folder.Open(std::string(bytes));
        if (file.IsOpen()) Require(ModelFile(std::move(file)).Bytes(0, 3) == "/m/");
    } catch (const ZVSmartModel::Error&) {  // not the model's
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    constexpr std::array parts = {FuzzStepText, FuzzCycles, FuzzShapes,
                                  FuzzMessages, FuzzNames,  FuzzGltf};
    parts[data[0] % parts.size()](bytes);
    return 0;
}
