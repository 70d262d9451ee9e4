// Memory that ends at a page nobody may touch: a read or write one byte too far stops the program at once.
#pragma once

namespace zavotest {

// While one of these lives, the global memory and the sections that the library and the test program make are such
// memory. An unlocked block cannot be touched at all, a resized block always moves, new memory is filled with a
// pattern where the platform promises nothing, and a write to the few bytes before a block shows when it is freed.
// Blocks of the time before are what they were; blocks that outlive this stay guarded.
class GuardPages {
 public:
  GuardPages();
  GuardPages(const GuardPages&) = delete;
  GuardPages& operator=(const GuardPages&) = delete;
  ~GuardPages();

  // One of these lives. Memory that is seen through a section is then not what the section holds.
  [[nodiscard]] static bool active();
};

}  // namespace zavotest
