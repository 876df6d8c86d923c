// A file of any bytes, opened by the model library and asked everything.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartModel/BlockFile.h"
#include "ZVSmartModel/Body.h"
#include "ZVSmartModel/Diff.h"
#include "ZVSmartModel/Exports.h"
#include "ZVSmartModel/Plan.h"
#include "ZVSmartModel/Verify.h"

using namespace ZVSmartModel;

namespace {

struct Nowhere : ZVSmartFormat::CZVFTOutStream {
    ZVSmartFormat::u64 Write(const void*, ZVSmartFormat::u64 size) override {
        written += size;
        return size;
    }
    ZVSmartFormat::u64 GetPos() override { return written; }
    int Seek(ZVSmartFormat::u64) override { return 0; }
    bool Reserve(ZVSmartFormat::u64) override { return true; }

    ZVSmartFormat::u64 written = 0;
};

/// An Error is an answer; anything else that is thrown ends the fuzzer.
template <class Act>
void Try(Act act) {
    try {
        act();
    } catch (const Error&) {
        return;
    }
}

void AskElements(const BlockFile& file) {
    Try([&] { file.Info(); });
    Try([&] { file.Floors(); });
    Try([&] { file.Classes(); });
    Try([&] { file.Preview(); });
    std::string guid, name;
    Try([&] {
        file.ForEach({}, [&](const Element& element) {
            guid = element.guid;
            name = element.name;
            for (const Property& property : element.properties) property.Number();
            Try([&] {
                Measure(ReadBody(file, element.index, {Normals::Smooth, 0.5, true, 0.01}));
            });
            return element.index.position < 20;
        });
    });
    Try([&] { file.FindGuid(guid); });
    Try([&] { file.FindName(name); });
    Try([&] { file.PartsOf(guid); });
    file.DamageMet();
}

void AskAll(const BlockFile& file) {
    Nowhere out, other;
    Try([&] { ReadShapes(file, {}, {Normals::Flat, 0.5, true, 0.01}); });
    Try([&] { WritePlan(file, out); });
    Try([&] { WriteObj(file, out, other, "x.mtl"); });
    Try([&] { WriteGlb(file, out); });
    Try([&] {
        ExportOptions all;
        all.merge = all.edges = all.quantize = true;
        all.normals = Normals::Smooth;
        all.compress = CanCompressGlb();
        WriteGlb(file, out, all);
    });
    Try([&] { WriteProperties(file, out); });
    Try([&] { Compare(file, file, [](const Difference&) { return true; }); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Try([&] {
        const BlockFile file(std::vector<std::uint8_t>(data, data + size));
        AskElements(file);
        AskAll(file);
    });
    ZVSmartFormat::CZVFTReadBufferInStream stream(data, size);
    Try([&] { VerifyFile(stream); });
    return 0;
}
