#include <new>

#include "web/native/Module.h"
#include "web/native/Session.h"

using namespace ZVSmartModel;
using namespace ZVSmartModel::Web;

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
