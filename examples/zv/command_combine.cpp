// zv combine: a rectangle of one picture onto another, by an operator; inside a selection if there is one.
#include "command.h"
#include "common/wic.h"
#include "pipeline.h"

namespace zv {

namespace {

constexpr Choice operators[] = {
    {"and", COMBINE_AND},
    {"or", COMBINE_OR},
    {"xor", COMBINE_XOR},
    {"copy", COMBINE_COPY},
    {"add", COMBINE_ADD},
    {"other-minus", COMBINE_SOURCE_MINUS},
    {"minus-other", COMBINE_DESTINATION_MINUS},
    {"difference", COMBINE_DIFFERENCE},
    {"multiply", COMBINE_MULTIPLY},
    {"average", COMBINE_AVERAGE},
    {"minimum", COMBINE_MINIMUM},
    {"maximum", COMBINE_MAXIMUM},
};

std::string help() {
  return "  --with OPERATOR           and, or, xor, copy, add, other-minus, minus-other, difference, multiply,\n"
         "                            average, minimum or maximum (copy)\n"
         "  --at X,Y                  where OTHER goes (0,0)\n"
         "  --from X,Y,W,H            the rectangle of OTHER that is taken (all of it)\n"
         "  --invert-other            inverts OTHER beforehand\n"
         "  --invert-in               inverts IN beforehand\n"
         "  --invert                  inverts the result\n"
         "Only the selection of IN changes, if there is one:\n" +
         optionHelp(selectOptions);
}

struct Plan {
  int op = COMBINE_COPY;
  unsigned changes = 0;
  POINT at = {0, 0};
  std::vector<int> part;  /// x, y, width, height; empty for all.
};

POINT parsePoint(Arguments& arguments, const std::string& option) {
  const std::vector<int> numbers = parseNumbers(option, arguments.takeValue(option), 2);
  return {numbers[0], numbers[1]};
}

/// False for an option that is not one of combining.
bool takeOption(Plan& plan, Arguments& arguments, const std::string& name) {
  if (name == "--with")
    plan.op = parseChoice(name, arguments.takeValue(name), operators);
  else if (name == "--at")
    plan.at = parsePoint(arguments, name);
  else if (name == "--from")
    plan.part = parseNumbers(name, arguments.takeValue(name), 4);
  else if (name == "--invert-other")
    plan.changes |= COMBINE_SOURCE_INVERTED;
  else if (name == "--invert-in")
    plan.changes |= COMBINE_DESTINATION_INVERTED;
  else if (name == "--invert")
    plan.changes |= COMBINE_INVERT;
  else
    return false;
  return true;
}

void runCombine(Arguments& arguments) {
  const std::string input = arguments.takeOperand("the picture to read");
  const std::string other = arguments.takeOperand("the other picture");
  const std::string output = arguments.takeOperand("the file to write");
  Plan plan;
  static const std::span<const StepOption> families[] = {selectOptions};
  const StepList selections = takeSteps(arguments, families, "combine",
                                        [&](const std::string& option) { return takeOption(plan, arguments, option); });
  outputFormat(output);

  PictureFile onto = readPicture(input);
  PictureFile from = readPicture(other);
  BitmapHandle* const destination = onto.picture.handle();
  BitmapHandle* const source = from.picture.handle();
  // Places are told as seen.
  check(Zv_ChangeBitmapViewPerspective(nullptr, destination, VIEW_UPRIGHT), "turn upright");
  check(Zv_ChangeBitmapViewPerspective(nullptr, source, VIEW_UPRIGHT), "turn upright");
  selections.apply(onto.picture);
  if (plan.part.empty()) plan.part = {0, 0, source->Width, source->Height};
  check(Zv_CombineBitmap(destination, plan.at.x, plan.at.y, plan.part[2], plan.part[3], source, plan.part[0],
                         plan.part[1], static_cast<unsigned>(plan.op) | plan.changes),
        "combine");
  writePicture(output, onto.picture);
}

}  // namespace

const Command combineCommand{"combine", "IN OTHER OUT [options]", "Combines a picture with another.", help, runCombine};

}  // namespace zv
