// --size, and how it is done.
#include "common/errors.h"
#include "progress.h"
#include "steps.h"

namespace zv {

namespace {

class SizeStep : public Step, public Smoothable {
 public:
  explicit SizeStep(SizeArgument size) : size_(size) {}

  void smooth() override { flags_ |= SIZE_RESAMPLE; }
  void favorBlack() { flags_ |= SIZE_FAVOR_BLACK; }

  void apply(Picture& picture) const override {
    const SIZE size = size_.resolve(picture->Width, picture->Height);
    const ProgressLine progress("size");
    check(Zv_SizeBitmap(picture.handle(), size.cx, size.cy, flags_), "change the size");
  }

 private:
  SizeArgument size_;
  unsigned flags_ = 0;
};

void parseSizeStep(StepList& steps, Arguments& arguments, const std::string& option) {
  steps.add(std::make_unique<SizeStep>(parseSize(option, arguments.takeValue(option))));
}

void parseResample(StepList& steps, Arguments&, const std::string& option) {
  steps.refined<Smoothable>(option, "--size or --rotate").smooth();
}

void parseFavorBlack(StepList& steps, Arguments&, const std::string& option) {
  steps.refined<SizeStep>(option, "--size").favorBlack();
}

const StepOption options[] = {
    {"--size", "WxH", "New size in pixels; Wx and xH keep the proportions, P% scales both sides.", parseSizeStep},
    {"--resample", "", "  after --size or --rotate: smooth results instead of the nearest pixel.", parseResample},
    {"--favor-black", "", "  after --size: thin black lines of 1-bit pictures survive shrinking.", parseFavorBlack},
};

}  // namespace

const std::span<const StepOption> sizeOptions = options;

}  // namespace zv
