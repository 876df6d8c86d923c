#pragma once

namespace ZVSmartModel::Tool {

/// From now on the process ends where `new` fails, or where an exception meets a function that
/// must not throw: `tell` is given the reason, may not need memory and tidies up, and the status
/// is Internal. Libraries can then neither take lack of memory for a fault of their
/// input nor crash of it.
void EndWhenOutOfMemory(void (*tell)(const char* reason));

}  // namespace ZVSmartModel::Tool
