#include "model/element/FileSink.h"

#include <unistd.h>

#include <cerrno>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel {

using ZVSmartFormat::u64;

FileSink::FileSink(int descriptor) : file(fdopen(descriptor, "r+b")) {
    if (file) return;
    NoteFailure();
    close(descriptor);
}

FileSink::~FileSink() {
    Close();
}

u64 FileSink::Write(const void* buffer, u64 size) {
    if (!file || failure != 0) return 0;
    const u64 written = std::fwrite(buffer, 1, size, file);
    if (written != size) NoteFailure();
    return written;
}

u64 FileSink::GetPos() {
    const off_t position = file ? ftello(file) : 0;
    if (position < 0) NoteFailure();
    return static_cast<u64>(position);
}

int FileSink::Seek(u64 pos) {
    // Seeking writes out what is buffered, so this is where a full disk shows.
    if (!file || fseeko(file, static_cast<off_t>(pos), SEEK_SET) != 0) NoteFailure();
    return 0;
}

bool FileSink::Reserve(u64) {
    return true;
}

bool FileSink::Close() {
    if (!file) return failure == 0;
    if (std::fflush(file) != 0) NoteFailure();
    if (std::fclose(file) != 0) NoteFailure();
    file = nullptr;
    return failure == 0;
}

void FileSink::NoteFailure() {
    if (failure == 0) failure = errno != 0 ? errno : EIO;
}

void WriteWhole(ZVSmartFormat::CZVFTOutStream& out, std::string_view text) {
    if (out.Write(text.data(), text.size()) == text.size()) return;
    throw Error(Status::InputOutput, "not all could be written");
}

}  // namespace ZVSmartModel
