#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ZVSmartModel/Preview.h"
#include "model/element/BlockFileImp.h"
#include "model/element/FileName.h"
#include "tools/zvg/commands/Commands.h"
#include "tools/zvg/commands/Options.h"
#include "tools/zvg/output/OutputFile.h"
#include "tools/zvg/reading/StandardInput.h"
#include "tools/zvg/text/StandardOutput.h"

namespace ZVSmartModel::Tool {

namespace {

struct PreviewArguments {
    std::string file, size;
    Target target;
    bool rooms = false;
};

constexpr unsigned int longestSide = 8192;

RenderOptions ParseSize(const std::string& text) {
    const std::size_t cross = text.find('x');
    if (cross != std::string::npos) {
        const auto width = ParseNumber(std::string_view(text).substr(0, cross));
        const auto height = ParseNumber(std::string_view(text).substr(cross + 1));
        const auto isGood = [](const std::optional<unsigned int>& side) {
            return side && *side >= 1 && *side <= longestSide;
        };
        if (isGood(width) && isGood(height)) return {*width, *height, false, false};
    }
    throw Error(Status::Usage, "--render: '" + text + "' is no WIDTHxHEIGHT, each 1 to 8192");
}

Picture Stored(const BlockFile& file, const PreviewArguments& arguments) {
    Picture picture = file.Preview();
    if (!picture.pixels.empty()) return picture;
    throw Error(Status::NotFound,
                InputName(arguments.file) + ": it holds no preview image (--render draws one)");
}

void WritePng(const Picture& picture, const PreviewArguments& arguments) {
    const std::string png = PngOf(picture);
    OutputFile output(arguments.target.path, arguments.target.force, {arguments.file});
    output.Fill(
        [&png](ZVSmartFormat::CZVFTOutStream& sink) { sink.Write(png.data(), png.size()); });
    output.Commit();
}

/// A name that promises another kind of picture is refused.
void CheckName(const std::string& path) {
    const std::string extension = ExtensionOf(path);
    if (extension.empty() || extension == "png") return;
    throw Error(Status::Usage, path + ": the name must end in .png");
}

void Preview(const PreviewArguments& arguments, const CommonOptions& common) {
    CheckName(arguments.target.path);
    std::optional<RenderOptions> drawn;
    if (!arguments.size.empty()) drawn = ParseSize(arguments.size);
    if (drawn && !CanRenderPictures()) {
        throw Error(Status::Usage, "this build draws no pictures (it needs embree)");
    }
    const BlockFile file = OpenBlockFile(arguments.file, common);
    if (drawn) {
        drawn->rooms = arguments.rooms;
        drawn->unlimited = common.noLimit;
    }
    const Picture picture = drawn ? RenderPicture(file, *drawn) : Stored(file, arguments);
    WritePng(picture, arguments);
    if (!common.quiet) {
        WriteMessage(TargetName(arguments.target.path) + ": " + std::to_string(picture.width) +
                     " x " + std::to_string(picture.height) + " pixels");
    }
    // A picture may be whole in a file that is not.
    file.Internals().Ask([](const OpenedBlock& block) { block.ThrowIfDamaged(); });
}

}  // namespace

void RegisterPreview(CLI::App& app, CommonOptions& common) {
    const auto arguments = std::make_shared<PreviewArguments>();
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
