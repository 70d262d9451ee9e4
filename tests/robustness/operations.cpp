#include "robustness/operations.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

#include "support/canvas.h"

namespace zavotest {
namespace {

constexpr unsigned duplicatesAll = DUP_STORAGE | DUP_PALETTE | DUP_REGION;
constexpr RECT shape = {3, 1, 30, 9};
constexpr POINT corners[] = {{2, 2}, {35, 4}, {10, 10}};
constexpr RegionXForm turned = {VIEW_TURNED_90, 1, 1, 1, 1, 0, 0};

int resultOf(HPALETTE palette) {
  if (palette == nullptr) return KERR_NO_MEMORY;
  DeleteObject(palette);
  return KSUCCESS;
}

int resultOf(HBITMAP ddb) {
  if (ddb == nullptr) return KERR_NO_MEMORY;
  DeleteObject(ddb);
  return KSUCCESS;
}

int resultOf(HGLOBAL memory) {
  if (memory == nullptr) return KERR_NO_MEMORY;
  GlobalFree(memory);
  return KSUCCESS;
}

// A refused allocation leaves the description, the request for run-length rows included.
int allocate(Subjects& s) {
  const unsigned kind = s.bitmap.Flags & (BMF_DISK | BMF_RUNLENGTH);
  Zv_InitBitmap(&s.out, 37, 11, s.bitmap.BitsPerPixel);
  s.out.Flags |= kind & BMF_RUNLENGTH;
  const BitmapHandle described = s.out;
  const int status = Zv_AllocateBitmap(&s.out, kind == BMF_DISK        ? ALLOC_DISK
                                               : kind == BMF_RUNLENGTH ? ALLOC_RUNLENGTH
                                                                       : ALLOC_MEMORY_ONLY);
  if (status != KSUCCESS) {
    EXPECT_EQ(memcmp(&described, &s.out, sizeof described), 0);
  }
  return status;
}

// Run-length rows are given up even when their table then cannot shrink; hence a copy.
int lower(Subjects& s) {
  int status = Zv_CopyBitmap(&s.out, &s.bitmap);
  if (status != KSUCCESS) return status;
  status = Zv_ChangeBitmapHeight(&s.out, 4);
  if (status != KSUCCESS && (s.out.Flags & BMF_RUNLENGTH) == 0) {
    EXPECT_EQ(bytesOf(s.out), bytesOf(s.bitmap));
  }
  if (status != KSUCCESS) Zv_FreeBitmap(&s.out);
  return status;
}

// Writes `out` over, which is half-done after a failure and then of no interest.
int overwrite(Subjects& s, int (*write)(BitmapHandle* out, BitmapHandle* from)) {
  int status = Zv_DupBitmapNewDim(&s.out, &s.bitmap, 29, 9, s.bitmap.BitsPerPixel, duplicatesAll);
  if (status == KSUCCESS) status = write(&s.out, &s.bitmap);
  if (status != KSUCCESS) Zv_FreeBitmap(&s.out);
  return status;
}

int copyData(Subjects& s) {
  return overwrite(s, [](BitmapHandle* out, BitmapHandle* from) { return Zv_CopyBitmapData(out, from); });
}

int sizeInto(Subjects& s) {
  return overwrite(s, [](BitmapHandle* out, BitmapHandle* from) { return Zv_ResizeBitmap(from, out); });
}

// Of a copy in black and white, where there are such.
int shrinkFavoringBlack(Subjects& s) {
  TestBitmap copy;
  if (const int status = Zv_CopyBitmap(&copy, &s.bitmap); status != KSUCCESS) return status;
  static constexpr RGBQUAD colors[] = {{0, 0, 0, 0}, {255, 255, 255, 0}};
  const int status = copy.BitsPerPixel == 1 ? Zv_PutBitmapColors(&copy, 0, 2, colors) : int{KSUCCESS};
  return status == KSUCCESS ? Zv_SizeBitmap(&copy, 10, 5, SIZE_FAVOR_BLACK) : status;
}

int resizeRows(Subjects&) {
  ResizeState* state = nullptr;
  const int status = Zv_StartResize(37, 11, 50, 20, &state);
  if (status == KSUCCESS) Zv_StopResize(state);
  return status;
}

int dither(Subjects& s) {
  const std::vector<RGBQUAD> blacks(200);  // none of the palettes that need no table
  const int status = Zv_StartDithering(&s.bitmap, blacks.data(), 200);
  if (status == KSUCCESS) Zv_StopDithering(&s.bitmap);
  return status;
}

int convertBuffer(Subjects& s) {
  std::vector<uint8_t> row(400, 0x5A);
  return Zv_ConvertBuffer(row.data(), 37, 24, s.bitmap.BitsPerPixel, ORDER_BLUE_FIRST, ORDER_BLUE_FIRST, nullptr,
                          nullptr);
}

int matchTable(Subjects&) {
  unsigned* table = Zv_CreateUserMatchTable(Zv_IntGetFixedPalette(8), 256);
  if (table == nullptr) return KERR_NO_MEMORY;
  Zv_FreeUserMatchTable(table);
  return KSUCCESS;
}

int listOfCopies(Subjects& s) {
  BitmapListHandle list = nullptr;
  BitmapListHandle copy = nullptr;
  BitmapHandle item{};
  int status = Zv_CreateBitmapList(&list);
  if (status == KSUCCESS) status = Zv_CopyBitmap(&item, &s.bitmap);
  if (status == KSUCCESS) status = Zv_InsertBitmapListItem(list, 0, &item);
  if (status != KSUCCESS) Zv_FreeBitmap(&item);
  if (status == KSUCCESS) status = Zv_CopyBitmapListItems(&copy, list, 0, 1);
  if (status == KSUCCESS) status = Zv_ColorResBitmapList(copy, 4, COLORRES_OPTIMISED_PALETTE, nullptr, 0);
  if (copy != nullptr) Zv_DestroyBitmapList(copy);
  if (list != nullptr) Zv_DestroyBitmapList(list);
  return status;
}

constexpr struct {
  BITMAPINFOHEADER header;
  RGBQUAD colors[2];
  uint8_t rows[12];
} packedDib = {{sizeof(BITMAPINFOHEADER), 5, 3, 1, 1, BI_RGB, 0, 0, 0, 0, 0}, {}, {}};

int fromDib(Subjects& s) {
  return Zv_ConvertFromDIB(&s.out, reinterpret_cast<const BITMAPINFO*>(&packedDib), packedDib.rows);
}

int changedFromDib(Subjects& s) {
  HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, sizeof packedDib);
  memcpy(GlobalLock(memory), &packedDib, sizeof packedDib);
  GlobalUnlock(memory);
  const int status = Zv_ChangeFromDIB(&s.out, memory);
  if (status != KSUCCESS) GlobalFree(memory);
  return status;
}

int turnedToDib(Subjects& s) {
  BitmapHandle turned = s.bitmap;
  turned.ViewPerspective = VIEW_TURNED_90;
  return resultOf(Zv_ConvertToDIB(&turned));
}

int fromDdb(Subjects& s) {
  HDC screen = GetDC(nullptr);
  HBITMAP ddb = CreateCompatibleBitmap(screen, 30, 20);
  const int status = Zv_ConvertFromDDB(screen, &s.out, ddb, nullptr);
  DeleteObject(ddb);
  ReleaseDC(nullptr, screen);
  return status;
}

// A region keeps what is made of it, so these work on a copy, which ends with the call.

int regionHandle(Subjects& s) {
  TestBitmap copy;
  if (const int status = Zv_CopyBitmap(&copy, &s.bitmap); status != KSUCCESS) return status;
  HRGN region = nullptr;
  const int status = Zv_GetBitmapRgnHandle(&copy, &turned, &region);
  if (region != nullptr) DeleteObject(region);
  return status != 0 ? status : int{KERR_NO_MEMORY};
}

int frameRegion(Subjects& s) {
  TestBitmap copy;
  if (const int status = Zv_CopyBitmap(&copy, &s.bitmap); status != KSUCCESS) return status;
  HDC dc = CreateCompatibleDC(nullptr);
  const int status = Zv_FrameBitmapRgn(dc, &copy, &turned, 1);
  DeleteDC(dc);
  return status;
}

int regionFromHandle(Subjects& s) {
  HRGN region = CreateEllipticRgnIndirect(&shape);
  const int status = Zv_SetBitmapRgnHandle(&s.bitmap, nullptr, region, CombineOr);
  DeleteObject(region);
  return status;
}

int regionFromMask(Subjects& s) {
  TestBitmap mask;
  const std::vector<uint8_t> rows(88, 0x3C);
  Zv_InitBitmap(&mask, 37, 11, 1);
  if (const int status = Zv_AllocateBitmap(&mask, ALLOC_MEMORY); status != KSUCCESS) return status;
  Zv_LockBitmap(&mask);
  Zv_PutBitmapRow(&mask, rows.data(), 0, 88);
  return Zv_SetBitmapRgnFromMask(&s.bitmap, &turned, &mask, CombineAndNotRegion);
}

constexpr RECT paintedPlace = {5, 5, 55, 35};

int playback(Subjects& s) {
  PlaybackHandle made = nullptr;
  BitmapListHandle list = nullptr;
  BitmapHandle frame{};
  if (const int status = Zv_CreatePlayback(&made, &s.bitmap, nullptr); status != KSUCCESS) return status;
  int status = Zv_CopyBitmap(&frame, &s.bitmap);
  if (status == KSUCCESS) status = Zv_AppendPlayback(made, &frame);
  if (status != KSUCCESS) Zv_FreeBitmap(&frame);
  Zv_DestroyPlayback(made, &list);
  Zv_DestroyBitmapList(list);
  return status;
}

int paint(Subjects& s) {
  const Canvas canvas(60, 40);
  return Zv_PaintDC(canvas.dc(), &s.bitmap, nullptr, nullptr, &paintedPlace, nullptr, SRCCOPY);
}

int paintThroughRegion(Subjects& s) {
  TestBitmap copy;  // its region keeps what is made of it
  if (const int status = Zv_CopyBitmap(&copy, &s.bitmap); status != KSUCCESS) return status;
  const Canvas canvas(60, 40);
  const std::vector<uint32_t> before = canvas.pixels();
  const int status = Zv_PaintRgnDC(canvas.dc(), &copy, nullptr, nullptr, &paintedPlace, nullptr, SRCCOPY);
  const bool halfDone = status != KSUCCESS && canvas.pixels() != before;
  return halfDone ? int{KERR_BAD_PARAMETER} : status;
}

int paintRows(Subjects& s) {
  const Canvas canvas(60, 40);
  const std::vector<uint8_t> rows(s.bitmap.BytesPerLine * 11, 0x5A);
  std::vector<uint8_t> records(11 * (37 * 2 + 8));
  const bool asRuns = s.bitmap.BitsPerPixel == 1;
  if (asRuns) Zv_CompressRows(records.data(), rows.data(), 37, 11);
  return Zv_PaintDCBuffer(canvas.dc(), &s.bitmap, nullptr, nullptr, &paintedPlace, nullptr, SRCCOPY,
                          asRuns ? records.data() : rows.data(), 0, asRuns ? -11 : 11);
}

template <auto printBitmap>
int print(Subjects& s) {
  const Canvas page(60, 40);
  HDC printed = printBitmap(page.dc(), &s.bitmap, 5, 5, 50, 30, 0);
  return printed == page.dc() ? int{KSUCCESS} : int{KERR_BAD_PARAMETER};
}

template <unsigned displayMode, int deviceBits, int perspective>
int paintOn(Subjects& s) {
  TestBitmap copy;
  if (const int status = Zv_CopyBitmap(&copy, &s.bitmap); status != KSUCCESS) return status;
  copy.ViewPerspective = perspective;
  const PaintSettings settings(displayMode);
  const FakeDevice device(deviceBits);
  const Canvas canvas(60, 40);
  return Zv_PaintDC(canvas.dc(), &copy, nullptr, nullptr, &paintedPlace, nullptr, SRCCOPY);
}

int alphaInAndOut(Subjects& s) {
  TestBitmap colors;  // of the depths that have alpha
  const int bits = s.bitmap.BitsPerPixel <= 8 ? 16 : 32;
  int status = Zv_ColorResBitmap(&s.bitmap, &colors, bits, 0, nullptr, 0);
  if (status == KSUCCESS) status = Zv_SetBitmapAlpha(&colors, &s.bitmap);
  return status == KSUCCESS ? Zv_GetBitmapAlpha(&colors, &s.out) : status;
}

template <int perspective>
int combine(Subjects& s) {
  TestBitmap source;
  const int status = Zv_ChangeBitmapViewPerspective(&source, &s.bitmap, perspective);
  return status == KSUCCESS ? Zv_CombineBitmap(&s.bitmap, 1, 1, 20, 8, &source, 2, 2, COMBINE_XOR) : status;
}

int underlay(Subjects& s) {
  TestBitmap small;
  const int status = Zv_CopyBitmapRect(&small, &s.bitmap, 0, 0, 9, 5);
  small.ViewPerspective = VIEW_TURNED_90;
  return status == KSUCCESS ? Zv_UnderlayBitmap(&s.bitmap, &small, UNDERLAY_STRETCH) : status;
}

template <int combineMode>
int ellipse(Subjects& s) {
  return Zv_SetBitmapRgnEllipse(&s.bitmap, nullptr, &shape, combineMode);
}

int firstEllipse(Subjects& s) {
  int status = Zv_CopyBitmap(&s.out, &s.bitmap);
  Zv_FreeBitmapRgn(&s.out);
  if (status == KSUCCESS) status = Zv_SetBitmapRgnEllipse(&s.out, nullptr, &shape, CombineXor);
  if (status != KSUCCESS) Zv_FreeBitmap(&s.out);
  return status;
}

int reduce(Subjects& s, int bits, unsigned options) {
  return Zv_ColorResBitmap(&s.bitmap, nullptr, bits, options, nullptr, 0);
}

const std::vector<std::string> gaps = {"CreateFileA",      "CreateFileMappingA", "CreatePalette",
                                       "GetTempFileNameA", "GlobalAlloc",        "MapViewOfFile"};

const Operation table[] = {
    {"allocate", allocate, {}, false},
    {"duplicate",
     [](Subjects& s) { return Zv_DupBitmapNewDim(&s.out, &s.bitmap, 20, 9, s.bitmap.BitsPerPixel, duplicatesAll); },
     {},
     false},
    {"copy", [](Subjects& s) { return Zv_CopyBitmap(&s.out, &s.bitmap); }},
    {"copy data", copyData},
    {"copy rectangle", [](Subjects& s) { return Zv_CopyBitmapRect(&s.out, &s.bitmap, -3, 2, 50, 20); }},
    {"trim", [](Subjects& s) { return Zv_TrimBitmap(&s.bitmap, 3, 2, 20, 5); }},
    {"lower", lower},
    {"higher", [](Subjects& s) { return Zv_ChangeBitmapHeight(&s.bitmap, 15); }, {}, false},
    {"turned copy", [](Subjects& s) { return Zv_ChangeBitmapViewPerspective(&s.out, &s.bitmap, VIEW_TURNED_90); }},
    {"turned", [](Subjects& s) { return Zv_ChangeBitmapViewPerspective(nullptr, &s.bitmap, VIEW_TURNED_270); }},
    {"bottom up", [](Subjects& s) { return Zv_ChangeBitmapViewPerspective(nullptr, &s.bitmap, VIEW_BOTTOM_UP); }},
    {"list", listOfCopies},

    {"gray palette", [](Subjects&) { return resultOf(Zv_CreateGrayPalette(8)); }},
    {"fixed palette", [](Subjects&) { return resultOf(Zv_CreateFixedPalette(4)); }},
    {"match table", matchTable},
    {"convert buffer", convertBuffer},
    {"dither", dither},
    {"reduce to 8 bits", [](Subjects& s) { return reduce(s, 8, COLORRES_OPTIMISED_PALETTE); }},
    {"reduce to 1 bit", [](Subjects& s) { return reduce(s, 1, COLORRES_FIXED_PALETTE); }},
    {"reduce to nearest gray", [](Subjects& s) { return reduce(s, 4, COLORRES_GRAY_PALETTE | COLORRES_NEAREST); }},
    {"widen to 24 bits", [](Subjects& s) { return reduce(s, 24, COLORRES_BLUE_FIRST); }},
    {"reduced copy", [](Subjects& s) { return Zv_ColorResBitmap(&s.bitmap, &s.out, 0, 0, nullptr, 0); }},
    {"to DIB", [](Subjects& s) { return resultOf(Zv_ConvertToDIB(&s.bitmap)); }},
    {"turned to DIB", turnedToDib},
    {"changed to DIB", [](Subjects& s) { return resultOf(Zv_ChangeToDIB(&s.bitmap)); }},
    {"from DIB", fromDib, {"GetDC"}},
    {"changed from DIB", changedFromDib, {"GetDC"}},
    {"to DDB",
     [](Subjects& s) { return resultOf(Zv_ConvertToDDB(nullptr, &s.bitmap)); },
     {"CreatePalette", "GlobalAlloc"}},  // the picture comes out without its paint palette
    {"from DDB", fromDdb, {"GetDC"}},    // which is asked for the resolution alone
    {"put pixel", [](Subjects& s) { return Zv_PutPixelColor(&s.bitmap, 5, 15, RGB(200, 100, 50)); }},

    {"rectangle", [](Subjects& s) { return Zv_SetBitmapRgnRect(&s.bitmap, nullptr, &shape, CombineSetNot); }},
    {"ellipse and", ellipse<CombineAnd>},
    {"ellipse or", ellipse<CombineOr>},
    {"ellipse xor", ellipse<CombineXor>},
    {"first ellipse", firstEllipse},
    {"round rectangle",
     [](Subjects& s) { return Zv_SetBitmapRgnRoundRect(&s.bitmap, nullptr, &shape, 5, 4, CombineAndNotBitmap); }},
    {"polygon",
     [](Subjects& s) { return Zv_SetBitmapRgnPolygon(&s.bitmap, nullptr, corners, 3, POLYGON_ALTERNATE, CombineSet); }},
    {"region from handle", regionFromHandle},
    {"region of a colour",
     [](Subjects& s) { return Zv_SetBitmapRgnColor(&s.bitmap, Zv_GetPixelColor(&s.bitmap, 0, 0), CombineXor); }},
    {"region from mask", regionFromMask},
    {"move region", [](Subjects& s) { return Zv_OffsetBitmapRgn(&s.bitmap, 2, -3); }},
    {"region handle", regionHandle},
    {"frame region", frameRegion},

    {"size down", [](Subjects& s) { return Zv_SizeBitmap(&s.bitmap, 20, 7, 0); }},
    {"size up", [](Subjects& s) { return Zv_SizeBitmap(&s.bitmap, 60, 30, SIZE_FAVOR_BLACK); }},
    {"shrink favouring black", shrinkFavoringBlack},
    {"resample", [](Subjects& s) { return Zv_ResampleBitmap(&s.bitmap, 50, 8); }},
    {"size into", sizeInto},
    {"size rows", resizeRows},
    {"flip", [](Subjects& s) { return Zv_FlipBitmap(&s.bitmap); }},
    {"reverse", [](Subjects& s) { return Zv_ReverseBitmap(&s.bitmap); }},
    {"shear along", [](Subjects& s) { return Zv_ShearBitmap(&s.bitmap, 1500, 1, RGB(1, 2, 3)); }},
    {"shear across", [](Subjects& s) { return Zv_ShearBitmap(&s.bitmap, -1500, 0, RGB(1, 2, 3)); }},
    {"quarter turn", [](Subjects& s) { return Zv_RotateBitmap(&s.bitmap, 90, ROTATE_RESIZE, 0); }},
    {"half turn", [](Subjects& s) { return Zv_RotateBitmap(&s.bitmap, 180, 0, 0); }},
    {"rotate", [](Subjects& s) { return Zv_RotateBitmapFine(&s.bitmap, 1234, ROTATE_RESIZE | ROTATE_RESAMPLE, 0); }},
    {"grey", [](Subjects& s) { return Zv_GrayScaleBitmap(&s.bitmap); }},
    {"halftone", [](Subjects& s) { return Zv_HalfToneBitmap(&s.bitmap, HALFTONE_CLUSTERED); }},
    {"turned halftone", [](Subjects& s) { return Zv_HalfToneBitmapExt(&s.bitmap, HALFTONE_DISPERSED, 1500); }},
    {"combine", combine<VIEW_UPRIGHT>},
    {"combine with turned", combine<VIEW_TURNED_90>},
    {"underlay", underlay},
    {"alpha", alphaInAndOut},
    {"turn as seen", [](Subjects& s) { return Zv_RotateBitmapViewPerspective(&s.bitmap, 90); }},

    {"fill", [](Subjects& s) { return Zv_FillBitmap(&s.bitmap, RGB(200, 100, 50)); }},
    {"mask",
     [](Subjects& s) { return Zv_CreateMaskFromBitmapRgn(&s.bitmap, &s.out); },
     {"CreatePalette", "GlobalAlloc"}},
    {"paint", paint},
    {"playback", playback},
    {"paint through a region", paintThroughRegion},
    {"paint rows", paintRows},
    {"paint turned", paintOn<0, 24, VIEW_TURNED_90>},
    {"paint dithered", paintOn<PAINT_DITHER, 8, VIEW_TURNED_270>},
    {"paint in black and white", paintOn<PAINT_DITHER | PAINT_ORDERED_DITHER, 1, VIEW_UPRIGHT>},
    {"paint in grey", paintOn<PAINT_GRAY_1BIT, 24, VIEW_TURNED_90>},
    // A page with a gap is better than none.
    {"print", print<&Zv_PrintBitmapExt>, gaps},
    {"print fast", print<&Zv_PrintBitmapFast>, gaps},
};

}  // namespace

Subjects::Subjects(int bits, int memoryType) : bitmap(37, 11, bits, memoryType) {
  std::mt19937 random(3);
  fillWithNoise(bitmap, random);
  if (bits <= 8) giveRandomPalette(bitmap, random);
  Zv_SetBitmapRgnRect(&bitmap, nullptr, &shape, CombineSet);
}

std::span<const Operation> operations() {
  return table;
}

}  // namespace zavotest
