#include "ZVSmartModel/Preview.h"

#include <new>

#include "model/element/BlockFileImp.h"
#include "model/element/ProgressPace.h"
#include "model/element/RecordNames.h"
#include "model/preview/Renderer.h"
#include "model/scene/SceneReader.h"

namespace ZVSmartModel {

using namespace ZVSmartZvg;

namespace {

constexpr unsigned int longestSide = 8192;

bool IsSide(unsigned int pixels) {
    return pixels >= 1 && pixels <= longestSide;
}

Scene ReadScene(OpenedBlock& block, bool rooms, ProgressPace& pace) {
    SceneReader reader(block);
    const FileWalk walk(block, FileWalk::Through::Bodies, reader.Ahead());
    const unsigned int floors = block.Reader().GetFloorNum();
    for (unsigned int floor = 0; floor < floors; ++floor) {
        block.ForEachComp(floor, [&](const SZVLGCompIndex&, const SZVLGZvgComp& comp) {
            pace.Tell("reading", floor, floors);
            if (rooms || !IsRoomClass(comp.classLevel2Name)) reader.Add(comp);
        });
    }
    block.ThrowIfDamaged();
    return reader.Take();
}

}  // namespace

bool CanRenderPictures() {
    try {
        return CanRender();
    } catch (const std::bad_alloc&) {
        throw Error(Status::Internal, "out of memory");
    }
}

Picture RenderPicture(const BlockFile& file, const RenderOptions& options,
                      const Progress& progress) {
    if (!CanRenderPictures()) {
        throw Error(Status::Usage, "this build draws no pictures (it needs embree)");
    }
    if (!IsSide(options.width) || !IsSide(options.height)) {
        throw Error(Status::Usage, "a picture's sides are 1 to 8192 pixels");
    }
    return file.Internals().Ask([&](OpenedBlock& block) {
        ProgressPace pace(progress);
        const Scene scene = ReadScene(block, options.rooms, pace);
        constexpr std::size_t parts = 1000;
        const auto tell = [&pace](double drawn) {
            pace.Tell("drawing", static_cast<std::size_t>(drawn * double{parts}), parts);
        };
        try {
            Picture picture = Render(scene, options.width, options.height, options.unlimited, tell);
            if (!picture.pixels.empty()) return picture;
        } catch (const RenderTooLong& tooLong) {
            const std::string& liftedBy = block.Limits().LiftedBy();
            const std::string advice = liftedBy.empty() ? "" : " (" + liftedBy + " goes on)";
            throw block.ErrorAbout(Status::Damaged, tooLong.what() + advice);
        } catch (const RenderFailed& failure) {
            throw Error(Status::Internal, std::string("internal error: ") + failure.what());
        }
        throw block.ErrorAbout(Status::NotFound, "it holds no surfaces to draw");
    });
}

}  // namespace ZVSmartModel
