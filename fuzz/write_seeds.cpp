// Writes the seeds that every fuzzer starts from into the folders below the one that is named.

#include <filesystem>
#include <fstream>

#include "support.h"

namespace {

using namespace support;

void WriteSeed(const std::filesystem::path& path, const Bytes& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::filesystem::path folder = argv[1];
    for (unsigned int version = 0; version <= 4; ++version) {
        const std::string name = "sample-version-" + std::to_string(version);
        Parts parts = PartsOf(SampleFile(version));
        WriteSeed(folder / "file" / name, PutTogether(parts));
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
    return 0;
}
