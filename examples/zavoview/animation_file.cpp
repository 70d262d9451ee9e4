// The frames of a GIF file: their pixels are read as those of any file, what makes them an animation stands in the
// file's metadata.
#include <algorithm>
#include <wincodec.h>
#include <windows.h>

#include "animation.h"
#include "common/com.h"
#include "common/text.h"
#include "common/wic_frame.h"

namespace zavoview {

using zv::ComPtr;
using zv::require;

namespace {

/// Files that ask for next to no delay were made for slower machines; everyone plays them like this.
constexpr unsigned shortestFileDelay = 20;
constexpr unsigned usualDelay = 100;

/// Disposals of GIF files and of the library have the same numbers: 2 the background, 3 what was there before.
constexpr unsigned lastDisposal = 3;

/// A number of the metadata, or 0 where the file does not have it.
unsigned numberAt(IWICMetadataQueryReader* reader, const wchar_t* name) {
  PROPVARIANT value{};
  if (reader == nullptr || FAILED(reader->GetMetadataByName(name, &value))) return 0;
  unsigned number = 0;
  switch (value.vt) {
    case VT_UI1:
      number = value.bVal;
      break;
    case VT_UI2:
      number = value.uiVal;
      break;
    case VT_BOOL:
      number = value.boolVal != VARIANT_FALSE ? 1 : 0;
      break;
    default:
      break;
  }
  PropVariantClear(&value);
  return number;
}

Picture readFrame(IWICImagingFactory* factory, IWICBitmapDecoder* decoder, UINT index) {
  ComPtr<IWICBitmapFrameDecode> frame;
  require(decoder->GetFrame(index, frame.out()));
  Picture picture = zv::pictureOfFrame(factory, frame.get());
  ComPtr<IWICMetadataQueryReader> reader;
  if (FAILED(frame->GetMetadataQueryReader(reader.out()))) return picture;

  BitmapHandle& bitmap = *picture.handle();
  bitmap.PlaybackLeft = static_cast<int>(numberAt(reader.get(), L"/imgdesc/Left"));
  bitmap.PlaybackTop = static_cast<int>(numberAt(reader.get(), L"/imgdesc/Top"));
  const unsigned delay = 10 * numberAt(reader.get(), L"/grctlext/Delay");
  bitmap.PlaybackDelay = delay < shortestFileDelay ? usualDelay : delay;
  bitmap.PlaybackDisposal = std::min(numberAt(reader.get(), L"/grctlext/Disposal"), lastDisposal);
  if (numberAt(reader.get(), L"/grctlext/TransparencyFlag") != 0) {
    bitmap.Flags |= BMF_PLAYBACK_TRANSPARENT;
    bitmap.PlaybackTransparentColor = 0x01000000 | numberAt(reader.get(), L"/grctlext/TransparentColorIndex");
  }
  return picture;
}

void append(BitmapListHandle list, Picture frame) {
  zv::check(Zv_InsertBitmapListItem(list, ~0u, frame.handle()), "keep the frame");
  *frame.handle() = {};
}

AnimationFrames readFrames(IWICImagingFactory* factory, IWICBitmapDecoder* decoder) {
  AnimationFrames frames;
  GUID container;
  UINT count = 0;
  require(decoder->GetContainerFormat(&container));
  require(decoder->GetFrameCount(&count));
  if (container != GUID_ContainerFormatGif || count < 2) return frames;
  zv::check(Zv_CreateBitmapList(&frames.list), "keep the frames");
  for (UINT index = 0; index < count; index++) {
    Picture frame = readFrame(factory, decoder, index);
    frames.width = std::max(frames.width, frame->PlaybackLeft + frame->Width);
    frames.height = std::max(frames.height, frame->PlaybackTop + frame->Height);
    append(frames.list, std::move(frame));
  }
  ComPtr<IWICMetadataQueryReader> reader;
  if (SUCCEEDED(decoder->GetMetadataQueryReader(reader.out()))) {
    frames.width = std::max(frames.width, static_cast<int>(numberAt(reader.get(), L"/logscrdesc/Width")));
    frames.height = std::max(frames.height, static_cast<int>(numberAt(reader.get(), L"/logscrdesc/Height")));
  }
  return frames;
}

}  // namespace

AnimationFrames readAnimation(const std::string& path) try {
  ComPtr<IWICImagingFactory> factory;
  require(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                           reinterpret_cast<void**>(factory.out())));
  ComPtr<IWICBitmapDecoder> decoder;
  require(factory->CreateDecoderFromFilename(zv::wide(path).c_str(), nullptr, GENERIC_READ,
                                             WICDecodeMetadataCacheOnDemand, decoder.out()));
  return readFrames(factory.get(), decoder.get());
} catch (const zv::ComError& error) {
  throw zv::Failure("cannot read " + path + ": " + zv::wicReadErrorText(error.code));
} catch (const zv::Failure& failure) {
  throw zv::Failure("cannot read " + path + ": " + failure.what());
}

}  // namespace zavoview
