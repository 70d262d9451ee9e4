// Reading a picture file: its first frame, and what the file is.
#include <algorithm>
#include <wincodec.h>
#include <windows.h>

#include "common/com.h"
#include "common/text.h"
#include "common/wic.h"
#include "common/wic_frame.h"

namespace zv {

namespace {

struct ContainerName {
  const GUID& guid;
  const char* name;
};

const ContainerName containerNames[] = {
    {GUID_ContainerFormatPng, "PNG"},   {GUID_ContainerFormatJpeg, "JPEG"}, {GUID_ContainerFormatBmp, "BMP"},
    {GUID_ContainerFormatTiff, "TIFF"}, {GUID_ContainerFormatGif, "GIF"},   {GUID_ContainerFormatIco, "ICO"},
};

unsigned long long fileSize(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
  return (static_cast<unsigned long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

}  // namespace

PictureFile readPicture(const std::string& path) try {
  const std::wstring widePath = wide(path);
  const ComPtr<IWICImagingFactory> factory = makeWicFactory();
  const ComPtr<IWICBitmapDecoder> decoder = openDecoder(factory.get(), widePath);
  ComPtr<IWICBitmapFrameDecode> frame;
  require(decoder->GetFrame(0, frame.out()));

  PictureFile file;
  GUID container;
  require(decoder->GetContainerFormat(&container));
  const auto* const name = std::ranges::find_if(containerNames, [&](const auto& c) { return c.guid == container; });
  file.format = name != std::end(containerNames) ? name->name : "other";
  file.bytes = fileSize(widePath);

  file.picture = pictureOfFrame(factory.get(), frame.get());
  return file;
} catch (const ComError& error) {
  throw Failure("cannot read " + path + ": " + wicReadErrorText(error.code));
} catch (const Failure& failure) {
  throw Failure("cannot read " + path + ": " + failure.what());
}

}  // namespace zv
