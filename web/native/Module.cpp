#include "web/native/Module.h"

#include <memory>
#include <new>
#include <utility>

#include "ZVSmartModel/Verify.h"
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

void WriteFloors(Json& json, const std::vector<Floor>& floors) {
    json.Open('[');
    for (const Floor& floor : floors) {
        json.Open('{').Key("name").Text(floor.name).Key("order").Number(floor.order);
        json.Key("elevation").Real(floor.elevation).Key("height").Real(floor.height);
        json.Key("elements").Number(floor.elements).Close('}');
    }
    json.Close(']');
}

void WriteInfo(Json& json, const FileInfo& info) {
    json.Open('{').Key("firstText").Text(info.firstText).Key("secondText").Text(info.secondText);
    json.Key("version").Number(info.version).Key("bytes").Number(info.bytes);
    json.Key("floors").Number(info.floors).Key("geometryBlocks").Number(info.geometryBlocks);
    json.Key("identifications").Number(info.identifications).Close('}');
}

void WriteDamages(Json& json, const std::vector<Damage>& damages) {
    json.Open('[');
    for (const Damage& damage : damages) {
        json.Open('{').Key("position").Number(damage.position);
        json.Key("reason").Text(damage.reason).Close('}');
    }
    json.Close(']');
}

/// A call that answers one JSON text, which `write(json)` writes.
template <class Write>
int AskForText(Session* session, Write write) {
    return session->Ask([&](Answer& answer) {
        Json json;
        write(json);
        answer.Put(json.Written());
    });
}

}  // namespace

Session* zvg_begin(double bytes, int unlimited) {
    OpenOptions options;
    options.unlimited = unlimited != 0;
    options.cacheBytes = 12 << 20;  // what a module's memory grows by once, it never gives back
    return new (std::nothrow) Session(static_cast<std::uint64_t>(bytes), options);
}

void zvg_end(Session* session) {
    delete session;
}

int zvg_bring(Session* session, double position, const std::uint8_t* bytes, std::uint32_t size) {
    return session->Do([&](Answer&) {
        if (!session->Stream().Add(static_cast<std::uint64_t>(position), bytes, size)) {
            throw Error(Status::Usage, "bytes that begin within a block");
        }
    });
}

const std::uint8_t* zvg_answer(Session* session) {
    return session->LastAnswer().Bytes().data();
}

std::uint32_t zvg_answer_size(Session* session) {
    return static_cast<std::uint32_t>(session->LastAnswer().Bytes().size());
}

int zvg_open(Session* session) {
    return AskForText(session, [&](Json& json) {
        session->Open();
        WriteInfo(json, session->File().Head());
    });
}

int zvg_floors(Session* session) {
    return AskForText(session, [&](Json& json) { WriteFloors(json, session->File().Floors()); });
}

int zvg_find(Session* session, const std::uint8_t* request, std::uint32_t size) {
    return AskForText(session, [&](Json& json) {
        WriteFound(json, session->File(), Request::Of(request, size));
    });
}

int zvg_element(Session* session, std::uint32_t floor, std::uint32_t position) {
    return AskForText(session, [&](Json& json) {
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
    return AskForText(session,
                      [&](Json& json) { WriteDamages(json, session->File().DamageMet()); });
}

int zvg_verify(Session* session) {
    return AskForText(session, [&](Json& json) {
        session->Stream().Seek(0);
        WriteDamages(json, VerifyFile(session->Stream()));
    });
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
