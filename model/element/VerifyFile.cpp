#include "ZVSmartModel/Verify.h"

#include <limits>
#include <thread>

#include "ZVSmartZvg/BlockVerifier.h"
#include "model/element/InputSource.h"
#include "model/element/LackOfMemory.h"
#include "model/element/OpenedBlock.h"
#include "model/element/ProgressPace.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

/// Tells how far a stream has been read, and notes where it does not deliver.
class WatchedStream : public ZVSmartFormat::CZVFTInStream {
  public:
    WatchedStream(ZVSmartFormat::CZVFTInStream& stream, const Progress& progress)
        : stream(stream), pace(progress), size(stream.GetSize()) {}

    bool Read(void* buffer, u64* count) override {
        const bool isGood = stream.Read(buffer, count);
        hasFailed = hasFailed || !isGood;
        pace.Tell("verifying", stream.GetPos(), size);
        return isGood;
    }
    u64 GetPos() override { return stream.GetPos(); }
    int Seek(u64 pos) override { return stream.Seek(pos); }
    u64 GetSize() override { return size; }

    bool HasFailed() const { return hasFailed; }

  private:
    ZVSmartFormat::CZVFTInStream& stream;
    ProgressPace pace;
    u64 size;
    bool hasFailed = false;
};

std::vector<Damage> Faults(OpenedFile file, const Progress& progress, unsigned int threads,
                           BlockCounts* counts) try {
    constexpr unsigned long long wholeFile = std::numeric_limits<unsigned long long>::max();
    if (threads == 0) threads = std::thread::hardware_concurrency();

    WatchedStream stream(file.Stream(), progress);
    std::vector<SZVLGBlockFinding> findings;
    bool isSound = false;
    SZVLGBlockCounts counted;
    try {
        isSound = CZVLGBlockVerifier().Verify(&stream, wholeFile, findings, threads, &counted);
    } catch (const ZVSmartFormat::CZVFTStreamException& exception) {
        if (IsOutOfMemory(exception)) throw;
        file.ThrowUnread();
    }
    if (stream.HasFailed()) file.ThrowUnread();
    if (counts != nullptr) {
        *counts = {counted.floors, counted.components, counted.geometryBlocks, counted.geometries,
                   counted.identifications};
    }
    std::vector<Damage> faults;
    faults.reserve(findings.size());
    for (const SZVLGBlockFinding& finding : findings) {
        faults.push_back({finding.position, finding.reason});
    }
    if (!isSound && faults.empty()) faults.push_back({0, "the file does not verify"});
    return faults;
} catch (const Error&) {
    throw;
} catch (const std::exception& error) {
    if (!IsOutOfMemory(error)) throw;
    throw Error(Status::Internal, "out of memory");
}

}  // namespace

std::vector<Damage> VerifyFile(const std::string& path, const Progress& progress,
                               unsigned int threads, BlockCounts* counts) {
    return Faults(OpenedFile(OpenInput(path), path), progress, threads, counts);
}

std::vector<Damage> VerifyFile(ZVSmartFormat::CZVFTInStream& stream, const Progress& progress,
                               unsigned int threads, BlockCounts* counts) {
    return Faults(OpenedFile(stream, "block file"), progress, threads, counts);
}

}  // namespace ZVSmartModel
