// What zv region does with a picture: selections by shape, colour or mask, combined one after the other, and what is
// done with the selection. Coordinates are pixels of the picture as seen, from its upper left corner.
#include <functional>

#include "common/wic.h"
#include "progress.h"
#include "steps.h"

namespace zv {

namespace {

constexpr RegionXForm asSeen = {0, 1, 1, 1, 1, 0, 0};
constexpr unsigned outlinePhase = 0;

using SelectFunction = std::function<int(BitmapHandle*, int combineMode)>;

class SelectStep : public Step {
 public:
  SelectStep(SelectFunction select, int mode) : select_(std::move(select)), mode_(mode) {}
  void combineBy(int mode) { mode_ = mode; }

  void apply(Picture& picture) const override {
    const ProgressLine progress("select");
    check(select_(picture.handle(), mode_), "select");
  }

 private:
  SelectFunction select_;
  int mode_;
};

class FillStep : public Step {
 public:
  explicit FillStep(COLORREF color) : color_(color) {}

  void apply(Picture& picture) const override {
    const ProgressLine progress("fill");
    check(Zv_FillBitmap(picture.handle(), color_), "fill");
  }

 private:
  COLORREF color_;
};

/// A device context that draws into the picture.
class PictureDC {
 public:
  explicit PictureDC(Picture& picture) : dc_(Zv_CreateZavoDC(picture.handle())) {
    if (dc_ == nullptr) throw Failure("cannot draw on a picture of this depth (--bits 24 helps)");
  }
  PictureDC(const PictureDC&) = delete;
  PictureDC& operator=(const PictureDC&) = delete;
  ~PictureDC() { Zv_DeleteZavoDC(dc_); }

  [[nodiscard]] HDC get() const { return dc_; }

 private:
  HDC dc_;
};

class OutlineStep : public Step {
 public:
  void apply(Picture& picture) const override {
    const PictureDC dc(picture);
    SelectClipRgn(dc.get(), nullptr);
    check(Zv_FrameBitmapRgn(dc.get(), picture.handle(), &asSeen, outlinePhase), "outline the selection");
  }
};

class DeselectStep : public Step {
 public:
  void apply(Picture& picture) const override { check(Zv_FreeBitmapRgn(picture.handle()), "deselect"); }
};

class WriteMaskStep : public Step {
 public:
  explicit WriteMaskStep(std::string file) : file_(std::move(file)) { outputFormat(file_); }

  void apply(Picture& picture) const override {
    Picture mask;
    check(Zv_CreateMaskFromBitmapRgn(picture.handle(), mask.handle()), "make a mask");
    writePicture(file_, mask);
  }

