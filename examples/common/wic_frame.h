// One frame of a picture file: what reading files of one frame and of many share.
#pragma once

#include <string>
#include <wincodec.h>

#include "common/picture.h"

namespace zv {

/// Reads a frame's pixels, palette and resolution. Throws a Failure or a ComError.
Picture pictureOfFrame(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame);

/// What a failed call of a decoder means, in a few words.
std::string wicReadErrorText(HRESULT code);

}  // namespace zv
