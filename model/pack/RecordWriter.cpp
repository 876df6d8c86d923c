#include "model/pack/RecordWriter.h"

#include <unistd.h>

#include <cstring>
#include <utility>

#include "ZVSmartFormat/StreamException.h"
#include "model/element/LackOfMemory.h"
#include "model/element/RecordBytes.h"
#include "model/pack/ShapeRecords.h"

namespace ZVSmartModel {

using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::CZVFTStreamException;
using ZVSmartFormat::u64;
using namespace ZVSmartZvg;

/// Hands on to a stream and notes whether that failed: the saver's exception is the same for a
/// record that it does not take.
class RecordWriter::NotingStream : public CZVFTOutStream {
  public:
    explicit NotingStream(CZVFTOutStream& inner) : inner(inner) {}

    u64 Write(const void* buffer, u64 size) override {
        return Noted([&] { return inner.Write(buffer, size); }, size);
    }
    u64 GetPos() override { return inner.GetPos(); }
    int Seek(u64 pos) override {
        const int result = inner.Seek(pos);
        Noted([&] { return inner.GetPos(); }, pos);
        return result;
    }
    bool Reserve(u64 size) override { return inner.Reserve(size); }

    bool HasFailed() const { return hasFailed; }

  private:
    template <class Act>
    u64 Noted(Act act, u64 wanted) {
        try {
            const u64 result = act();
            if (result != wanted) hasFailed = true;
            return result;
        } catch (...) {
            hasFailed = true;
            throw;
        }
    }

    CZVFTOutStream& inner;
    bool hasFailed = false;
};

RecordWriter::RecordWriter(const std::string& path, const Settings& settings)
    : settings(settings),
      path(path),
      file(std::make_unique<NewFile>(path)),
      sink(std::make_unique<FileSink>(dup(file->Descriptor()))),
      stream(std::make_unique<NotingStream>(*sink)),
      saver(settings.formatVersion) {}

RecordWriter::RecordWriter(CZVFTOutStream& out, const Settings& settings)
    : settings(settings),
      stream(std::make_unique<NotingStream>(out)),
      saver(settings.formatVersion) {}

RecordWriter::~RecordWriter() = default;

void RecordWriter::AddGeo(const std::wstring& key, SZVLGZvgGeo geo, std::size_t geoBytes) {
    const std::size_t held = BytesOf(geo);
    Take([key, geo = std::move(geo)](CZVLGBlockSaver& to) { to.AddIdentificationGeo(key, geo); },
         held, geoBytes);
}

void RecordWriter::AddComp(SZVLGZvgComp comp, std::size_t geoBytes) {
    const std::size_t held = BytesOf(comp);
    Take([comp = std::move(comp)](CZVLGBlockSaver& to) { to.AddComp(comp); }, held, geoBytes);
}

void RecordWriter::AddPreview(SZVLGZvgGeoImage image) {
    const std::size_t held = image.PixelBytes();
    Take([image = std::move(image)](CZVLGBlockSaver& to) { to.AddPreviewImage(image); }, held, 0);
}

void RecordWriter::Finish() {
    if (!begun) Begin();
    saver.WriteEnd();
    if (!file) return;
    if (!sink->Close()) {
        throw Error(Status::InputOutput, path + ": " + std::strerror(sink->Failure()), path);
    }
    file->Commit();
}

Error RecordWriter::ErrorOf(const std::exception& exception) const {
    if (const auto* error = dynamic_cast<const Error*>(&exception)) return *error;
    const std::string begin = path.empty() ? "" : path + ": ";
    if (IsOutOfMemory(exception)) return {Status::Internal, begin + "out of memory", path};
    if (sink && sink->Failure() != 0) {
        return {Status::InputOutput, begin + std::strerror(sink->Failure()), path};
    }
    const bool refused =
        dynamic_cast<const CZVFTStreamException*>(&exception) != nullptr && !stream->HasFailed();
    if (refused) return {Status::Usage, begin + "this is more than a block file holds", path};
    return {Status::InputOutput, begin + "cannot be written: " + exception.what(), path};
}

void RecordWriter::Take(Step step, std::size_t held, std::size_t geoBytes) {
    if (begun) return step(saver);
    waiting.push_back(std::move(step));
    heldBytes += held;
    recordBytes += geoBytes;
    records += geoBytes == 0 ? 0 : 1;
    constexpr std::size_t mostHeldBytes = 4 << 20;
    if (heldBytes > mostHeldBytes || settings.geosPerBlock != 0) Begin();
}

void RecordWriter::Begin() {
    begun = true;
    const std::vector<Step> steps = std::exchange(waiting, {});
    saver.SetEncodeFastMod(settings.fast);
    saver.SetSeal(settings.seal);
    saver.Init(
        stream.get(), settings.head, "",
        settings.geosPerBlock != 0 ? settings.geosPerBlock : GeosPerBlock(recordBytes, records));
    for (const Step& step : steps) step(saver);
}

}  // namespace ZVSmartModel
