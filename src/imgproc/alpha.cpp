// The alpha channel of 16- and 32-bit bitmaps as a grey picture of its own.
#include <zavo.h>

#include "color/conversion.h"
#include "color/palettes.h"
#include "core/memory.h"
#include "core/owners.h"
#include "core/perspective.h"
#include "core/row_pass.h"
#include "core/status.h"
#include "imgproc/alpha_rows.h"

namespace zavo {
namespace {

int copyAlphaOut(BitmapHandle& alpha, BitmapHandle& bitmap) {
  RowPass pass(alpha, bitmap);
  if (const int status = pass.open(); status != KSUCCESS) return status;
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap.Height); ++y) {
    const uint8_t* from = pass.reader.row(y);
    if (from == nullptr) return pass.reader.status();
    takeAlpha(pass.writer.row(y), from, static_cast<unsigned>(bitmap.Width), bitmap.BitsPerPixel);
    if (const int status = pass.writer.commit(y); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

// `alpha` may be of any depth: its brightness counts.
int copyAlphaIn(BitmapHandle& bitmap, BitmapHandle& alpha) {
  RGBQUAD palette[256];
  readPaletteOrFixed(alpha, palette);
  RowConverter toLevels;
  if (const int status = toLevels.prepare(alpha.BitsPerPixel, 0, colorOrderOf(alpha), 0, palette, nullptr);
      status != KSUCCESS) {
    return status;
  }
  const auto width = static_cast<unsigned>(bitmap.Width);
  auto levels = OsBlock<uint8_t>::allocate(width);
  if (!levels) return KERR_NO_MEMORY;

  RowPass pass(bitmap, alpha);
  if (const int status = pass.open(); status != KSUCCESS) return status;
  for (unsigned y = 0; y < static_cast<unsigned>(bitmap.Height); ++y) {
    const uint8_t* from = pass.reader.row(y);
    if (from == nullptr) return pass.reader.status();
    uint8_t* to = pass.writer.edit(y);
    if (to == nullptr) return pass.writer.status();
    toLevels.convert(levels.get(), from, width);
    putAlpha(to, levels.get(), width, bitmap.BitsPerPixel);
    if (const int status = pass.writer.commit(y); status != KSUCCESS) return status;
  }
  return KSUCCESS;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_GetBitmapAlpha(BitmapHandle* bitmap, BitmapHandle* alpha) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (alpha == nullptr || alpha == bitmap) return KERR_BAD_PARAMETER;
  if (!hasAlpha(bitmap->BitsPerPixel)) return KERR_BAD_BPP;
  OwnedBitmap made;
  if (const int status = Zv_CreateBitmap(made.get(), ALLOC_MEMORY, bitmap->Width, bitmap->Height, 0, ORDER_RED_FIRST,
                                         nullptr, bitmap->ViewPerspective);
      status != KSUCCESS) {
    return status;
  }
  if (made->Palette == nullptr) return KERR_NO_MEMORY;
  made->XResolution = bitmap->XResolution;
  made->YResolution = bitmap->YResolution;
  if (const int status = copyAlphaOut(*made, *bitmap); status != KSUCCESS) return status;
  *alpha = made.release();
  return KSUCCESS;
}

int ZAVO_CALL Zv_SetBitmapAlpha(BitmapHandle* bitmap, BitmapHandle* alpha) {
  if (!isAllocated(bitmap) || !isAllocated(alpha)) return KERR_BAD_BITMAP;
  if (!hasAlpha(bitmap->BitsPerPixel)) return KERR_BAD_BPP;
  const ImageSize size = sizeInFrame(*alpha, bitmap->ViewPerspective);
  if (size.width != bitmap->Width || size.height != bitmap->Height) return KERR_BAD_PARAMETER;
  if (sameFrame(alpha->ViewPerspective, bitmap->ViewPerspective)) return copyAlphaIn(*bitmap, *alpha);
  OwnedBitmap turned;
  const int status = Zv_ChangeBitmapViewPerspective(turned.get(), alpha, bitmap->ViewPerspective);
  return status == KSUCCESS ? copyAlphaIn(*bitmap, *turned) : status;
}
