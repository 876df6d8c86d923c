// Writes the hostile block files into a folder: write_hostile FOLDER.

#include <fstream>

#include "hostile_files.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    for (const hostile::HostileFile& file : hostile::HostileFiles()) {
        const support::Bytes bytes = file.make();
        std::ofstream(std::string(argv[1]) + '/' + file.name + ".zvg", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }
    return 0;
}
