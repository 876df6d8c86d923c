// Writes the seeds that every fuzzer starts from into the folders below the one that is named.

#include <filesystem>
#include <fstream>
#include <string_view>

#include "support.h"

namespace {

using namespace support;

void WriteSeed(const std::filesystem::path& path, const Bytes& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

/// The first byte chooses what `fuzz_import` does with the text.
void WriteImportSeeds(const std::filesystem::path& folder) {
    const struct {
        const char* name;
        char part;
        std::string_view text;
    } seeds[] = {
        {"step-text", 0,
         "FILE_SCHEMA(('IFC4X3'));ENDSEC;DATA;#1=IFCLABEL('it''s\\X2\\00E9\\X0\\ (\xC3\xA9)');"
         "/* ' */#2=A(#1,\\S\\a);ENDSEC;"},
        {"step-apostrophe", 0, "FILE_SCHEMA(('IFC\\S\\'));FILE_SCHEMA(('\\S\\''X'"},
        {"step-cycle", 1, "DATA;#1=A(#2,'#3');#2=B((#3,#1));#3=C(#3,#9);ENDSEC;"},
        {"shapes", 2,
         std::string_view("\1\3\0\0\0\1\0\0\0\1\0\2\0\1\2\0\0\0\377\0\0\0\0\0\0\360\177", 27)},
        {"messages", 3, "P12\nWa warning\n\nOred.mtl\nRdone\nFcut"},
        {"names", 4, "d/../l"},
        {"names-link", 4, "r/etc/passwd"},
        {"gltf", 5,
         R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[1]}],"accessors":[{"type":"VEC3",)"
         R"("componentType":5126}],"meshes":[{"primitives":[{"attributes":{"POSITION":0}}]}],)"
         R"("nodes":[{"mesh":0,"rotation":[0,0,0,1]},{"children":[0],"extras":{"globalId":"g",)"
         R"("classification":{},"properties":{"a":{"value":"1","kind":"length","unit":"m"}}}}]})"},
    };
    for (const auto& [name, part, text] : seeds) {
        Bytes bytes;
        bytes.push_back(static_cast<u8>(part));
        for (const char c : text) bytes.push_back(static_cast<u8>(c));
        WriteSeed(folder / name, bytes);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::filesystem::path folder = argv[1];
    for (unsigned int version = 0; version <= 4; ++version) {
        const std::string name = "sample-version-" + std::to_string(version);
        Parts parts = PartsOf(SampleFile(version));
        for (const char* fuzzer : {"file", "model"}) {
            WriteSeed(folder / fuzzer / name, PutTogether(parts));
        }
        for (Block* const block : parts.Blocks()) block->encoded.clear();
        WriteSeed(folder / "blocks" / name, PutTogether(parts));
    }
    WriteSeed(folder / "file" / "empty", Saved(4, 0, [](CZVLGBlockSaver&) {}));
    Bytes calls;
    for (u32 i = 0; i < 600; ++i) calls.push_back(static_cast<u8>(i * i / 7));
    WriteSeed(folder / "calls" / "mixed", calls);
    WriteSeed(folder / "calls" / "geometries", Bytes(300, 0x0F));
    WriteSeed(folder / "calls" / "components", Bytes(300, 0x04));
    for (const u32 step : {1U, 3U, 7U, 37U, 73U, 101U}) {
        Bytes faces;
        for (u32 i = 0; i < 800; ++i) faces.push_back(static_cast<u8>(i * step % 251));
        WriteSeed(folder / "faces" / ("steps-of-" + std::to_string(step)), faces);
    }
    WriteSeed(folder / "faces" / "mixed", calls);
    WriteImportSeeds(folder / "import");
    return 0;
}
