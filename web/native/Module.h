#pragma once

#include <cstdint>

// The functions of the WebAssembly module. A file is asked through a session, and brought to it as
// it is missed. What returns a number returns Session::Outcome or a Status; the answer lies in the
// session until its next call. Texts are JSON in UTF-8, requests as CallRequest.h describes them.

#ifdef __EMSCRIPTEN__
#define ZVG_WEB_CALL __attribute__((used, visibility("default")))
#else
#define ZVG_WEB_CALL
#endif

namespace ZVSmartModel::Web {
class Session;
class Scene;
}  // namespace ZVSmartModel::Web

extern "C" {

/// Begins to ask a file of `bytes` bytes. Null where memory runs out.
ZVG_WEB_CALL ZVSmartModel::Web::Session* zvg_begin(double bytes, int unlimited);
ZVG_WEB_CALL void zvg_end(ZVSmartModel::Web::Session* session);
/// Brings `size` bytes that stand at `position`, a multiple of 64 KiB, and are copied.
ZVG_WEB_CALL int zvg_bring(ZVSmartModel::Web::Session* session, double position,
                           const std::uint8_t* bytes, std::uint32_t size);
ZVG_WEB_CALL const std::uint8_t* zvg_answer(ZVSmartModel::Web::Session* session);
ZVG_WEB_CALL std::uint32_t zvg_answer_size(ZVSmartModel::Web::Session* session);

/// Opens the file, and answers what it says of itself.
ZVG_WEB_CALL int zvg_open(ZVSmartModel::Web::Session* session);
ZVG_WEB_CALL int zvg_floors(ZVSmartModel::Web::Session* session);
ZVG_WEB_CALL int zvg_floor(ZVSmartModel::Web::Session* session, std::uint32_t floor);
/// The elements that a request finds, in short; see Search.h.
ZVG_WEB_CALL int zvg_find(ZVSmartModel::Web::Session* session, const std::uint8_t* request,
                          std::uint32_t size);
ZVG_WEB_CALL int zvg_element(ZVSmartModel::Web::Session* session, std::uint32_t floor,
                             std::uint32_t position);
/// The picture: width and height (u32), and four bytes a pixel.
ZVG_WEB_CALL int zvg_preview(ZVSmartModel::Web::Session* session);
/// What was met so far that cannot be read.
ZVG_WEB_CALL int zvg_damage(ZVSmartModel::Web::Session* session);
/// All that is wrong in the whole file, which need not be open.
ZVG_WEB_CALL int zvg_verify(ZVSmartModel::Web::Session* session);

/// Begins to walk what a request selects; null, with an answer, where it says nothing. The session
/// must outlive it.
ZVG_WEB_CALL ZVSmartModel::Web::Scene* zvg_scene(ZVSmartModel::Web::Session* session,
                                                 const std::uint8_t* request, std::uint32_t size);
/// The next floor, as SceneWalk answers it; nothing behind the last.
ZVG_WEB_CALL int zvg_scene_next(ZVSmartModel::Web::Scene* scene);
ZVG_WEB_CALL void zvg_scene_end(ZVSmartModel::Web::Scene* scene);
}
