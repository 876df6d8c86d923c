#pragma once

#include "model/element/OwnedDescriptor.h"

namespace ZVSmartModel {

// Handing an open file over a local socket to another process.

/// Passes `file` on, or word that there is none where it is not open. Never waits: false where
/// the other side does not take what it is passed.
bool PassFile(int socket, const OwnedDescriptor& file);

/// Waits for what PassFile passes; not open where there is no file.
OwnedDescriptor TakePassedFile(int socket);

}  // namespace ZVSmartModel
