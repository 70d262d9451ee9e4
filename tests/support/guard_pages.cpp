// Stand-ins for the functions of global memory and sections, over pages of their own for each block.
#include "support/guard_pages.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <windows.h>

#include "support/platform_watch.h"

namespace zavotest {
namespace {

constexpr size_t pageBytes = 4096;
constexpr uint8_t pattern = 0xCD;

// The end of a block touches the forbidden page, so its start is as odd as its size. The build that stops at
// undefined behaviour also stops at misaligned words; there up to seven bytes past the end go unnoticed until the
// block is freed.
#ifdef ZAVO_CHECKED
constexpr size_t alignment = 8;
#else
constexpr size_t alignment = 1;
#endif

class GuardedMemory {
 public:
  GuardedMemory(size_t bytes, bool zero) : bytes_(bytes) {
    const size_t used = (bytes + alignment - 1) / alignment * alignment;
    committed_ = (used + pageBytes - 1) / pageBytes * pageBytes;
    start_ = static_cast<uint8_t*>(VirtualAlloc(nullptr, committed_ + pageBytes, MEM_RESERVE, PAGE_NOACCESS));
    if (start_ == nullptr || VirtualAlloc(start_, committed_, MEM_COMMIT, PAGE_READWRITE) == nullptr) return;
    address_ = start_ + committed_ - used;
    std::fill(start_, address_, pattern);
    std::fill(address_ + bytes, start_ + committed_, pattern);
    if (!zero) std::fill_n(address_, bytes, pattern);
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() {
    if (address_ != nullptr) {
      allow(true);
      const auto untouched = [](uint8_t byte) { return byte == pattern; };
      EXPECT_TRUE(std::all_of(start_, address_, untouched)) << "written before a block of " << bytes_ << " bytes";
      EXPECT_TRUE(std::all_of(address_ + bytes_, start_ + committed_, untouched))
          << "written past a block of " << bytes_ << " bytes";
    }
    VirtualFree(start_, 0, MEM_RELEASE);
  }

  void allow(bool access) {
    DWORD previous = 0;
    VirtualProtect(start_, committed_, access ? PAGE_READWRITE : PAGE_NOACCESS, &previous);
  }

  [[nodiscard]] uint8_t* address() const { return address_; }
  [[nodiscard]] size_t bytes() const { return bytes_; }

 private:
  size_t bytes_;
  size_t committed_ = 0;
  uint8_t* start_ = nullptr;
  uint8_t* address_ = nullptr;
};

struct Block {
  std::unique_ptr<GuardedMemory> memory;
  bool fixed = false;  // addressable without a lock; its handle is its address
  unsigned locks = 0;
};

std::mutex mutex;
unsigned guarding = 0;
std::map<HGLOBAL, Block> blocks;
std::map<HANDLE, size_t> sectionBytes;
std::map<const void*, std::unique_ptr<GuardedMemory>> views;

Block* find(HGLOBAL handle) {
  const auto found = blocks.find(handle);
  return found != blocks.end() ? &found->second : nullptr;
}

// What the stand-ins replace; they pass on what is not theirs.
struct Platform {
  decltype(&GlobalAlloc) alloc;
  decltype(&GlobalReAlloc) reAlloc;
  decltype(&GlobalFree) free;
  decltype(&GlobalLock) lock;
  decltype(&GlobalUnlock) unlock;
  decltype(&GlobalHandle) handle;
  decltype(&GlobalSize) size;
  decltype(&CreateFileMappingA) createFileMapping;
  decltype(&MapViewOfFile) mapView;
  decltype(&UnmapViewOfFile) unmapView;
  decltype(&SetClipboardData) setClipboardData;
};
Platform platform;

HGLOBAL WINAPI alloc(UINT flags, SIZE_T bytes) {
  const std::scoped_lock lock(mutex);
  if (guarding == 0 || bytes == 0) return platform.alloc(flags, bytes);
  auto memory = std::make_unique<GuardedMemory>(bytes, (flags & GMEM_ZEROINIT) != 0);
  if (memory->address() == nullptr) return nullptr;
  static uintptr_t lastHandle = 0xF0000001;  // no address, and no handle of the platform
  const bool fixed = (flags & GMEM_MOVEABLE) == 0;
  HGLOBAL handle = fixed ? memory->address() : reinterpret_cast<HGLOBAL>(lastHandle += 4);
  if (!fixed) memory->allow(false);
  blocks[handle] = {std::move(memory), fixed};
  return handle;
}

HGLOBAL WINAPI free(HGLOBAL handle) {
  const std::scoped_lock lock(mutex);
  return blocks.erase(handle) != 0 ? nullptr : platform.free(handle);
}

LPVOID WINAPI lock(HGLOBAL handle) {
  const std::scoped_lock guard(mutex);
  Block* block = find(handle);
  if (block == nullptr) return platform.lock(handle);
  if (block->locks++ == 0) block->memory->allow(true);
  return block->memory->address();
}

BOOL WINAPI unlock(HGLOBAL handle) {
  const std::scoped_lock guard(mutex);
  Block* block = find(handle);
  if (block == nullptr) return platform.unlock(handle);
  EXPECT_GT(block->locks, 0u) << "unlocked more often than locked";
  if (block->locks > 0 && --block->locks == 0 && !block->fixed) block->memory->allow(false);
  SetLastError(NO_ERROR);
  return block->locks > 0 ? TRUE : FALSE;
}

HGLOBAL WINAPI reAlloc(HGLOBAL handle, SIZE_T bytes, UINT flags) {
  const std::scoped_lock guard(mutex);
  Block* block = find(handle);
  if (block == nullptr) return platform.reAlloc(handle, bytes, flags);
  auto resized = std::make_unique<GuardedMemory>(bytes, (flags & GMEM_ZEROINIT) != 0);
  if (resized->address() == nullptr) return nullptr;
  block->memory->allow(true);
  memcpy(resized->address(), block->memory->address(), std::min<size_t>(bytes, block->memory->bytes()));
  if (block->locks == 0) resized->allow(false);
  block->memory = std::move(resized);
  return handle;
}

HGLOBAL WINAPI handleOf(LPCVOID address) {
  const std::scoped_lock guard(mutex);
  for (const auto& [handle, block] : blocks) {
    if (block.memory->address() == address) return handle;
  }
  return platform.handle(address);
}

SIZE_T WINAPI size(HGLOBAL handle) {
  const std::scoped_lock guard(mutex);
  const Block* block = find(handle);
  return block != nullptr ? block->memory->bytes() : platform.size(handle);
}

HANDLE WINAPI createFileMapping(HANDLE file, LPSECURITY_ATTRIBUTES security, DWORD protection, DWORD sizeHigh,
                                DWORD sizeLow, LPCSTR name) {
  const std::scoped_lock guard(mutex);
  HANDLE section = platform.createFileMapping(file, security, protection, sizeHigh, sizeLow, name);
  const bool guarded = guarding != 0 && file == INVALID_HANDLE_VALUE && section != nullptr;
  sectionBytes[section] = guarded ? sizeLow : 0;
  return section;
}

LPVOID WINAPI mapView(HANDLE section, DWORD access, DWORD offsetHigh, DWORD offsetLow, SIZE_T bytes) {
  const std::scoped_lock guard(mutex);
  const size_t guarded = sectionBytes[section];
  if (guarded == 0) return platform.mapView(section, access, offsetHigh, offsetLow, bytes);
  auto memory = std::make_unique<GuardedMemory>(guarded, true);
  void* address = memory->address();
  if (address != nullptr) views[address] = std::move(memory);
  return address;
}

BOOL WINAPI unmapView(LPCVOID address) {
  const std::scoped_lock guard(mutex);
  return views.erase(address) != 0 ? TRUE : platform.unmapView(address);
}

// The clipboard belongs to the system, which takes its own memory only.
HANDLE WINAPI setClipboardData(UINT format, HANDLE data) {
  const std::scoped_lock guard(mutex);
  Block* block = find(data);
  if (block == nullptr) return platform.setClipboardData(format, data);
  HGLOBAL copy = platform.alloc(GMEM_MOVEABLE | GMEM_DDESHARE, block->memory->bytes());
  if (copy == nullptr) return nullptr;
  block->memory->allow(true);
  memcpy(platform.lock(copy), block->memory->address(), block->memory->bytes());
  platform.unlock(copy);
  if (block->locks == 0 && !block->fixed) block->memory->allow(false);
  if (platform.setClipboardData(format, copy) == nullptr) {
    platform.free(copy);
    return nullptr;
  }
  blocks.erase(data);
  return data;
}

template <typename Function>
void putBeneath(const char* name, Function standIn, Function& original) {
  original = reinterpret_cast<Function>(exchangeWatched(name, reinterpret_cast<void*>(standIn)));
}

// Once; the stand-ins stay for the blocks that outlive the guarding.
void installStandIns() {
  if (platform.alloc != nullptr) return;
  putBeneath("GlobalAlloc", &alloc, platform.alloc);
  putBeneath("GlobalReAlloc", &reAlloc, platform.reAlloc);
  putBeneath("GlobalFree", &free, platform.free);
  putBeneath("GlobalLock", &lock, platform.lock);
  putBeneath("GlobalUnlock", &unlock, platform.unlock);
  putBeneath("GlobalHandle", &handleOf, platform.handle);
  putBeneath("GlobalSize", &size, platform.size);
  putBeneath("CreateFileMappingA", &createFileMapping, platform.createFileMapping);
  putBeneath("MapViewOfFile", &mapView, platform.mapView);
  putBeneath("UnmapViewOfFile", &unmapView, platform.unmapView);
  putBeneath("SetClipboardData", &setClipboardData, platform.setClipboardData);
}

}  // namespace

bool GuardPages::active() {
  return guarding != 0;
}

GuardPages::GuardPages() {
  installStandIns();
  ++guarding;
}

GuardPages::~GuardPages() {
  --guarding;
}

}  // namespace zavotest
