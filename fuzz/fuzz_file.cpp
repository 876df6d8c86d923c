// Any bytes as a file: everything is asked and verified.

#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    support::Exercise(support::Bytes(data, data + size));
    return 0;
}
