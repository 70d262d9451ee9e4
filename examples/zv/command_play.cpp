// zv play: plays an animation with the library and writes what is seen after each frame.
#include <algorithm>
#include <cstdio>
#include <optional>

#include "command.h"
#include "common/animation.h"
#include "common/errors.h"
#include "common/text.h"
#include "common/wic.h"

namespace zv {

namespace {

constexpr int sheetGap = 4;  // pixels between the pictures of a sheet
constexpr COLORREF sheetColor = RGB(255, 255, 255);

struct PlayOptions {
  std::string input;
  std::string output;
  bool waits = true;
  int pictures = 0;      /// 0: each frame once.
  int sheetColumns = 0;  /// 0: a file for each picture.
  std::optional<COLORREF> background;
};

std::string help() {
  return "Writes OUT-000.png, OUT-001.png, ... and tells how long each is shown.\n"
         "  --no-delay                does not wait\n"
         "  --frames N                stops after N pictures; the animation begins again as needed\n"
         "  --sheet COLUMNS           writes one picture OUT of all, so many beside each other\n"
         "  --background RRGGBB       what is seen where nothing is drawn, for the file's own background\n";
}

PlayOptions parse(Arguments& arguments) {
  PlayOptions options;
  options.input = arguments.takeOperand("the animation");
  options.output = arguments.takeOperand("the files to write");
  for (std::string name = arguments.takeOption(); !name.empty(); name = arguments.takeOption()) {
    if (name == "--no-delay")
      options.waits = false;
    else if (name == "--frames")
      options.pictures = parseNumber(name, arguments.takeValue(name), 1, 100000);
    else if (name == "--sheet")
      options.sheetColumns = parseNumber(name, arguments.takeValue(name), 1, 1000);
    else if (name == "--background")
      options.background = parseColor(name, arguments.takeValue(name));
    else
      throw UsageError("unknown option " + name + " (zv play --help lists them)");
  }
  arguments.finish();
  if (options.sheetColumns != 0) outputFormat(options.output);
  return options;
}

Picture makeCanvas(int width, int height, COLORREF color) {
  Picture canvas;
  check(Zv_CreateBitmap(canvas.handle(), ALLOC_MEMORY, width, height, 24, ORDER_BLUE_FIRST, nullptr, VIEW_UPRIGHT),
        "make a picture");
  check(Zv_FillBitmap(canvas.handle(), color), "fill a picture");
  return canvas;
}

/// A playback of frames on a picture, both owned elsewhere.
class Player {
 public:
  Player(Picture& target, const FrameList& frames, bool waits) : waits_(waits) {
    check(Zv_CreatePlayback(&playback_, target.handle(), frames.handle()), "play");
  }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;
  ~Player() { Zv_DestroyPlayback(playback_, nullptr); }

  /// Goes on until a frame has been drawn; says which.
  unsigned showNext() {
    unsigned state = PB_PRECLEAR;
    while (state != PB_POSTRENDER) {
      check(Zv_ProcessPlayback(playback_, &state), "play");
      wait(state);
    }
    int index = 0;
    check(Zv_GetPlaybackIndex(playback_, &index), "play");
    return static_cast<unsigned>(index);
  }
  /// What has changed since the last time.
  RECT takeUpdate() {
    RECT changed;
    check(Zv_GetPlaybackUpdateRect(playback_, &changed, 1), "play");
    return changed;
  }

 private:
  void wait(unsigned state) {
    unsigned milliseconds = 0;
    check(Zv_GetPlaybackDelay(playback_, &milliseconds), "play");
    if (waits_ && milliseconds != 0) Sleep(milliseconds);
    // Nobody is there to go on from a frame that waits for its user.
    if (!waits_ || state == PB_WAITINPUT) check(Zv_CancelPlaybackWait(playback_), "play");
  }

  PlaybackHandle playback_ = nullptr;
  bool waits_;
};

std::string disposalText(unsigned disposal) {
  if (disposal == 2) return "then the background";
  if (disposal == 3) return "then what was there";
  return "stays";
}

void tell(const std::string& name, const BitmapHandle& frame, const RECT& changed) {
  std::printf("%s  %u ms%s  %d x %d at %d, %d, %s  changed %ld, %ld to %ld, %ld\n", name.c_str(), frame.PlaybackDelay,
              (frame.Flags & BMF_PLAYBACK_WAITUSER) != 0 ? " or the user" : "", frame.Width, frame.Height,
              frame.PlaybackLeft, frame.PlaybackTop, disposalText(frame.PlaybackDisposal).c_str(), changed.left,
              changed.top, changed.right, changed.bottom);
}

void runPlay(Arguments& arguments) {
  const PlayOptions options = parse(arguments);
  Animation animation = readAnimation(options.input);
  const int count = options.pictures != 0 ? options.pictures : static_cast<int>(animation.frames.count());
  Picture target = makeCanvas(animation.width, animation.height, 0);
  target.handle()->PlaybackBackground = options.background.value_or(animation.background);

  Picture sheet;
  const int columns = std::min(options.sheetColumns, count);
  const int stepX = animation.width + sheetGap;
  const int stepY = animation.height + sheetGap;
  if (columns != 0) {
    const int rows = (count + columns - 1) / columns;
    sheet = makeCanvas(columns * stepX - sheetGap, rows * stepY - sheetGap, sheetColor);
  }

  Player player(target, animation.frames, options.waits);
  for (int i = 0; i < count; i++) {
    const unsigned index = player.showNext();
    const std::string name = columns != 0 ? format("%03d", i) : format("%s-%03d.png", options.output.c_str(), i);
    tell(name, animation.frames.at(index), player.takeUpdate());
    if (columns != 0) {
      check(Zv_CombineBitmap(sheet.handle(), i % columns * stepX, i / columns * stepY, animation.width,
                             animation.height, target.handle(), 0, 0, COMBINE_COPY),
            "lay out the sheet");
    } else {
      writePicture(name, target);
    }
  }
  if (columns != 0) writePicture(options.output, sheet);
}

}  // namespace

const Command playCommand{"play", "IN OUT [options]", "Plays an animation and writes what is seen.", help, runPlay};

}  // namespace zv
