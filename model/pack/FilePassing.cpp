#include "model/pack/FilePassing.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstring>

namespace ZVSmartModel {

namespace {

/// One byte, which a descriptor may go with.
struct Parcel {
    Parcel() {
        head.msg_iov = &piece;
        head.msg_iovlen = 1;
        head.msg_control = control;
        head.msg_controllen = sizeof control;
    }
    Parcel(const Parcel&) = delete;
    Parcel& operator=(const Parcel&) = delete;

    char byte = 0;
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    iovec piece = {&byte, 1};
    msghdr head = {};
};

}  // namespace

bool PassFile(int socket, const OwnedDescriptor& file) {
    Parcel parcel;
    if (file.IsOpen()) {
        cmsghdr* const part = CMSG_FIRSTHDR(&parcel.head);
        part->cmsg_level = SOL_SOCKET;
        part->cmsg_type = SCM_RIGHTS;
        part->cmsg_len = CMSG_LEN(sizeof(int));
        const int number = file.Number();
        std::memcpy(CMSG_DATA(part), &number, sizeof number);
    } else {
        parcel.head.msg_controllen = 0;
    }
    return sendmsg(socket, &parcel.head, MSG_DONTWAIT | MSG_NOSIGNAL) == 1;
}

OwnedDescriptor TakePassedFile(int socket) {
    Parcel parcel;
    ssize_t count = 0;
    do {
        count = recvmsg(socket, &parcel.head, MSG_CMSG_CLOEXEC);
    } while (count < 0 && errno == EINTR);
    const cmsghdr* const part = count == 1 ? CMSG_FIRSTHDR(&parcel.head) : nullptr;
    if (part == nullptr || part->cmsg_type != SCM_RIGHTS) return OwnedDescriptor();
    int number = -1;
    std::memcpy(&number, CMSG_DATA(part), sizeof number);
    return OwnedDescriptor(number);
}

}  // namespace ZVSmartModel
