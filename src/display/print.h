// The printing driver behind the exported calls.
#pragma once

#include <zavo.h>

#include "display/print_job.h"

namespace zavo {

// Where a picture goes on the page, in printer pixels; 0 leaves a value to the library.
struct PrintPlace {
  int x;
  int y;
  int width;
  int height;
};

// Prints a bitmap, null for none, as a part of a job. The printer's device context, null when that fails.
[[nodiscard]] HDC printBitmap(PrintJob job, BitmapHandle* bitmap, const PrintPlace& place, bool endJob);

}  // namespace zavo
