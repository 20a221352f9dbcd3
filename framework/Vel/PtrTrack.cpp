#include <Vel/PtrTrack.h>

namespace Vel {

constinit bool PtrTrack::ptrifTrackOn_ = false;

void PtrTrack::ptrifDel(void*) {}

void PtrTrack::ptrifLeak(const PtrInterface*) {}

} // namespace Vel
