// The menu View, and Esc.
#include "commands.h"
#include "resource.h"
#include "viewer.h"

namespace zavoview {

namespace {

void fit(Viewer& viewer, unsigned) {
  viewer.canvas.changeZoom([](Zoom& zoom, POINT) { zoom.fit(); });
}

void actualSize(Viewer& viewer, unsigned) {
  viewer.canvas.changeZoom([](Zoom& zoom, POINT anchor) { zoom.setActualSize(anchor); });
}

void zoomIn(Viewer& viewer, unsigned) {
  viewer.canvas.changeZoom([](Zoom& zoom, POINT anchor) { zoom.zoomIn(anchor); });
}

void zoomOut(Viewer& viewer, unsigned) {
  viewer.canvas.changeZoom([](Zoom& zoom, POINT anchor) { zoom.zoomOut(anchor); });
}

bool fitting(Viewer& viewer, unsigned) {
  return viewer.canvas.zoom().fitting();
}

void toggleSmooth(Viewer& viewer, unsigned) {
  viewer.canvas.painter().smooth = !viewer.canvas.painter().smooth;
  viewer.canvas.repaint();
}

bool smooth(Viewer& viewer, unsigned) {
  return viewer.canvas.painter().smooth;
}

void fullScreen(Viewer& viewer, unsigned) {
  viewer.toggleFullScreen();
}

void toggleAdjust(Viewer& viewer, unsigned) {
  viewer.adjust.show(!viewer.adjust.shown());
  viewer.layout();
}

bool adjustShown(Viewer& viewer, unsigned) {
  return viewer.adjust.shown();
}

void resetAdjust(Viewer& viewer, unsigned) {
  viewer.adjust.reset();
}

void toggleDisplayMode(Viewer& viewer, unsigned flag) {
  Zv_SetDisplayMode(flag, ~Zv_GetDisplayMode());
  viewer.canvas.repaint();
}

bool displayModeOn(Viewer&, unsigned flag) {
  return (Zv_GetDisplayMode() & flag) != 0;
}

constexpr Command displayMode(int id, unsigned flag) {
  return {id, NeedsNothing, toggleDisplayMode, flag, displayModeOn};
}

void cancel(Viewer& viewer, unsigned) {
  viewer.cancel();
}

constexpr Command commands[] = {
    {ID_FIT, NeedsPicture, fit, 0, fitting},
    {ID_ACTUAL_SIZE, NeedsPicture, actualSize},
    {ID_ZOOM_IN, NeedsPicture, zoomIn},
    {ID_ZOOM_OUT, NeedsPicture, zoomOut},
    {ID_SMOOTH, NeedsNothing, toggleSmooth, 0, smooth},
    {ID_FULL_SCREEN, NeedsNothing, fullScreen},
    {ID_ADJUST, NeedsNothing, toggleAdjust, 0, adjustShown},
    {ID_RESET_ADJUST, NeedsNothing, resetAdjust},
    displayMode(ID_DISPLAY_INDEX, PAINT_INDEX_COLORS),
    displayMode(ID_DISPLAY_DITHER, PAINT_DITHER),
    displayMode(ID_DISPLAY_ORDERED, PAINT_ORDERED_DITHER),
    displayMode(ID_DISPLAY_CLUSTERED, PAINT_CLUSTERED_DOT),
    displayMode(ID_DISPLAY_GRAY, PAINT_GRAY_1BIT),
    displayMode(ID_DISPLAY_GRAY_ALT, PAINT_GRAY_1BIT_ALT),
    displayMode(ID_DISPLAY_FIXED, PAINT_FIXED_PALETTE),
    displayMode(ID_DISPLAY_CUBE, PAINT_CUBE_PALETTE),
    {ID_CANCEL, NeedsNothing, cancel},
};

}  // namespace

std::span<const Command> viewCommands() {
  return commands;
}

}  // namespace zavoview
