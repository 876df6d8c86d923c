#include "tools/zvg/output/OutOfMemory.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "tools/zvg/Command.h"
#include "tools/zvg/output/SignalCleanup.h"

namespace {

void (*tellWhy)(const char* reason) = nullptr;

[[noreturn]] void End(const char* reason) {
    RemoveUnfinished();
    tellWhy(reason);
    std::_Exit(static_cast<int>(ExitStatus::Internal));
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

bool IsOutOfMemory(const std::exception& error) {
    const std::string_view text = error.what();
    return dynamic_cast<const std::bad_alloc*>(&error) != nullptr || text == "bad malloc memory" ||
           text == "bad relloc memory";
}
