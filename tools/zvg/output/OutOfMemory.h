#pragma once

#include <exception>

/// From now on the process ends where `new` fails, or where an exception meets a function that
/// must not throw: nothing unfinished stays, `tell` is given the reason and may not need memory,
/// and the status is Internal. Libraries can then neither take lack of memory for a fault of their
/// input nor crash of it.
void EndWhenOutOfMemory(void (*tell)(const char* reason));

/// Whether memory ran out elsewhere than in `new`, as the block library's exceptions say.
bool IsOutOfMemory(const std::exception& error);
