#include "ZVSmartModel/BlockFile.h"

#include <map>
#include <optional>
#include <tuple>

#include "ZVSmartFormat/MemoryStream.h"
#include "model/element/BlockFileImp.h"
#include "model/element/Chosen.h"
#include "model/element/ElementReader.h"
#include "model/element/ElementRecord.h"
#include "model/element/InputSource.h"
#include "model/element/Utf8.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

FileInfo HeadOf(OpenedBlock& block) {
    CZVLGBlockReader& reader = block.Reader();
    SZVLGZvgBlockHeadInfo head;
    reader.GetHeadInfo(head);
    FileInfo info;
    info.firstText = ToUtf8(head.firstText);
    info.secondText = ToUtf8(head.secondText);
    info.version = reader.GetVersion();
    info.bytes = block.FileBytes();
    info.floors = reader.GetFloorNum();
    info.geometryBlocks = reader.GetGeoBlockNum();
    info.identifications = reader.GetGeoIdentificationNum();
    return info;
}

Floor FloorOf(OpenedBlock& block, unsigned int number) {
    Floor floor;
    floor.name = ToUtf8(block.FloorName(number));
    floor.order = block.FloorOrder(number);
    floor.elements = block.FloorCompNum(number);
    std::tie(floor.elevation, floor.height) = block.FloorMetres(number);
    return floor;
}

/// A FileWalk of a call that lets others ask meanwhile.
class WalkBetweenCalls {
  public:
    WalkBetweenCalls(BlockFile::Imp& imp, bool isWalk) : imp(imp) {
        if (!isWalk) return;
        imp.GoOn([this](OpenedBlock& block) { walk.emplace(block, FileWalk::Through::Elements); });
    }
    ~WalkBetweenCalls() {
        if (walk) imp.GoOn([this](OpenedBlock&) { walk.reset(); });
    }
    WalkBetweenCalls(const WalkBetweenCalls&) = delete;
    WalkBetweenCalls& operator=(const WalkBetweenCalls&) = delete;

  private:
    BlockFile::Imp& imp;
    std::optional<FileWalk> walk;
};

}  // namespace

BlockFile::Imp::Imp(std::vector<std::uint8_t> given, const OpenOptions& options)
    : bytes(std::move(given)),
      memory(std::make_unique<ZVSmartFormat::CZVFTReadBufferInStream>(bytes.data(), bytes.size())),
      limits(options.unlimited),
      block(OpenedFile(*memory, "block file"), limits, options) {}

BlockFile BlockFile::Imp::Open(OpenedFile file, const OpenOptions& options,
                               const std::string& liftedBy) {
    return BlockFile(std::make_unique<Imp>(std::move(file), options, liftedBy));
}

BlockFile::BlockFile(std::unique_ptr<Imp> imp) : imp(std::move(imp)) {}

BlockFile::BlockFile(const std::string& path, const OpenOptions& options)
    : imp(std::make_unique<Imp>(OpenedFile(OpenInput(path), path), options)) {}

BlockFile::BlockFile(std::vector<std::uint8_t> bytes, const OpenOptions& options)
    : imp(std::make_unique<Imp>(std::move(bytes), options)) {}

BlockFile::BlockFile(ZVSmartFormat::CZVFTInStream& stream, const OpenOptions& options)
    : imp(std::make_unique<Imp>(OpenedFile(stream, "block file"), options)) {}

BlockFile::~BlockFile() = default;
BlockFile::BlockFile(BlockFile&&) noexcept = default;
BlockFile& BlockFile::operator=(BlockFile&&) noexcept = default;

FileInfo BlockFile::Info() const {
    return imp->Ask([](OpenedBlock& block) {
        FileInfo info = HeadOf(block);
        info.decodedBytes = block.DecodedBytes();
        return info;
    });
}

FileInfo BlockFile::Head() const {
    return imp->Ask([](OpenedBlock& block) { return HeadOf(block); });
}

std::vector<Floor> BlockFile::Floors() const {
    return imp->Ask([](OpenedBlock& block) {
        const FileWalk walk(block, FileWalk::Through::Elements);
        std::vector<Floor> floors;
        const unsigned int count = block.Reader().GetFloorNum();
        for (unsigned int floor = 0; floor < count; ++floor) {
            floors.push_back(FloorOf(block, floor));
        }
        block.ThrowIfCutShort();
        return floors;
    });
}

