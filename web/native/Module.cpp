#include "web/native/Module.h"

#include <memory>
#include <utility>

#include "web/native/SceneWalk.h"
#include "web/native/Search.h"
#include "web/native/Session.h"

using namespace ZVSmartModel;
using namespace ZVSmartModel::Web;

/// A walk under way.
class ZVSmartModel::Web::Scene {
  public:
    Session& session;
    SceneWalk walk;
};

namespace {

void WriteFloor(Json& json, const Floor& floor) {
    json.Open('{').Key("name").Text(floor.name).Key("order").Number(floor.order);
    json.Key("elevation").Real(floor.elevation).Key("height").Real(floor.height);
    json.Key("elements").Number(floor.elements).Close('}');
}

void WriteInfo(Json& json, const FileInfo& info) {
    json.Open('{').Key("firstText").Text(info.firstText).Key("secondText").Text(info.secondText);
    json.Key("version").Number(info.version).Key("bytes").Number(info.bytes);
    json.Key("floors").Number(info.floors).Key("geometryBlocks").Number(info.geometryBlocks);
    json.Key("identifications").Number(info.identifications).Close('}');
}

}  // namespace

int zvg_open(Session* session) {
    return session->AskForText([&](Json& json) {
        session->Open();
        WriteInfo(json, session->File().Head());
    });
}

int zvg_floors(Session* session) {
    return session->AskForText([&](Json& json) {
        json.Open('[');
        for (const Floor& floor : session->File().Floors()) WriteFloor(json, floor);
        json.Close(']');
    });
}

int zvg_floor(Session* session, std::uint32_t floor) {
    return session->AskForText(
        [&](Json& json) { WriteFloor(json, session->File().ReadFloor(floor)); });
}

int zvg_find(Session* session, const std::uint8_t* request, std::uint32_t size) {
    return session->AskForText(
        [&](Json& json) { WriteFound(json, session->File(), Request::Of(request, size)); });
}

int zvg_element(Session* session, std::uint32_t floor, std::uint32_t position) {
    return session->AskForText([&](Json& json) {
        Write(json, session->File().Read({floor, position}));
    });
}

int zvg_preview(Session* session) {
    return session->Ask([&](Answer& answer) {
        const Picture picture = session->File().Preview();
        const std::uint32_t sides[] = {picture.width, picture.height};
        answer.PutArray(sides, 2);
        answer.PutArray(picture.pixels);
    });
}

int zvg_damage(Session* session) {
    return session->AskForText([&](Json& json) { Write(json, session->File().DamageMet()); });
}

Scene* zvg_scene(Session* session, const std::uint8_t* request, std::uint32_t size) {
    std::unique_ptr<Scene> scene;
    session->Do([&](Answer&) {
        scene.reset(new Scene{*session, SceneWalk(Request::Of(request, size))});
    });
    return scene.release();
}

int zvg_scene_next(Scene* scene) {
    Session& session = scene->session;
    return session.Ask([&](Answer& answer) {
        BlockFile& file = session.File();
        if (scene->walk.IsDone(file)) return;
        Shapes read = scene->walk.Read(file);
        if (!session.Stream().Miss()) scene->walk.Take(file, std::move(read), answer);
    });
}

void zvg_scene_end(Scene* scene) {
    delete scene;
}
