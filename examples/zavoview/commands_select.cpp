// The menu Select: the selection as a whole, the tools, how shapes join the selection.
#include "commands.h"
#include "resource.h"
#include "viewer.h"

namespace zavoview {

namespace {

void selectWhole(Viewer& viewer, int mode) {
  viewer.animation.release();
  const RECT whole{0, 0, viewer.document.picture()->Width, viewer.document.picture()->Height};
  viewer.tool.select(mode,
                     [&](BitmapHandle* bitmap, int combine) { Zv_SetBitmapRgnRect(bitmap, nullptr, &whole, combine); });
  viewer.selectionChanged();
}

void selectAll(Viewer& viewer, unsigned) {
  selectWhole(viewer, CombineSet);
}

void invert(Viewer& viewer, unsigned) {
  selectWhole(viewer, CombineXor);
}

void deselect(Viewer& viewer, unsigned) {
  Zv_FreeBitmapRgn(viewer.document.handle());
  viewer.selectionChanged();
}

void setTool(Viewer& viewer, unsigned tool) {
  viewer.tool.setTool(static_cast<Tool>(tool));
  viewer.canvas.repaint();
}

bool toolChecked(Viewer& viewer, unsigned tool) {
  return viewer.tool.tool() == static_cast<Tool>(tool);
}

constexpr Command toolCommand(int id, Tool tool) {
  return {id, NeedsNothing, setTool, static_cast<unsigned>(tool), toolChecked};
}

void setMode(Viewer& viewer, unsigned mode) {
  viewer.tool.setMode(static_cast<int>(mode));
}

bool modeChecked(Viewer& viewer, unsigned mode) {
  return viewer.tool.mode() == static_cast<int>(mode);
}

constexpr Command commands[] = {
    {ID_SELECT_ALL, NeedsPicture, selectAll},
    {ID_DESELECT, NeedsPicture | NeedsSelection, deselect},
    {ID_INVERT_SELECTION, NeedsPicture | NeedsSelection, invert},
    toolCommand(ID_TOOL_HAND, Tool::Hand),
    toolCommand(ID_TOOL_RECTANGLE, Tool::Rectangle),
    toolCommand(ID_TOOL_ELLIPSE, Tool::Ellipse),
    toolCommand(ID_TOOL_POLYGON, Tool::Polygon),
    toolCommand(ID_TOOL_COLOR, Tool::Color),
    {ID_MODE_SET, NeedsNothing, setMode, CombineSet, modeChecked},
    {ID_MODE_ADD, NeedsNothing, setMode, CombineOr, modeChecked},
    {ID_MODE_SUBTRACT, NeedsNothing, setMode, CombineAndNotRegion, modeChecked},
    {ID_MODE_INTERSECT, NeedsNothing, setMode, CombineAnd, modeChecked},
    {ID_MODE_XOR, NeedsNothing, setMode, CombineXor, modeChecked},
};

}  // namespace

std::span<const Command> selectCommands() {
  return commands;
}

}  // namespace zavoview
