#include <ZVSmartModel/BlockFile.h>
#include <ZVSmartModel/Pack.h>

#include <cstdio>

/// Packs a model with the importer that was installed with the library, and reads it back.
int main(int argc, char** argv) {
    using namespace ZVSmartModel;
    if (argc != 3) return 2;
    try {
        PackModelFile(argv[1], argv[2]);
        const BlockFile file(argv[2]);
        std::printf("%zu elements on %zu floors\n", file.ElementCount(), file.Floors().size());
        return file.ElementCount() == 49 ? 0 : 1;
    } catch (const Error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
