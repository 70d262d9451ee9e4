#include "common/picture.h"

#include "common/errors.h"
#include "common/text.h"

namespace zv {

std::string statusText(int status) {
  switch (status) {
    case KERR_NO_MEMORY:
      return "out of memory, or the picture would be too large";
    case KERR_BAD_BITMAP:
      return "there is no picture";
    case KERR_EMPTY:
      return "the picture has no pixels";
    case KERR_BAD_PARAMETER:
      return "a value is out of range";
    case KERR_BAD_DIB:
      return "a form of bitmap the library does not take";
    case KERR_BAD_BPP:
      return "not possible at this depth";
    case 0:
      return "stopped";
    default:
      return format("status %d", status);
  }
}

void check(int status, const std::string& work) {
  if (status != KSUCCESS) throw Failure("cannot " + work + ": " + statusText(status));
}

}  // namespace zv
