// The decoder gives each frame's pixels and, as metadata, the blocks that tell where and how it is shown.
#include "common/animation.h"

#include <algorithm>
#include <wincodec.h>
#include <windows.h>

#include "common/com.h"
#include "common/errors.h"
#include "common/picture.h"
#include "common/text.h"
#include "common/wic_frame.h"

namespace zv {

namespace {

constexpr unsigned hundredth = 10;  // milliseconds
constexpr COLORREF indexMark = 0x01000000;

/// The metadata of a file or a frame; one that has none answers every question with 0.
class Metadata {
 public:
  template <typename Source>
  explicit Metadata(Source* source) {
    if (FAILED(source->GetMetadataQueryReader(reader_.out()))) *reader_.out() = nullptr;
  }

  [[nodiscard]] unsigned number(const wchar_t* name) const {
    PROPVARIANT value;
    PropVariantInit(&value);
    unsigned number = 0;
    if (reader_.get() != nullptr && SUCCEEDED(reader_->GetMetadataByName(name, &value))) {
      if (value.vt == VT_UI1) number = value.bVal;
      if (value.vt == VT_UI2) number = value.uiVal;
      if (value.vt == VT_BOOL) number = value.boolVal != VARIANT_FALSE ? 1 : 0;
    }
    PropVariantClear(&value);
    return number;
  }

 private:
  ComPtr<IWICMetadataQueryReader> reader_;
};

void setParameters(BitmapHandle& bitmap, const Metadata& metadata) {
  bitmap.PlaybackLeft = static_cast<int>(metadata.number(L"/imgdesc/Left"));
  bitmap.PlaybackTop = static_cast<int>(metadata.number(L"/imgdesc/Top"));
  bitmap.PlaybackDelay = metadata.number(L"/grctlext/Delay") * hundredth;
  bitmap.PlaybackDisposal = metadata.number(L"/grctlext/Disposal");
  if (metadata.number(L"/grctlext/UserInputFlag") != 0) bitmap.Flags |= BMF_PLAYBACK_WAITUSER;
  if (metadata.number(L"/grctlext/TransparencyFlag") != 0) {
    bitmap.Flags |= BMF_PLAYBACK_TRANSPARENT;
    bitmap.PlaybackTransparentColor = indexMark | metadata.number(L"/grctlext/TransparentColorIndex");
  }
}

COLORREF backgroundOf(IWICImagingFactory* factory, IWICBitmapDecoder* decoder, const Metadata& metadata) {
  ComPtr<IWICPalette> palette;
  WICColor colors[256] = {};
  UINT count = 0;
  require(factory->CreatePalette(palette.out()));
  if (FAILED(decoder->CopyPalette(palette.get()))) return 0;
  require(palette->GetColors(256, colors, &count));
  const WICColor color = colors[metadata.number(L"/logscrdesc/BackgroundColorIndex") & 255];
  return RGB(color >> 16, color >> 8 & 255, color & 255);
}

void readFrames(Animation& animation, IWICImagingFactory* factory, IWICBitmapDecoder* decoder) {
  UINT count = 0;
  require(decoder->GetFrameCount(&count));
  if (count == 0) throw Failure("there is no frame in it");
  for (UINT i = 0; i < count; i++) {
    ComPtr<IWICBitmapFrameDecode> frame;
    require(decoder->GetFrame(i, frame.out()));
    Picture picture = pictureOfFrame(factory, frame.get());
    BitmapHandle& bitmap = *picture.handle();
    setParameters(bitmap, Metadata(frame.get()));
    animation.width = std::max(animation.width, bitmap.PlaybackLeft + bitmap.Width);
    animation.height = std::max(animation.height, bitmap.PlaybackTop + bitmap.Height);
    check(Zv_InsertBitmapListItem(animation.frames.handle(), i, &bitmap), "keep a frame");
    bitmap = {};  // the list's from now on
  }
}

}  // namespace

FrameList::FrameList() {
  check(Zv_CreateBitmapList(&list_), "make a list of frames");
}

unsigned FrameList::count() const {
  unsigned count = 0;
  Zv_GetBitmapListCount(list_, &count);
  return count;
}

BitmapHandle FrameList::at(unsigned index) const {
  BitmapHandle frame{};
  Zv_GetBitmapListItem(list_, index, &frame);
  return frame;
}

Animation readAnimation(const std::string& path) try {
  ComPtr<IWICImagingFactory> factory;
  require(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                           reinterpret_cast<void**>(factory.out())));
  ComPtr<IWICBitmapDecoder> decoder;
  require(factory->CreateDecoderFromFilename(wide(path).c_str(), nullptr, GENERIC_READ, WICDecodeMetadataCacheOnDemand,
                                             decoder.out()));
  Animation animation;
  readFrames(animation, factory.get(), decoder.get());
  const Metadata metadata(decoder.get());
  const unsigned width = metadata.number(L"/logscrdesc/Width");
  const unsigned height = metadata.number(L"/logscrdesc/Height");
  if (width != 0 && height != 0) {
    animation.width = static_cast<int>(width);
    animation.height = static_cast<int>(height);
  }
  animation.background = backgroundOf(factory.get(), decoder.get(), metadata);
  return animation;
} catch (const ComError& error) {
  throw Failure("cannot read " + path + ": " + wicReadErrorText(error.code));
} catch (const Failure& failure) {
  throw Failure("cannot read " + path + ": " + failure.what());
}

}  // namespace zv
