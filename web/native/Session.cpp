#include "web/native/Session.h"

namespace ZVSmartModel::Web {

void Session::Open() {
    file.reset();
    stream.Seek(0);
    file.emplace(stream, options);
}

BlockFile& Session::File() {
    if (!file) throw Error(Status::Usage, "no file is open");
    return *file;
}

int Session::Tell(const Error& error) {
    Json json;
    json.Open('{').Key("message").Text(error.what()).Key("position");
    if (error.Position() == Error::noPosition) {
        json.Null();
    } else {
        json.Number(error.Position());
    }
    json.Close('}');
    answer.Clear();
    answer.Put(json.Written());
    return static_cast<int>(error.GetStatus());
}

int Session::Settle(int outcome) {
    constexpr std::uint64_t keptBytes = 6 << 20;
    if (const std::optional<ByteRange>& miss = stream.Miss()) {
        const double range[] = {static_cast<double>(miss->position),
                                static_cast<double>(miss->size)};
        answer.Clear();
        answer.PutArray(range, 2);
        return Missing;
    }
    stream.Trim(keptBytes);
    return outcome;
}

}  // namespace ZVSmartModel::Web
