#pragma once

#include <functional>

namespace ZVSmartModel {

/// The place of our boolean step behind the library's: while one lives, it is told what the
/// library has cut and what could not be. They may be nested; the innermost is told.
class BooleanStep {
  public:
    /// `failed` is given the number of the entity that the library cut: an element whose opening
    /// it is, or a boolean result.
    explicit BooleanStep(std::function<void(int entity)> failed);
    ~BooleanStep();
    BooleanStep(const BooleanStep&) = delete;
    BooleanStep& operator=(const BooleanStep&) = delete;

    /// How many operations there have been.
    int Count() const { return count; }

    void Take(bool succeeded, int entity);
    static BooleanStep* Current();

  private:
    std::function<void(int)> failed;
    BooleanStep* outer;
    int count = 0;
};

}  // namespace ZVSmartModel
