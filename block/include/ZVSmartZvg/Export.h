#pragma once

#include "ZVSmartFormat/Api.h"

/// Marks what the shared library exports.
#define ZVLG_API ZVFT_API

/// Block files: saver, reader, verifier, and the records that they take and give.
namespace ZVSmartZvg {

/// Stands for "none" in every row number, block number and position.
constexpr unsigned int ZVLG_NONE = 0xFFFFFFFF;

}  // namespace ZVSmartZvg
