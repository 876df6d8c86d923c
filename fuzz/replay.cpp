// Runs a fuzzer's seeds without the fuzzer: every file of the folder that is named.

#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream in(entry.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
        std::printf("%s\n", entry.path().filename().c_str());
        std::fflush(stdout);
        if (bytes.size() > 4096) return 1;
        LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
        ++count;
    }
    return count == 0 ? 1 : 0;
}
