#pragma once

#include <optional>

#include "ZVSmartModel/Error.h"

/// The status with which a call into the model library fails; none where it does not.
template <class Act>
std::optional<ZVSmartModel::Status> FailureOf(Act act) {
    try {
        act();
    } catch (const ZVSmartModel::Error& error) {
        return error.GetStatus();
    }
    return std::nullopt;
}
