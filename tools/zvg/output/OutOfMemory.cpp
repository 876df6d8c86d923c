#include "tools/zvg/output/OutOfMemory.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "ZVSmartModel/Error.h"

namespace ZVSmartModel::Tool {

namespace {

void (*tellWhy)(const char* reason) = nullptr;

[[noreturn]] void End(const char* reason) {
    tellWhy(reason);
    std::_Exit(static_cast<int>(Status::Internal));
}

[[noreturn]] void EndWithoutMemory() {
    End("out of memory");
}

[[noreturn]] void Terminate() {
    const std::exception_ptr thrown = std::current_exception();
    if (thrown == nullptr) End("a library gave up, perhaps for lack of memory");
    try {
        std::rethrow_exception(thrown);
    } catch (const std::bad_alloc&) {
        EndWithoutMemory();
    } catch (const std::exception& error) {
        // What a thread that cannot be started ends in.
        if (std::strstr(error.what(), std::strerror(EAGAIN)) != nullptr) {
            End("out of memory or threads");
        }
        End((std::string("internal error: ") + error.what()).c_str());
    } catch (...) {
        End("internal error");
    }
}

}  // namespace

void EndWhenOutOfMemory(void (*tell)(const char* reason)) {
    tellWhy = tell;
    std::set_new_handler(EndWithoutMemory);
    std::set_terminate(Terminate);
}

}  // namespace ZVSmartModel::Tool
