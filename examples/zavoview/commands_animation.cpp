// The menu Animation.
#include "commands.h"
#include "resource.h"
#include "viewer.h"

namespace zavoview {

namespace {

/// An animation that was released for changes begins anew, without them.
void play(Viewer& viewer, unsigned) {
  AnimationPlayer& animation = viewer.animation;
  if (animation.playing())
    animation.pause();
  else if (animation.attached() || viewer.confirmDiscard())
    animation.play();
  viewer.pictureChanged();
}

bool playing(Viewer& viewer, unsigned) {
  return viewer.animation.playing();
}

void nextFrame(Viewer& viewer, unsigned) {
  viewer.animation.nextFrame();
}

void firstFrame(Viewer& viewer, unsigned) {
  viewer.animation.firstFrame();
}

constexpr Command commands[] = {
    {ID_PLAY, NeedsAnimation, play, 0, playing},
    {ID_NEXT_FRAME, NeedsAnimation, nextFrame},
    {ID_FIRST_FRAME, NeedsAnimation, firstFrame},
};

}  // namespace

std::span<const Command> animationCommands() {
  return commands;
}

}  // namespace zavoview
