// The platform's decoder gives each frame's pixels and palette; the file's blocks tell where and how it is shown.
#include "common/animation.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>
#include <wincodec.h>
#include <windows.h>

#include "common/com.h"
#include "common/errors.h"
#include "common/gif_blocks.h"
#include "common/picture.h"
#include "common/text.h"
#include "common/wic_frame.h"

namespace zv {

namespace {

constexpr unsigned hundredth = 10;  // milliseconds
constexpr COLORREF indexMark = 0x01000000;

std::vector<uint8_t> bytesOfFile(const std::wstring& path) {
  std::ifstream stream(std::filesystem::path(path), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void setParameters(BitmapHandle& bitmap, const GifFrameBlocks& frame) {
  bitmap.PlaybackLeft = frame.left;
  bitmap.PlaybackTop = frame.top;
  bitmap.PlaybackDelay = frame.delay * hundredth;
  bitmap.PlaybackDisposal = frame.disposal;
  if (frame.waitsForUser) bitmap.Flags |= BMF_PLAYBACK_WAITUSER;
  if (frame.isTransparent) bitmap.Flags |= BMF_PLAYBACK_TRANSPARENT;
  bitmap.PlaybackTransparentColor = indexMark | frame.transparentIndex;
}

void readFrames(Animation& animation, IWICImagingFactory* factory, IWICBitmapDecoder* decoder,
                const GifBlocks& blocks) {
  UINT count = 0;
  require(decoder->GetFrameCount(&count));
  if (count == 0) throw Failure("there is no frame in it");
  for (UINT i = 0; i < count; i++) {
    ComPtr<IWICBitmapFrameDecode> frame;
    require(decoder->GetFrame(i, frame.out()));
    Picture picture = pictureOfFrame(factory, frame.get());
    BitmapHandle& bitmap = *picture.handle();
    if (i < blocks.frames.size()) setParameters(bitmap, blocks.frames[i]);
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
  const std::wstring widePath = wide(path);
  const ComPtr<IWICImagingFactory> factory = makeWicFactory();
  const ComPtr<IWICBitmapDecoder> decoder = openDecoder(factory.get(), widePath);
  const GifBlocks blocks = readGifBlocks(bytesOfFile(widePath));
  Animation animation;
  readFrames(animation, factory.get(), decoder.get(), blocks);
  if (blocks.width != 0 && blocks.height != 0) {
    animation.width = blocks.width;
    animation.height = blocks.height;
  }
  animation.background = blocks.background;
  return animation;
} catch (const ComError& error) {
  throw Failure("cannot read " + path + ": " + wicReadErrorText(error.code));
} catch (const Failure& failure) {
  throw Failure("cannot read " + path + ": " + failure.what());
}

}  // namespace zv
