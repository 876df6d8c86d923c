// What a file that is far away is asked for: requests and KiB, each on its own, for opening it, for
// the element in the middle of the middle floor, for that element's body, and for all bodies of the
// first floor.
//   far_away FILE...

#include <cstdio>
#include <cstring>

#include "ZVSmartFormat/CachedStream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "bench/FileParts.h"

using namespace bench;
using namespace ZVSmartModel;

namespace {

class Counter {
  public:
    explicit Counter(const Bytes& content) : content(content) {}

    ZVSmartFormat::CZVFTCachedInStream Stream() {
        const auto read = [this](u64 position, void* buffer, u64 size) {
            std::memcpy(buffer, content.data() + position, size);
            ++requests;
            bytes += size;
            return size;
        };
        return {read, content.size()};
    }
    /// What was asked for since the last call.
    void Tell(const char* work) {
        std::printf("\t%s %zu, %zu KiB", work, requests, (bytes + 1023) / 1024);
        requests = bytes = 0;
    }

  private:
    const Bytes& content;
    std::size_t requests = 0, bytes = 0;
};

ElementIndex Middle(const Bytes& content) {
    const BlockFile file(content);
    const auto floors = file.Floors();
    const std::size_t floor = floors.size() / 2;
    return {static_cast<unsigned int>(floor),
            static_cast<unsigned int>(floors[floor].elements / 2)};
}

}  // namespace

int main(int argc, char** argv) {
    for (int arg = 1; arg < argc; ++arg) {
        const Bytes content = ReadWholeFile(argv[arg]);
        const ElementIndex middle = Middle(content);
        std::printf("%s", argv[arg]);
        Counter counter(content);
        {
            auto stream = counter.Stream();
            const BlockFile file(stream);
            counter.Tell("open");
            file.Read(middle);
            counter.Tell("element");
            ReadBody(file, middle);
            counter.Tell("body");
        }
        auto stream = counter.Stream();
        const BlockFile file(stream);
        Selection first;
        first.floor = "0";
        ReadShapes(file, first);
        counter.Tell("open and first floor");
        std::printf("\n");
    }
    return 0;
}