 private:
  std::string file_;
};

class ReportStep : public Step {
 public:
  void apply(Picture& picture) const override {
    unsigned area = 0;
    RECT bounds = {};
    check(Zv_GetBitmapRgnArea(picture.handle(), &area), "measure the selection");
    check(Zv_GetBitmapRgnBounds(picture.handle(), &asSeen, &bounds), "measure the selection");
    std::printf("selection: %u pixels in %ldx%ld at %ld,%ld\n", area, bounds.right - bounds.left,
                bounds.bottom - bounds.top, bounds.left, bounds.top);
  }
};

// Selections after the first add to it unless --mode says otherwise.
void addSelection(StepList& steps, SelectFunction select) {
  const bool first = !steps.any<SelectStep>();
  steps.add(std::make_unique<SelectStep>(std::move(select), first ? CombineSet : CombineOr));
}

RECT rectOf(const std::vector<int>& numbers) {
  return {numbers[0], numbers[1], numbers[0] + numbers[2], numbers[1] + numbers[3]};
}

std::vector<int> takeNumbers(Arguments& arguments, const std::string& option, size_t fewest) {
  return parseNumbers(option, arguments.takeValue(option), fewest);
}

void parseRect(StepList& steps, Arguments& arguments, const std::string& option) {
  const RECT rect = rectOf(takeNumbers(arguments, option, 4));
  addSelection(steps,
               [rect](BitmapHandle* bitmap, int mode) { return Zv_SetBitmapRgnRect(bitmap, &asSeen, &rect, mode); });
}

void parseEllipse(StepList& steps, Arguments& arguments, const std::string& option) {
  const RECT rect = rectOf(takeNumbers(arguments, option, 4));
  addSelection(steps,
               [rect](BitmapHandle* bitmap, int mode) { return Zv_SetBitmapRgnEllipse(bitmap, &asSeen, &rect, mode); });
}

void parseRoundRect(StepList& steps, Arguments& arguments, const std::string& option) {
  const std::vector<int> numbers = takeNumbers(arguments, option, 6);
  addSelection(steps,
               [rect = rectOf(numbers), width = numbers[4], height = numbers[5]](BitmapHandle* bitmap, int mode) {
                 return Zv_SetBitmapRgnRoundRect(bitmap, &asSeen, &rect, width, height, mode);
               });
}

void parsePolygon(StepList& steps, Arguments& arguments, const std::string& option) {
  const std::vector<int> numbers = takeNumbers(arguments, option, 6);
  std::vector<POINT> points;
  for (size_t i = 0; i + 1 < numbers.size(); i += 2) points.push_back({numbers[i], numbers[i + 1]});
  addSelection(steps, [points](BitmapHandle* bitmap, int mode) {
    const int count = static_cast<int>(points.size());
    return Zv_SetBitmapRgnPolygon(bitmap, &asSeen, points.data(), count, POLYGON_ALTERNATE, mode);
  });
}

void parseColorSelection(StepList& steps, Arguments& arguments, const std::string& option) {
  const COLORREF color = parseColor(option, arguments.takeValue(option));
  addSelection(steps, [color](BitmapHandle* bitmap, int mode) { return Zv_SetBitmapRgnColor(bitmap, color, mode); });
}

void parseMask(StepList& steps, Arguments& arguments, const std::string& option) {
  const std::string file = arguments.takeValue(option);
  addSelection(steps, [file](BitmapHandle* bitmap, int mode) {
    PictureFile mask = readPicture(file);
    check(Zv_ChangeBitmapViewPerspective(nullptr, mask.picture.handle(), VIEW_UPRIGHT), "turn the mask upright");
    return Zv_SetBitmapRgnFromMask(bitmap, &asSeen, mask.picture.handle(), mode);
  });
}

const Choice modes[] = {{"set", CombineSet},       {"add", CombineOr},  {"subtract", CombineAndNotRegion},
                        {"intersect", CombineAnd}, {"xor", CombineXor}, {"only-new", CombineAndNotBitmap},
                        {"set-not", CombineSetNot}};

void parseMode(StepList& steps, Arguments& arguments, const std::string& option) {
  steps.refined<SelectStep>(option, "a selection").combineBy(parseChoice(option, arguments.takeValue(option), modes));
}

void parseFill(StepList& steps, Arguments& arguments, const std::string& option) {
  steps.add(std::make_unique<FillStep>(parseColor(option, arguments.takeValue(option))));
}

void parseWriteMask(StepList& steps, Arguments& arguments, const std::string& option) {
  steps.add(std::make_unique<WriteMaskStep>(arguments.takeValue(option)));
}

template <typename Kind>
void parsePlain(StepList& steps, Arguments&, const std::string&) {
  steps.add(std::make_unique<Kind>());
}

const StepOption options[] = {
    {"--rect", "X,Y,W,H", "Selects a rectangle.", parseRect},
    {"--ellipse", "X,Y,W,H", "Selects an ellipse by its bounding box.", parseEllipse},
    {"--round-rect", "X,Y,W,H,EW,EH", "Selects a rectangle with corners of an ellipse.", parseRoundRect},
    {"--polygon", "X,Y,X,Y,X,Y,...", "Selects a polygon.", parsePolygon},
    {"--color", "RRGGBB", "Selects the pixels of a colour.", parseColorSelection},
    {"--mask", "FILE", "Selects what is white in another picture.", parseMask},
    {"--mode", "MODE", "  after a selection: set, add, subtract, intersect, xor, only-new or set-not (add).",
     parseMode},
    {"--fill", "RRGGBB", "Fills the selection.", parseFill},
    {"--outline", "", "Draws the outline of the selection in stripes.", parsePlain<OutlineStep>},
    {"--write-mask", "FILE", "Writes the selection as a black and white picture.", parseWriteMask},
    {"--report", "", "Prints the number of pixels and the bounds of the selection.", parsePlain<ReportStep>},
    {"--deselect", "", "Forgets the selection.", parsePlain<DeselectStep>},
};

}  // namespace

const std::span<const StepOption> selectOptions = options;

}  // namespace zv
