// What a picture goes through between reading and writing: steps, in the order their options stand on the command
// line. A family of steps is one file with a table of its options.
#pragma once

#include <algorithm>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "arguments.h"
#include "common/errors.h"
#include "common/picture.h"

namespace zv {

class Step {
 public:
  Step() = default;
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;
  virtual ~Step() = default;
  virtual void apply(Picture& picture) const = 0;
};

/// A step that can take smoother results: --resample refines it.
class Smoothable {
 public:
  virtual void smooth() = 0;

 protected:
  ~Smoothable() = default;
};

class StepList {
 public:
  template <typename Kind>
  Kind& add(std::unique_ptr<Kind> step) {
    Kind& added = *step;
    steps_.push_back(std::move(step));
    return added;
  }
  /// The step given last, when it is of this kind: options that only refine a step belong to it.
  template <typename Kind>
  [[nodiscard]] Kind* last() const {
    return steps_.empty() ? nullptr : dynamic_cast<Kind*>(steps_.back().get());
  }
  /// A step of this kind is in the list.
  template <typename Kind>
  [[nodiscard]] bool any() const {
    return std::any_of(steps_.begin(), steps_.end(),
                       [](const auto& step) { return dynamic_cast<Kind*>(step.get()) != nullptr; });
  }
  /// As last(), for an option that makes sense only right after such a step.
  template <typename Kind>
  [[nodiscard]] Kind& refined(const std::string& option, const std::string& what) const {
    Kind* step = last<Kind>();
    if (step == nullptr) throw UsageError(option + " must follow " + what);
    return *step;
  }
  void apply(Picture& picture) const {
    for (const auto& step : steps_) step->apply(picture);
  }

 private:
  std::vector<std::unique_ptr<Step>> steps_;
};

/// An option that adds a step to the list or refines the last one.
struct StepOption {
  const char* name;
  const char* value;  /// What follows the option, empty for nothing.
  const char* help;
  void (*parse)(StepList& steps, Arguments& arguments, const std::string& option);
};

extern const std::span<const StepOption> sizeOptions;
extern const std::span<const StepOption> colorOptions;
extern const std::span<const StepOption> turnOptions;
extern const std::span<const StepOption> selectOptions;

}  // namespace zv
