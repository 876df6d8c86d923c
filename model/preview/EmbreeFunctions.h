#pragma once

#include <embree3/rtcore.h>

#include "model/element/LazyLibrary.h"

namespace ZVSmartModel {

/// The ray tracer.
inline constinit const LazyLibrary embree("libembree3.so.3");

ZVG_LAZY_FUNCTION(embree, rtcAttachGeometryByID);
ZVG_LAZY_FUNCTION(embree, rtcCommitGeometry);
ZVG_LAZY_FUNCTION(embree, rtcCommitScene);
ZVG_LAZY_FUNCTION(embree, rtcGetDeviceError);
ZVG_LAZY_FUNCTION(embree, rtcIntersect4);
ZVG_LAZY_FUNCTION(embree, rtcNewDevice);
ZVG_LAZY_FUNCTION(embree, rtcNewGeometry);
ZVG_LAZY_FUNCTION(embree, rtcNewScene);
ZVG_LAZY_FUNCTION(embree, rtcOccluded4);
ZVG_LAZY_FUNCTION(embree, rtcReleaseDevice);
ZVG_LAZY_FUNCTION(embree, rtcReleaseGeometry);
ZVG_LAZY_FUNCTION(embree, rtcReleaseScene);
ZVG_LAZY_FUNCTION(embree, rtcSetGeometryInstancedScene);
ZVG_LAZY_FUNCTION(embree, rtcSetGeometryTransform);
ZVG_LAZY_FUNCTION(embree, rtcSetNewGeometryBuffer);
ZVG_LAZY_FUNCTION(embree, rtcSetSceneFlags);

}  // namespace ZVSmartModel
