#pragma once

#include "ZVSmartFormat/Stream.h"
#include "ZVSmartSerial/Serial.h"
#include "ZVSmartZvg/DisplayAttr.h"

namespace ZVSmartModel {

/// A number that stands for whatever was written: equal data, equal number. Different data has
/// the same number once in 2^64 times, which is no protection against somebody who tries
/// (FNV-1a, 64 bits).
class Digest {
  public:
    ZVSmartSerial::CZVFTSerialWriter& Writer() { return writer; }
    ZVSmartFormat::u64 Value() const { return sink.value; }

  private:
    struct Sink : ZVSmartFormat::CZVFTOutStream {
        ZVSmartFormat::u64 Write(const void* buffer, ZVSmartFormat::u64 size) override;
        ZVSmartFormat::u64 GetPos() override { return written; }
        int Seek(ZVSmartFormat::u64) override { return 0; }
        bool Reserve(ZVSmartFormat::u64) override { return true; }

        ZVSmartFormat::u64 value = 0xCBF29CE484222325;
        ZVSmartFormat::u64 written = 0;
    };

    Sink sink;
    ZVSmartSerial::CZVFTSerialWriter writer{&sink};
};

/// Writes names and values in their order.
void WriteProperties(ZVSmartSerial::CZVFTSerialWriter& writer,
                     const ZVSmartZvg::PropertyList& properties);

/// Writes every field; one that the flags do not announce is at its default in what was read.
void WriteAttributes(ZVSmartSerial::CZVFTSerialWriter& writer,
                     const ZVSmartZvg::SZVLGZvgDisplayAttr& attr);

}  // namespace ZVSmartModel
