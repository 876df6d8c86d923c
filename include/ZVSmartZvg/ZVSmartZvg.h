#pragma once

// The whole library.

#include "ZVSmartZvg/BlockHeadInfo.h"
#include "ZVSmartZvg/BlockInfoDeal.h"
#include "ZVSmartZvg/BlockReader.h"
#include "ZVSmartZvg/BlockSaver.h"
#include "ZVSmartZvg/BlockVerifier.h"
#include "ZVSmartZvg/Comp.h"
#include "ZVSmartZvg/CompIndex.h"
#include "ZVSmartZvg/DisplayAttr.h"
#include "ZVSmartZvg/Export.h"
#include "ZVSmartZvg/Geo.h"
#include "ZVSmartZvg/GeoIndex.h"
#include "ZVSmartZvg/ParamFace.h"
