#pragma once

#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartFormat/StreamException.h"
#include "ZVSmartZvg/ZVSmartZvg.h"

// A small rich file, everything that a reader says about a file, and files taken apart and put
// together again with damage inside. For the fault tests and the fuzzers.

namespace Hostile {

using namespace ZVSmartZvg;
using ZVSmartFormat::CZVFTInStream;
using ZVSmartFormat::CZVFTOutStream;
using ZVSmartFormat::CZVFTReadBufferInStream;
using ZVSmartFormat::CZVFTStreamException;

using Bytes = std::vector<u8>;

/// One of every list of a geometry record; `variant` changes its numbers and texts.
SZVLGZvgGeo SampleGeo(u32 variant);
/// A component with every field set.
SZVLGZvgComp SampleComp(u32 floor, u32 number);
/// The calls that make the sample, one after another; each stands for itself.
using SaverStep = std::function<void(CZVLGBlockSaver&, CZVFTOutStream&)>;
const std::vector<SaverStep>& SampleSteps();
/// Two floors, three components, four geometries in two blocks, a preview; below 4 KiB.
Bytes SampleFile(unsigned int version);
/// What `steps` write.
Bytes Written(const std::vector<SaverStep>& steps, unsigned int version);

/// A record as bytes: equal records give equal bytes.
std::string Dump(const SZVLGZvgGeo& geo);
std::string Dump(const SZVLGZvgComp& comp);
std::string Dump(const SZVLGZvgBlockHeadInfo& head);

/// One question to a reader and its answer: empty where it is neutral, a number behind '#'.
using Query = std::function<std::string(CZVLGBlockReader&)>;
/// All questions about a file like the sample, a little beyond its ends.
const std::vector<Query>& Queries();
extern const std::string refused;
/// The answer, or `refused` where the reader threw its own exception.
std::string Ask(const Query& query, CZVLGBlockReader& reader);
/// Opens the file at `in`'s position and asks everything.
std::vector<std::string> Answers(CZVFTInStream& in);
/// Asks everything about whatever `file` is, however many records it has, and verifies it.
void Exercise(const Bytes& file, unsigned long long decodedLimit);

/// A compressed block; compressed anew where `encoded` is empty.
struct Block {
    Bytes content;
    mutable Bytes encoded;
};
struct NamedBytes {
    const char* name;
    Bytes bytes;
};
struct FloorRecord {
    std::vector<NamedBytes> fields;
    Block block;
};
/// A file, taken apart.
struct Parts {
    std::vector<NamedBytes> head;
    std::vector<Block> geoBlocks;
    std::vector<FloorRecord> floors;
    Block index;

    std::vector<Block*> Blocks();
};
/// Where a named field is in a file.
struct FieldSpan {
    std::string name;
    std::size_t begin, end;
};

/// False where `file` is not whole.
bool TakeApart(const Bytes& file, Parts& parts);
Bytes PutTogether(const Parts& parts, std::vector<FieldSpan>* spans = nullptr);
Bytes Encoded(const Bytes& content);

/// Big-endian numbers, for files made by hand.
void PutU32(Bytes& bytes, u32 value);
void SetU32(Bytes& bytes, std::size_t position, u32 value);
/// An indexed section of `records`.
Bytes SectionOf(const std::vector<Bytes>& records, const std::string& name = "",
                std::vector<FieldSpan>* spans = nullptr, std::size_t position = 0);

}  // namespace Hostile
