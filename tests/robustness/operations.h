// Every operation that takes something from the platform or walks through a bitmap's rows, ready to be run.
#pragma once

#include <zavo.h>

#include <span>
#include <string>
#include <vector>

#include "support/test_bitmap.h"

namespace zavotest {

// What an operation works on.
struct Subjects {
  // `bitmap` has noise, a random palette and a region.
  Subjects(int bits, int memoryType);

  TestBitmap bitmap;
  TestBitmap out;  // empty
};

struct Operation {
  const char* name;
  int (*run)(Subjects&);                   // above 0: success; what it made besides `out` is freed again
  std::vector<std::string> survived = {};  // functions whose refusal makes no difference to the pixels
  bool definesPixels = true;               // else they are zero, or undefined in the global memory of a legacy host
};

[[nodiscard]] std::span<const Operation> operations();

}  // namespace zavotest
