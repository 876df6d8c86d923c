#include "tools/zvg/import/ifc/BooleanStep.h"

#include <utility>

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
