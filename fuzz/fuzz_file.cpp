// Any bytes as a file: everything is asked and verified.

#include "hostile_support.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Hostile::Exercise(Hostile::Bytes(data, data + size), 64 << 20);
    return 0;
}
