// Another picture's brightness as the alpha of a picture.
#pragma once

#include <string>

#include "common/picture.h"

namespace zv {

/// Gives the picture, which becomes one of 32 bits, the brightness of the picture in a file as its alpha.
void setAlpha(Picture& picture, const std::string& file);

}  // namespace zv