Floor BlockFile::ReadFloor(unsigned int floor) const {
    return imp->Ask([floor](OpenedBlock& block) {
        if (floor >= block.Reader().GetFloorNum()) {
            throw block.ErrorAbout(Status::NotFound, "no floor " + std::to_string(floor));
        }
        Floor read = FloorOf(block, floor);
        block.ThrowIfCutShort();
        return read;
    });
}

std::size_t BlockFile::ElementCount() const {
    return imp->Ask([](OpenedBlock& block) {
        const FileWalk walk(block, FileWalk::Through::Elements);
        std::size_t elements = 0;
        const unsigned int count = block.Reader().GetFloorNum();
        for (unsigned int floor = 0; floor < count; ++floor) elements += block.FloorCompNum(floor);
        block.ThrowIfCutShort();
        return elements;
    });
}

unsigned int BlockFile::ElementCount(unsigned int floor) const {
    return imp->Ask([floor](OpenedBlock& block) {
        const unsigned int elements =
            floor < block.Reader().GetFloorNum() ? block.FloorCompNum(floor) : 0;
        block.ThrowIfCutShort();
        return elements;
    });
}

std::vector<ClassCount> BlockFile::Classes() const {
    return imp->Ask([](OpenedBlock& block) {
        const FileWalk walk(block, FileWalk::Through::Elements);
        std::map<std::string, std::size_t, std::less<>> counts;
        const unsigned int floors = block.Reader().GetFloorNum();
        ElementReader reader({NoProperties(), false});
        for (unsigned int floor = 0; floor < floors; ++floor) {
            reader.ForEach(block, floor, [&counts](const ElementView& element) {
                const auto known = counts.find(element.className);
                if (known == counts.end()) {
                    counts.emplace(element.className, 1);
                } else {
                    ++known->second;
                }
            });
        }
        block.ThrowIfCutShort();
        std::vector<ClassCount> classes;
        classes.reserve(counts.size());
        for (const auto& [name, elements] : counts) classes.push_back({name, elements});
        return classes;
    });
}

Picture BlockFile::Preview() const {
    return imp->Ask([](OpenedBlock& block) {
        const std::optional<SZVLGZvgGeoImage> image = block.ReadPreview();
        Picture picture;
        if (!image) {
            block.ThrowIfDamaged();
            return picture;
        }
        // The file counts bytes in 32 bits, so the sides of a hostile one may promise more.
        const u64 bytes = u64{image->width} * image->height * 4;
        if (image->pixels == nullptr || bytes == 0 || bytes != image->PixelBytes()) {
            throw block.ErrorAbout(Status::Damaged, "the preview image has no pixels");
        }
        picture.width = image->width;
        picture.height = image->height;
        picture.pixels.assign(image->pixels, image->pixels + bytes);
        return picture;
    });
}

Element BlockFile::Read(ElementIndex index) const {
    return imp->Ask([this, index](OpenedBlock& block) {
        if (!imp->elements) imp->elements = std::make_shared<ElementReader>();
        const ElementView* view = nullptr;
        block.ReadElement({index.floor, index.position}, [&] {
            view = imp->elements->Read(block, index);
            return view != nullptr;
        });
        Element element;
        view->CopyTo(element);
        element.floorName = ToUtf8(block.FloorName(index.floor));
        return element;
    });
}

void BlockFile::ForEach(const Selection& selection,
                        const std::function<bool(const Element&)>& use) const {
    Element element;  // one for all, for its memory
    ForEachView(selection, [&](const ElementView& view) {
        view.CopyTo(element);
        return use(element);
    });
}

void BlockFile::ForEachView(const Selection& selection,
                            const std::function<bool(const ElementView&)>& use) const {
    const Chosen chosen(selection);
    const auto [first, end] =
        imp->Ask([&](OpenedBlock& block) { return block.FindFloors(selection.floor); });
    ElementReader reader;
    const WalkBetweenCalls walk(*imp, chosen.IsWalk());
    for (unsigned int floor = first; floor < end; ++floor) {
        if (!chosen.MayHold(floor)) continue;
        const Floor itself = imp->Ask([&](OpenedBlock& block) { return FloorOf(block, floor); });
        for (ElementIndex index{floor, 0}; index.position < itself.elements; ++index.position) {
            ElementView* const element =
                imp->Ask([&](OpenedBlock& block) { return reader.Read(block, index); });
            if (element == nullptr || !chosen.Holds(*element)) continue;
            element->floorName = itself.name;
            if (!use(*element)) return;
        }
    }
}

std::vector<Damage> BlockFile::DamageMet() const {
    return imp->Ask([](OpenedBlock& block) { return block.Damages(); });
}

}  // namespace ZVSmartModel
