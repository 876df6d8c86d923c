#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "model/element/OpenedBlock.h"
#include "model/element/RecordNames.h"
#include "model/preview/PreviewPng.h"
#include "model/preview/RenderPreview.h"
#include "model/preview/Renderer.h"
#include "model/scene/SceneReader.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

using ZVSmartZvg::SZVLGZvgGeoImage;

namespace {

struct Arguments {
    std::string file, size;
    Target target;
    bool rooms = false;
};

struct Size {
    unsigned int width, height;
};

constexpr unsigned int longestSide = 8192;

Size ParseSize(const std::string& text) {
    const std::size_t cross = text.find('x');
    if (cross != std::string::npos) {
        const auto width = ParseNumber(std::string_view(text).substr(0, cross));
        const auto height = ParseNumber(std::string_view(text).substr(cross + 1));
        const auto isGood = [](const std::optional<unsigned int>& side) {
            return side && *side >= 1 && *side <= longestSide;
        };
        if (isGood(width) && isGood(height)) return {*width, *height};
    }
    throw Error(Status::Usage, "--render: '" + text + "' is no WIDTHxHEIGHT, each 1 to 8192");
}

SZVLGZvgGeoImage Stored(OpenedBlock& block) {
    const std::optional<SZVLGZvgGeoImage> image = block.ReadPreview();
    if (!image) {
        block.ThrowIfDamaged();
        throw block.ErrorAbout(Status::NotFound, "it holds no preview image (--render draws one)");
    }
    // The file counts bytes in 32 bits, so the sides of a hostile one may promise more.
    const std::uint64_t bytes = std::uint64_t{image->width} * image->height * 4;
    if (image->pixels == nullptr || bytes == 0 || bytes != image->PixelBytes()) {
        throw block.ErrorAbout(Status::Damaged, "the preview image has no pixels");
    }
    return *image;
}

SZVLGZvgGeoImage Drawn(OpenedBlock& block, const Size& size, bool rooms, bool patient) try {
    SceneReader reader(block);
    const unsigned int floors = block.Reader().GetFloorNum();
    for (unsigned int floor = 0; floor < floors; ++floor) {
        block.ForEachComp(
            floor, [&](const ZVSmartZvg::SZVLGCompIndex&, const ZVSmartZvg::SZVLGZvgComp& comp) {
                if (rooms || !IsRoomClass(comp.classLevel2Name)) reader.Add(comp);
            });
    }
    block.ThrowIfDamaged();
    const auto image = RenderPreview(reader.Take(), size.width, size.height, patient);
    if (!image) throw block.ErrorAbout(Status::NotFound, "it holds no surfaces to draw");
    return *image;
} catch (const RenderTooLong& error) {
    throw block.ErrorAbout(Status::Damaged, std::string(error.what()) + " (--no-limit goes on)");
}

void WritePng(const SZVLGZvgGeoImage& image, const Arguments& arguments) {
    const std::string png = EncodePng(image);
    OutputFile output(arguments.target.path, arguments.target.force, {arguments.file});
    output.Fill(
        [&png](ZVSmartFormat::CZVFTOutStream& sink) { sink.Write(png.data(), png.size()); });
    output.Commit();
}

void Preview(const Arguments& arguments, const CommonOptions& common) {
    std::optional<Size> size;
    if (!arguments.size.empty()) size = ParseSize(arguments.size);
    if (size && !CanRender()) {
        throw Error(Status::Usage, "this build draws no pictures (it needs embree)");
    }
    Budget limits(common.noLimit, "--no-limit");
    OpenedBlock block(OpenNamed(arguments.file), limits);
    const SZVLGZvgGeoImage image =
        size ? Drawn(block, *size, arguments.rooms, common.noLimit) : Stored(block);
    WritePng(image, arguments);
    if (!common.quiet) {
        WriteMessage(TargetName(arguments.target.path) + ": " + std::to_string(image.width) +
                     " x " + std::to_string(image.height) + " pixels");
    }
    block.ThrowIfDamaged();
}

}  // namespace

void RegisterPreview(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<Arguments>();
    CLI::App* const command = AddReadingCommand(
        app, "preview", "Write the file's preview image as PNG, or draw its components anew",
        "zvg preview house.zvg -o house.png --render 1920x1080", arguments->file);
    AddTargetOptions(*command, "The PNG file to write; - is standard output", arguments->target)
        ->required();
    command
        ->add_option("--render", arguments->size,
                     "Draw a picture of this size instead of writing the stored one")
        ->type_name("WIDTHxHEIGHT");
    AddLimitOption(*command, common);
    AddRoomsOption(*command, arguments->rooms);
    command->callback([arguments, &common] { Preview(*arguments, common); });
}

}  // namespace ZVSmartModel::Tool
