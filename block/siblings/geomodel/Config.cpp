#include "ZVIM/Config.h"

#include <atomic>
#include <cmath>

namespace ZVIM::GeometryPrimitiveResource {

namespace {

std::atomic<double> absTolerance{1e-6};
std::atomic<double> norTolerance{1e-6};

void SetTolerance(std::atomic<double>& tolerance, double value) {
    if (!std::isfinite(value) || value <= 0) return;
    tolerance.store(value, std::memory_order_relaxed);
}

}  // namespace

double CZVIMGeoModelConfig::getabs() {
    return absTolerance.load(std::memory_order_relaxed);
}

void CZVIMGeoModelConfig::setabs(double length) {
    SetTolerance(absTolerance, length);
}

double CZVIMGeoModelConfig::getnor() {
    return norTolerance.load(std::memory_order_relaxed);
}

void CZVIMGeoModelConfig::setnor(double angleRadians) {
    SetTolerance(norTolerance, angleRadians);
}

}  // namespace ZVIM::GeometryPrimitiveResource
