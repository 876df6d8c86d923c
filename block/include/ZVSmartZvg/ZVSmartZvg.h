#pragma once

// The whole library, with the streams, the exception and the coder that it is used with.

#include "ZVSmartFormat/FileStream.h"
#include "ZVSmartFormat/IniFile.h"
#include "ZVSmartFormat/LzmaReadBufferInStream.h"
#include "ZVSmartFormat/MemoryStream.h"
#include "ZVSmartFormat/Stream.h"
#include "ZVSmartFormat/StreamException.h"
#include "ZVSmartLzma/LzmaTool.h"
#include "ZVSmartSerial/Serial.h"
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
