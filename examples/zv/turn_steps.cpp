// --rotate, --flip, --mirror and --shear.
#include "progress.h"
#include "steps.h"

namespace zv {

namespace {

constexpr int fullCircle = 36000;  // hundredths of a degree
constexpr int steepestShear = 4500;

/// Steps that uncover pixels, which then need a colour: --background refines them.
class UncoveringStep : public Step {
 public:
  COLORREF background = RGB(255, 255, 255);
};

class RotateStep : public UncoveringStep, public Smoothable {
 public:
  explicit RotateStep(int angle) : angle_(angle) {}
  void smooth() override { flags_ |= ROTATE_RESAMPLE; }
  void keepSize() { flags_ &= ~unsigned{ROTATE_RESIZE}; }

  void apply(Picture& picture) const override {
    const ProgressLine progress("rotate");
    check(Zv_RotateBitmapFine(picture.handle(), angle_, flags_, background), "rotate");
  }

 private:
  int angle_;
  unsigned flags_ = ROTATE_RESIZE;
};

class ShearStep : public UncoveringStep {
 public:
  ShearStep(int angle, bool horizontal) : angle_(angle), horizontal_(horizontal) {}

  void apply(Picture& picture) const override {
    const ProgressLine progress("shear");
    check(Zv_ShearBitmap(picture.handle(), angle_, horizontal_ ? 1 : 0, background), "shear");
  }

 private:
  int angle_;
  bool horizontal_;
};

class TurnOverStep : public Step {
 public:
  using Function = int(ZAVO_CALL*)(BitmapHandle*);
  TurnOverStep(Function function, const char* label) : function_(function), label_(label) {}

  void apply(Picture& picture) const override {
    const ProgressLine progress(label_);
    check(function_(picture.handle()), label_);
  }

 private:
  Function function_;
  const char* label_;
};

void parseRotate(StepList& steps, Arguments& arguments, const std::string& option) {
  const int angle = parseHundredths(option, arguments.takeValue(option), -fullCircle, fullCircle);
  steps.add(std::make_unique<RotateStep>(angle));
}

void parseShear(StepList& steps, Arguments& arguments, const std::string& option) {
  const int angle = parseHundredths(option, arguments.takeValue(option), -steepestShear, steepestShear);
  steps.add(std::make_unique<ShearStep>(angle, option == "--shear"));
}

void parseFlip(StepList& steps, Arguments&, const std::string&) {
  steps.add(std::make_unique<TurnOverStep>(Zv_FlipBitmap, "flip"));
}

void parseMirror(StepList& steps, Arguments&, const std::string&) {
  steps.add(std::make_unique<TurnOverStep>(Zv_ReverseBitmap, "mirror"));
}

void parseKeepSize(StepList& steps, Arguments&, const std::string& option) {
  steps.refined<RotateStep>(option, "--rotate").keepSize();
}

void parseBackground(StepList& steps, Arguments& arguments, const std::string& option) {
  steps.refined<UncoveringStep>(option, "--rotate or --shear").background =
      parseColor(option, arguments.takeValue(option));
}

const StepOption options[] = {
    {"--rotate", "DEGREES", "Turns clockwise, by up to two decimals of a degree; the picture grows.", parseRotate},
    {"--keep-size", "", "  after --rotate: the size stays, corners are cut.", parseKeepSize},
    {"--flip", "", "Top to bottom.", parseFlip},
    {"--mirror", "", "Left to right.", parseMirror},
    {"--shear", "DEGREES", "Slants by -45 to 45 degrees, rows against each other.", parseShear},
    {"--shear-columns", "DEGREES", "The same, columns against each other.", parseShear},
    {"--background", "RRGGBB", "  after --rotate or --shear: the colour of what is uncovered (white).",
     parseBackground},
};

}  // namespace

const std::span<const StepOption> turnOptions = options;

}  // namespace zv
