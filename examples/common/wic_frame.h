// What reading files of one frame and of many share, and writing too: the factory, the decoder, one frame. Throw a
// ComError.
#pragma once

#include <string>
#include <wincodec.h>

#include "common/com.h"
#include "common/picture.h"

namespace zv {

ComPtr<IWICImagingFactory> makeWicFactory();

/// Opens a picture file of any kind that the system knows.
ComPtr<IWICBitmapDecoder> openDecoder(IWICImagingFactory* factory, const std::wstring& path);

/// Reads a frame's pixels, palette and resolution. Throws a Failure or a ComError.
Picture pictureOfFrame(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame);

/// What a failed call of a decoder means, in a few words.
std::string wicReadErrorText(HRESULT code);

}  // namespace zv
