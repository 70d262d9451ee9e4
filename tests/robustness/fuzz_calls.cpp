// The calls a fuzzer makes: nearly the whole interface. Left out are the clipboard and printers, which belong to more
// than this process, files, and what only copies records.
#include <cstdlib>
#include <tuple>

#include "robustness/fuzz_world.h"

namespace zavotest {
namespace {

// Calls a function with arguments picked by their types, from left to right.
template <typename Result, typename... Arguments>
FuzzCall call(const char* name, Result(ZAVO_CALL* function)(Arguments...)) {
  return {name, [function](FuzzWorld& world) {
            (void)std::apply(function, std::tuple<Arguments...>{world.pick<Arguments>()...});
          }};
}

// The same with other types than the function's: fresh bitmaps and coordinates are told from other arguments.
template <typename... Picked, typename Function>
FuzzCall callWith(const char* name, Function function) {
  return {name,
          [function](FuzzWorld& world) { (void)std::apply(function, std::tuple<Picked...>{world.pick<Picked>()...}); }};
}

using Bitmap = BitmapHandle*;

void rows(FuzzWorld& world) {
  BitmapHandle* bitmap = world.pick<Bitmap>();
  const unsigned row = world.pick<unsigned>() % 50;
  const unsigned column = world.pick<unsigned>() % 80;
  // A byte count beyond the bitmap's end is the caller's to avoid, as in every copy of memory.
  const unsigned bytes = bitmap != nullptr ? world.below(bitmap->BytesPerLine + 1) : world.below(100);
  const int wasLocked = Zv_LockBitmap(bitmap);
  if (bitmap != nullptr && (bitmap->Flags & BMF_ALLOCATED) != 0) {
    const unsigned inside = row % static_cast<unsigned>(bitmap->Height);
    const unsigned start = column % static_cast<unsigned>(bitmap->Width);
    const unsigned rest = bitmap->BytesPerLine - start * static_cast<unsigned>(bitmap->BitsPerPixel) / 8;
    Zv_PutBitmapRow(bitmap, world.buffer(), inside, bytes);
    Zv_GetBitmapRow(bitmap, world.buffer(), inside, bytes);
    Zv_GetBitmapRowCol(bitmap, world.buffer(), inside, start, std::min(bytes, rest));
    Zv_PutBitmapRowCol(bitmap, world.buffer(), inside, start, std::min(bytes, rest));
    const unsigned end = start + world.below(static_cast<unsigned>(bitmap->Width) - start + 1);
    const unsigned segments[] = {start, end};
    Zv_PutBitmapRowSegments(bitmap, world.buffer(), inside, 0, segments, 2, world.pick<int>());
    const unsigned count = static_cast<unsigned>(bitmap->Width) - start;
    Zv_GetBitmapRowColCompressed(bitmap, nullptr, world.buffer(), inside, start, count);
    Zv_PutBitmapRowColCompressed(bitmap, nullptr, world.buffer(), inside, start, count);
    Zv_GetBitmapRowCompressed(bitmap, nullptr, world.buffer(), inside, 1);
    Zv_PutBitmapRowCompressed(bitmap, nullptr, world.buffer(), inside, 1);
  }
  Zv_UnlockBitmap(bitmap, wasLocked);
}

void dither(FuzzWorld& world) {
  BitmapHandle* bitmap = world.anyBitmap();
  if (Zv_StartDithering(bitmap, world.pick<const RGBQUAD*>(), world.pick<unsigned>() % 300) == KSUCCESS) {
    for (int line = 0; line < 3; ++line) Zv_DitherLine(bitmap, world.buffer(), world.buffer() + 100000);
  }
  Zv_StopDithering(bitmap);
}

void resizeRows(FuzzWorld& world) {
  ResizeState* state = nullptr;
  const auto side = [&] { return world.oneIn(15) ? world.pick<int>() % 3000 : static_cast<int>(world.below(99)); };
  if (Zv_StartResize(side(), side(), side(), side(), &state) != KSUCCESS) return;
  for (int i = 0; i < 12; ++i) {
    const int row = world.oneIn(3) ? static_cast<int>(world.below(99)) : i;
    Zv_Resize(world.buffer(), row, world.pick<int>(), world.pick<int*>(), world.pick<int*>(), state);
  }
  Zv_StopResize(state);
}

BitmapListHandle listOfCopies(FuzzWorld& world) {
  BitmapListHandle list = nullptr;
  if (Zv_CreateBitmapList(&list) != KSUCCESS) return nullptr;
  for (unsigned i = world.below(4); i > 0; --i) {
    BitmapHandle item{};
    if (Zv_CopyBitmap(&item, world.anyBitmap()) != KSUCCESS) continue;
    item.PlaybackLeft = world.pick<Coordinate>();
    item.PlaybackTop = world.pick<Coordinate>();
    item.PlaybackDelay = world.below(3);
    item.PlaybackDisposal = world.pick<int>();
    item.Flags |= world.pick<unsigned>() & (BMF_PLAYBACK_TRANSPARENT | BMF_PLAYBACK_WAITUSER);
    if (Zv_InsertBitmapListItem(list, world.pick<unsigned>() % 5, &item) != KSUCCESS) Zv_FreeBitmap(&item);
  }
  return list;
}

void lists(FuzzWorld& world) {
  BitmapListHandle list = listOfCopies(world);
  BitmapListHandle copy = nullptr;
  BitmapHandle item{};
  if (Zv_CopyBitmapListItems(&copy, list, world.pick<unsigned>() % 5, world.pick<unsigned>() % 6) == KSUCCESS) {
    (void)Zv_ColorResBitmapList(copy, world.pick<int>(), world.pick<unsigned>() & 0x100F4, world.pick<const RGBQUAD*>(),
                                world.pick<unsigned>() % 300);
    if (Zv_RemoveBitmapListItem(copy, world.pick<unsigned>() % 5, &item) == KSUCCESS) Zv_FreeBitmap(&item);
    Zv_DeleteBitmapListItems(copy, world.pick<unsigned>() % 5, world.pick<unsigned>());
    Zv_DestroyBitmapList(copy);
  }
  Zv_DestroyBitmapList(list);
}

void play(FuzzWorld& world) {
  PlaybackHandle playback = nullptr;
  BitmapListHandle frames = listOfCopies(world);
  BitmapHandle* target = world.pick<Bitmap>();
  if (Zv_CreatePlayback(&playback, target, frames) != KSUCCESS) {
    Zv_DestroyBitmapList(frames);
    return;
  }
  for (unsigned i = world.below(40); i > 0; --i) {
    Zv_ProcessPlayback(playback, world.pick<unsigned*>());
    if (world.oneIn(4)) Zv_CancelPlaybackWait(playback);
    if (world.oneIn(9)) Zv_SetPlaybackIndex(playback, world.pick<int>());
    if (world.oneIn(9)) Zv_ValidatePlaybackLines(playback, world.pick<Coordinate>(), world.pick<int>());
    if (world.oneIn(5)) Zv_GetPlaybackUpdateRect(playback, world.pick<RECT*>(), world.pick<int>());
    if (world.oneIn(9)) {
      BitmapHandle frame{};
      if (Zv_CopyBitmap(&frame, world.anyBitmap()) != KSUCCESS) continue;
      if (Zv_AppendPlayback(playback, &frame) != KSUCCESS) Zv_FreeBitmap(&frame);
    }
  }
  Zv_DestroyPlayback(playback, &frames);
  Zv_DestroyBitmapList(frames);
}

void drawInto(FuzzWorld& world) {
  HDC dc = Zv_CreateZavoDC(world.pick<Bitmap>());
  if (dc == nullptr) return;
  Ellipse(dc, static_cast<int>(world.below(90)) - 20, 0, 30, static_cast<int>(world.below(90)));
  Zv_DeleteZavoDC(dc);
}

void exchangeDib(FuzzWorld& world) {
  HGLOBAL dib = Zv_ConvertToDIB(world.pick<Bitmap>());
  if (dib != nullptr && Zv_ChangeFromDIB(world.pick<FreshBitmap>(), dib) != KSUCCESS) GlobalFree(dib);
}

void exchangeDdb(FuzzWorld& world) {
  HDC dc = world.pick<HDC>();
  HBITMAP ddb = Zv_ConvertToDDB(dc, world.pick<Bitmap>());
  if (Zv_ChangeFromDDB(dc, world.pick<FreshBitmap>(), ddb, nullptr) != KSUCCESS && ddb != nullptr) {
    DeleteObject(ddb);
  }
}

// Whether painting or copying a rectangle takes long: what is off the device is scaled and converted all the same.
bool isHuge(const RECT* rect) {
  if (rect == nullptr) return false;
  const int64_t width = int64_t{rect->right} - rect->left;
  const int64_t height = int64_t{rect->bottom} - rect->top;
  return width != 0 && std::abs(height) > 1000000 / std::abs(width);
}

void paint(FuzzWorld& world) {
  const auto function = world.oneIn(2) ? Zv_PaintDC : Zv_PaintRgnDC;
  const RECT* destination = world.pick<const RECT*>();
  if (isHuge(destination)) return;
  function(world.pick<HDC>(), world.pick<Bitmap>(), world.pick<const RECT*>(), world.pick<const RECT*>(), destination,
           world.pick<const RECT*>(), world.pick<DWORD>());
}

void paintHeldRows(FuzzWorld& world) {
  const auto function = world.oneIn(2) ? Zv_PaintDCBuffer : Zv_PaintRgnDCBuffer;
  BitmapHandle* bitmap = world.anyBitmap();
  const RECT* destination = world.pick<const RECT*>();
  if (isHuge(destination)) return;
  const auto fitting = static_cast<int>(FuzzWorld::bufferBytes / std::max(bitmap->BytesPerLine, 4u));
  const int rowCount = std::min(fitting, static_cast<int>(world.below(40)));
  function(world.pick<HDC>(), bitmap, world.pick<const RECT*>(), world.pick<const RECT*>(), destination,
           world.pick<const RECT*>(), SRCCOPY, world.buffer(), world.pick<int>(), rowCount);
}

void regionHandle(FuzzWorld& world) {
  HRGN region = nullptr;
  Zv_GetBitmapRgnHandle(world.pick<Bitmap>(), world.pick<const RegionXForm*>(), &region);
  if (region != nullptr) DeleteObject(region);
}

void paintPalette(FuzzWorld& world) {
  HPALETTE palette = Zv_CreatePaintPalette(world.pick<HDC>(), world.pick<Bitmap>());
  if (palette != nullptr) DeleteObject(palette);
}

void duplicate(FuzzWorld& world) {
  BitmapHandle* from = world.pick<Bitmap>();
  BitmapHandle* to = world.pick<FreshBitmap>();
  if (from == to || to == nullptr) return;
  // What is not duplicated is shared, and must not be freed twice.
  (void)Zv_DupBitmapNewDim(to, from, world.pick<Coordinate>(), world.pick<Coordinate>(),
                           from != nullptr ? from->BitsPerPixel : 1,
                           world.pick<unsigned>() | DUP_STORAGE | DUP_PALETTE | DUP_REGION);
}

void reduce(FuzzWorld& world) {
  BitmapHandle* from = world.pick<Bitmap>();
  BitmapHandle* to = world.oneIn(2) ? nullptr : world.pick<FreshBitmap>().record;  // null: in place
  (void)Zv_ColorResBitmap(from, to, world.pick<int>(), world.pick<unsigned>() & 0x100F4, world.pick<const RGBQUAD*>(),
                          world.pick<unsigned>() % 257);
}

void capture(FuzzWorld& world) {
  HDC dc = world.pick<HDC>();
  const RECT* rect = world.pick<const RECT*>();
  if (dc != nullptr && !isHuge(rect)) Zv_ScreenCaptureBitmap(dc, world.pick<FreshBitmap>(), rect);
}

void polygon(FuzzWorld& world) {
  POINT points[4];
  for (POINT& point : points) point = {int{world.pick<Coordinate>()}, int{world.pick<Coordinate>()}};
  Zv_SetBitmapRgnPolygon(world.pick<Bitmap>(), world.pick<const RegionXForm*>(), points, 4, world.pick<int>(),
                         world.pick<int>());
}

void putColors(FuzzWorld& world) {
  Zv_PutBitmapColors(world.pick<Bitmap>(), world.pick<int>(), world.pick<unsigned>() % 257,
                     world.pick<const RGBQUAD*>());
}

void makePalette(FuzzWorld& world) {
  BitmapHandle* bitmap = world.pick<Bitmap>();
  if (bitmap == nullptr || bitmap->Palette == nullptr) Zv_CreateBitmapFixedPalette(bitmap);
}

std::vector<FuzzCall> makeCalls() {
  return {
      {"renew", [](FuzzWorld& world) { world.renew(*world.anyBitmap()); }},
      {"rows", rows},
      {"lists", lists},
      {"play", play},
      {"dither", dither},
      {"resize rows", resizeRows},
      {"draw", drawInto},
      {"DIB", exchangeDib},
      {"DDB", exchangeDdb},
      {"paint", paint},
      {"paint held rows", paintHeldRows},
      {"region handle", regionHandle},
      {"paint palette", paintPalette},

      callWith<FreshBitmap, int, Coordinate, Coordinate, int, int, const RGBQUAD*, int>("create", Zv_CreateBitmap),
      {"duplicate", duplicate},
      callWith<FreshBitmap, Bitmap>("copy", Zv_CopyBitmap),
      callWith<FreshBitmap, Bitmap, Coordinate, Coordinate, Coordinate, Coordinate>("copy rectangle",
                                                                                    Zv_CopyBitmapRect),
      callWith<Bitmap, Coordinate, Coordinate, Coordinate, Coordinate>("trim", Zv_TrimBitmap),
      callWith<FreshBitmap, Bitmap, int>("perspective", Zv_ChangeBitmapViewPerspective),
      callWith<std::nullptr_t, Bitmap, int>("perspective in place", Zv_ChangeBitmapViewPerspective),
      {"reduce", reduce},
      callWith<const BitmapHandle*, FreshBitmap>("mask", Zv_CreateMaskFromBitmapRgn),
      callWith<Bitmap, FreshBitmap>("alpha", Zv_GetBitmapAlpha),
      {"capture", capture},
      callWith<Bitmap, Coordinate, Coordinate, unsigned>("size", Zv_SizeBitmap),
      callWith<Bitmap, Coordinate, Coordinate>("resample", Zv_ResampleBitmap),
      callWith<Bitmap, Coordinate>("height", Zv_ChangeBitmapHeight),
      {"polygon", polygon},
      callWith<Bitmap, const RegionXForm*, const RECT*, Coordinate, Coordinate, int>("round rectangle",
                                                                                     Zv_SetBitmapRgnRoundRect),
      callWith<Bitmap, Coordinate, Coordinate, Coordinate, Coordinate, Bitmap, Coordinate, Coordinate, unsigned>(
          "combine", Zv_CombineBitmap),
      callWith<Bitmap, Coordinate, Coordinate, COLORREF>("put pixel", Zv_PutPixelColor),
      callWith<Bitmap, Coordinate, Coordinate>("get pixel", Zv_GetPixelColor),
      {"colours", putColors},
      {"fixed palette", makePalette},

      call("Zv_TrimBitmapHeap", Zv_TrimBitmapHeap),
      call("Zv_CopyBitmapData", Zv_CopyBitmapData),
      call("Zv_PointFromBitmap", Zv_PointFromBitmap),
      call("Zv_RectToBitmap", Zv_RectToBitmap),
      call("Zv_IsGrayScaleBitmap", Zv_IsGrayScaleBitmap),
      call("Zv_TranslateBitmapColor", Zv_TranslateBitmapColor),
      call("Zv_SetPaintIntensity", Zv_SetPaintIntensity),
      call("Zv_SetPaintContrast", Zv_SetPaintContrast),
      call("Zv_SetPaintGamma", Zv_SetPaintGamma),
      call("Zv_SetDisplayMode", Zv_SetDisplayMode),
      call("Zv_DefaultDithering", Zv_DefaultDithering),
      call("Zv_GetDitherFlags", Zv_GetDitherFlags),
      call("Zv_SetBitmapRgnRect", Zv_SetBitmapRgnRect),
      call("Zv_SetBitmapRgnEllipse", Zv_SetBitmapRgnEllipse),
      call("Zv_SetBitmapRgnHandle", Zv_SetBitmapRgnHandle),
      call("Zv_SetBitmapRgnColor", Zv_SetBitmapRgnColor),
      call("Zv_SetBitmapRgnFromMask", Zv_SetBitmapRgnFromMask),
      call("Zv_OffsetBitmapRgn", Zv_OffsetBitmapRgn),
      call("Zv_FreeBitmapRgn", Zv_FreeBitmapRgn),
      call("Zv_IsPtInBitmapRgn", Zv_IsPtInBitmapRgn),
      call("Zv_GetBitmapRgnBounds", Zv_GetBitmapRgnBounds),
      call("Zv_FrameBitmapRgn", Zv_FrameBitmapRgn),
      call("Zv_ResizeBitmap", Zv_ResizeBitmap),
      call("Zv_FlipBitmap", Zv_FlipBitmap),
      call("Zv_ReverseBitmap", Zv_ReverseBitmap),
      call("Zv_ShearBitmap", Zv_ShearBitmap),
      call("Zv_RotateBitmapFine", Zv_RotateBitmapFine),
      call("Zv_IntRotateBitmapFine", Zv_IntRotateBitmapFine),
      call("Zv_RotateBitmap", Zv_RotateBitmap),
      call("Zv_RotateBitmapViewPerspective", Zv_RotateBitmapViewPerspective),
      call("Zv_FillBitmap", Zv_FillBitmap),
      call("Zv_ClearBitmap", Zv_ClearBitmap),
      call("Zv_GrayScaleBitmap", Zv_GrayScaleBitmap),
      call("Zv_HalfToneBitmap", Zv_HalfToneBitmap),
      call("Zv_HalfToneBitmapExt", Zv_HalfToneBitmapExt),
      call("Zv_UnderlayBitmap", Zv_UnderlayBitmap),
      call("Zv_SetBitmapAlpha", Zv_SetBitmapAlpha),
      call("Zv_CopyPlaybackParms", Zv_CopyPlaybackParms),
  };
}

}  // namespace

const std::vector<FuzzCall>& fuzzCalls() {
  static const std::vector<FuzzCall> calls = makeCalls();
  return calls;
}

}  // namespace zavotest
