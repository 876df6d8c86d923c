#pragma once

#include <typeinfo>
#include <unordered_map>

namespace ZVSmartModel {

/// Answers that hold for all objects of a class: the first of each class is asked. A cast walks all
/// the bases of what it is refused for, and a model has hundreds of thousands of entities of a few
/// dozen classes.
template <typename Answer>
class PerClass {
  public:
    /// What `ask` answered for the first object of the class that `object` is of.
    template <typename Object, typename Ask>
    const Answer& Of(const Object& object, Ask ask) {
        const auto [place, isNew] = answers.try_emplace(&typeid(object));
        if (isNew) place->second = ask(object);
        return place->second;
    }

  private:
    std::unordered_map<const std::type_info*, Answer> answers;
};

/// Whether objects are of a class or one that is derived from it.
template <typename Type>
class IsOf {
  public:
    template <typename Object>
    bool operator()(const Object& object) {
        return answers.Of(object, [](const Object& first) {
            return dynamic_cast<const Type*>(&first) != nullptr;
        });
    }

  private:
    PerClass<bool> answers;
};

}  // namespace ZVSmartModel
