#include "model/import/ifc/BooleanStep.h"

#include <utility>

namespace ZVSmartModel {

namespace {

BooleanStep* current = nullptr;

}  // namespace

BooleanStep::BooleanStep(std::function<void(int)> failed)
    : failed(std::move(failed)), outer(std::exchange(current, this)) {}

BooleanStep::~BooleanStep() {
    current = outer;
}

BooleanStep* BooleanStep::Current() {
    return current;
}

void BooleanStep::Take(bool succeeded, int entity) {
    ++count;
    if (!succeeded) failed(entity);
}

}  // namespace ZVSmartModel
