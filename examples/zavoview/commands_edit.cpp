// The menu Edit: undo, the clipboard, cropping and filling.
#include <windows.h>
// commdlg.h needs the rest of windows.h first.
#include <commdlg.h>

#include "commands.h"
#include "common/errors.h"
#include "resource.h"
#include "viewer.h"

namespace zavoview {

namespace {

void undo(Viewer& viewer, unsigned) {
  viewer.animation.release();
  viewer.document.undo();
  viewer.pictureChanged();
}

/// The rectangle around the selection; the selection goes along and cuts the rest off where it is pasted.
void copy(Viewer& viewer, unsigned) {
  Document& document = viewer.document;
  Picture cut;
  BitmapHandle* copied = document.handle();
  if (document.hasSelection()) {
    RECT bounds;
    zv::check(Zv_GetBitmapRgnBounds(document.handle(), nullptr, &bounds), "copy");
    zv::check(Zv_CopyBitmapRect(cut.handle(), document.handle(), bounds.left, bounds.top,
                                static_cast<unsigned>(bounds.right - bounds.left),
                                static_cast<unsigned>(bounds.bottom - bounds.top)),
              "copy");
    copied = cut.handle();
  }
  if (Zv_CopyToClipboard(viewer.window(), copied) == 0) throw zv::Failure("cannot copy: the clipboard did not take it");
}

Picture fromClipboard(Viewer& viewer) {
  Picture picture;
  if (Zv_CopyFromClipboard(viewer.window(), picture.handle()) == 0)
    throw zv::Failure("cannot paste: the clipboard has no picture that can be read");
  zv::check(Zv_ChangeBitmapViewPerspective(nullptr, picture.handle(), VIEW_UPRIGHT), "paste");
  return picture;
}

void pasteNew(Viewer& viewer, unsigned) {
  if (viewer.confirmDiscard()) viewer.openUnnamed(fromClipboard(viewer), "Pasted picture");
}

/// Where the selection is, else at the top left of what is seen. What was pasted is selected afterwards.
POINT pastePlace(Viewer& viewer) {
  RECT bounds;
  if (viewer.document.hasSelection() && Zv_GetBitmapRgnBounds(viewer.document.handle(), nullptr, &bounds) == KSUCCESS)
    return {bounds.left, bounds.top};
  const POINT corner = viewer.canvas.zoom().toPicture({0, 0});
  return {std::max(0L, corner.x), std::max(0L, corner.y)};
}

int selectPasted(BitmapHandle* bitmap, BitmapHandle* pasted, POINT place) {
  HRGN region = nullptr;
  if (const int status = Zv_GetBitmapRgnHandle(pasted, nullptr, &region); status != KSUCCESS) return status;
  OffsetRgn(region, place.x, place.y);
  const int status = Zv_SetBitmapRgnHandle(bitmap, nullptr, region, CombineSet);
  DeleteObject(region);
  return status;
}

void paste(Viewer& viewer, unsigned) {
  if (!viewer.document.hasPicture()) return pasteNew(viewer, 0);
  Picture pasted = fromClipboard(viewer);
  const POINT place = pastePlace(viewer);
  viewer.change("paste", [&](BitmapHandle* bitmap) {
    Zv_FreeBitmapRgn(bitmap);
    if (const int status = Zv_CombineBitmap(bitmap, place.x, place.y, pasted->Width, pasted->Height, pasted.handle(), 0,
                                            0, COMBINE_COPY);
        status != KSUCCESS)
      return status;
    return selectPasted(bitmap, pasted.handle(), place);
  });
}

void crop(Viewer& viewer, unsigned) {
  RECT bounds;
  zv::check(Zv_GetBitmapRgnBounds(viewer.document.handle(), nullptr, &bounds), "crop");
  viewer.change("crop", [&](BitmapHandle* bitmap) {
    Zv_FreeBitmapRgn(bitmap);
    return Zv_TrimBitmap(bitmap, bounds.left, bounds.top, static_cast<unsigned>(bounds.right - bounds.left),
                         static_cast<unsigned>(bounds.bottom - bounds.top));
  });
}

void fillWith(Viewer& viewer, COLORREF color) {
  viewer.change("fill", [color](BitmapHandle* bitmap) { return Zv_FillBitmap(bitmap, color); });
}

void fill(Viewer& viewer, unsigned) {
  fillWith(viewer, viewer.fillColor);
}

void clear(Viewer& viewer, unsigned) {
  fillWith(viewer, RGB(255, 255, 255));
}

void chooseFillColor(Viewer& viewer, unsigned) {
  static COLORREF custom[16];
  CHOOSECOLORW question{};
  question.lStructSize = sizeof question;
  question.hwndOwner = viewer.window();
  question.rgbResult = viewer.fillColor;
  question.lpCustColors = custom;
  question.Flags = CC_RGBINIT | CC_FULLOPEN;
  if (ChooseColorW(&question)) viewer.fillColor = question.rgbResult;
}

constexpr Command commands[] = {
    {ID_UNDO, NeedsPicture | NeedsUndo, undo},
    {ID_COPY, NeedsPicture, copy},
    {ID_PASTE, NeedsClipboard, paste},
    {ID_PASTE_NEW, NeedsClipboard, pasteNew},
    {ID_CROP, NeedsPicture | NeedsSelection, crop},
    {ID_FILL, NeedsPicture, fill},
    {ID_FILL_COLOR, NeedsNothing, chooseFillColor},
    {ID_CLEAR, NeedsPicture, clear},
};

}  // namespace

std::span<const Command> editCommands() {
  return commands;
}

}  // namespace zavoview
