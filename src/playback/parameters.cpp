// The parameters of an animation frame, which travel in the frame's handle.
#include <zavo.h>

namespace zavo {
namespace {

constexpr unsigned playbackFlags = BMF_PLAYBACK_WAITUSER | BMF_PLAYBACK_TRANSPARENT;

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_CopyPlaybackParms(BitmapHandle* destination, BitmapHandle* source) {
  if (destination == nullptr || source == nullptr) return KERR_BAD_PARAMETER;
  destination->Flags = (destination->Flags & ~playbackFlags) | (source->Flags & playbackFlags);
  destination->PlaybackLeft = source->PlaybackLeft;
  destination->PlaybackTop = source->PlaybackTop;
  destination->PlaybackDelay = source->PlaybackDelay;
  destination->PlaybackBackground = Zv_TranslateBitmapColor(destination, source, source->PlaybackBackground);
  destination->PlaybackTransparentColor =
      Zv_TranslateBitmapColor(destination, source, source->PlaybackTransparentColor);
  destination->PlaybackDisposal = source->PlaybackDisposal;
  return KSUCCESS;
}
