#pragma once

namespace velmora {

// The program waits in the tray most of the day. What start-up or a lock touched
// (library code, freed heap) would stay resident until the system runs short; this
// hands it back at once. Whatever is needed again is read back in on first use.
void releaseIdleMemory();

} // namespace velmora
