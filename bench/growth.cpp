// Time per component and per geometry, written and read, at 10,000 of them and at more.
//   growth REPEATS N [N...]
// Prints lines of: name, number, nanoseconds of processor time apiece (the median of the repeats;
// of numbers above 10,000 every third is run, in between). Generating is not counted. Written with
// the coder's fast setting, which leaves the most to be seen of the library.

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <map>

#include "ZVSmartZvg/BlockReader.h"
#include "bench/Payload.h"

using namespace bench;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartZvg::CZVLGBlockReader;
using ZVSmartZvg::CZVLGBlockSaver;

namespace {

/// Processor time of this thread, counted while it runs.
class Watch {
  public:
    void Start() { started = Now(); }
    void Stop() { total += Now() - started; }
    double Nanoseconds() const { return total; }

  private:
    static double Now() {
        timespec now;
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
    }

    double started = 0, total = 0;
};

constexpr u32 batch = 1000;

/// Makes things `batch` at a time and adds them with the watch running.
template <class Make, class Add>
double WriteAll(u32 count, MemorySink& sink, Make make, Add add) {
    Watch watch;
    CZVLGBlockSaver saver;
    watch.Start();
    saver.Init(&sink.Stream(), {});
    watch.Stop();
    for (u32 first = 0; first < count; first += batch) {
        std::vector<decltype(make(0))> made;
        for (u32 i = first; i < std::min(count, first + batch); ++i) made.push_back(make(i));
        watch.Start();
        for (const auto& one : made) add(saver, one);
        watch.Stop();
    }
    watch.Start();
    saver.WriteEnd();
    watch.Stop();
    return watch.Nanoseconds() / count;
}

double ReadComponents(View file, u32 count) {
    Watch watch;
    watch.Start();
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    reader.Init(&in);
    for (u32 i = 0; i < count; ++i) {
        SZVLGZvgComp comp;
        reader.GetCompByIndex({i / Building::componentsPerFloor, i % Building::componentsPerFloor},
                              comp);
    }
    watch.Stop();
    return watch.Nanoseconds() / count;
}

double ReadGeometries(View file, u32 count) {
    Watch watch;
    CZVFTReadBufferInStream in(file.data(), file.size());
    CZVLGBlockReader reader;
    watch.Start();
    reader.Init(&in);
    watch.Stop();
    for (u32 first = 0; first < count; first += batch) {
        std::vector<std::wstring> keys;
        for (u32 i = first; i < std::min(count, first + batch); ++i)
            keys.push_back(Building::ShapeKey(i));
        watch.Start();
        for (const std::wstring& key : keys) {
            SZVLGZvgGeo geo;
            reader.GetGeoByIdentification(key, geo);
        }
        watch.Stop();
    }
    return watch.Nanoseconds() / count;
}

struct Times {
    std::vector<double> writeComponents, readComponents, writeGeometries, readGeometries;
};

void RunOnce(u32 count, Times& times) {
    const Building building(count);
    {
        MemorySink sink(std::size_t{256} * count);
        times.writeComponents.push_back(WriteAll(
            count, sink, [&](u32 i) { return building.Component(i); },
            [](CZVLGBlockSaver& saver, const SZVLGZvgComp& comp) { saver.AddComp(comp); }));
        times.readComponents.push_back(ReadComponents(sink.Written(), count));
    }
    MemorySink sink(std::size_t{1024} * count);
    times.writeGeometries.push_back(WriteAll(
        count, sink, [](u32 i) { return std::make_pair(Building::ShapeKey(i), Building::Pin(i)); },
        [](CZVLGBlockSaver& saver, const auto& geo) {
            saver.AddIdentificationGeo(geo.first, geo.second);
        }));
    times.readGeometries.push_back(ReadGeometries(sink.Written(), count));
}

void Print(const char* name, u32 count, std::vector<double>& times) {
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                     times.end());
    std::printf("%s\t%u\t%.0f\n", name, count, times[times.size() / 2]);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    CZVLGBlockSaver().SetEncodeFastMod(true);
    const int repeats = std::stoi(argv[1]);
    std::map<u32, Times> byCount;
    for (int i = 0; i < repeats; ++i) {
        for (int arg = 2; arg < argc; ++arg) {
            const u32 count = static_cast<u32>(std::stoul(argv[arg]));
            if (count <= 10'000 || i % 3 == 0) RunOnce(count, byCount[count]);
        }
    }
    for (auto& [count, times] : byCount) {
        Print("write component", count, times.writeComponents);
        Print("read component", count, times.readComponents);
        Print("write geometry", count, times.writeGeometries);
        Print("read geometry", count, times.readGeometries);
    }
    return 0;
}
