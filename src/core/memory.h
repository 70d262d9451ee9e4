// Owner of a block from the library's allocator.
#pragma once

#include <zavo.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>
#include <utility>

namespace zavo {

// A typed, move-only block. `allocate` and `resize` refuse sizes that do not fit in 32 bits; a block that could not
// be had is empty and tests false.
template <typename T>
class OsBlock {
  static_assert(std::is_trivially_copyable_v<T>, "blocks are raw memory");

 public:
  OsBlock() = default;
  explicit OsBlock(T* address) : address_(address) {}
  OsBlock(OsBlock&& other) noexcept : address_(other.release()) {}
  OsBlock& operator=(OsBlock&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  ~OsBlock() { reset(); }

  // `count` items of undefined content.
  [[nodiscard]] static OsBlock allocate(uint64_t count) { return make(count, 0); }
  // `count` items of zero bytes.
  [[nodiscard]] static OsBlock allocateZeroed(uint64_t count) { return make(count, 1); }

  // Keeps the content up to the smaller size. On failure the block is as it was.
  [[nodiscard]] bool resize(uint64_t count) {
    if (count > maxItems) return false;
    void* moved = Zv_OsReAlloc(address_, bytesFor(count));
    if (moved == nullptr) {
      // A failed resize leaves the block unlocked.
      if (address_ != nullptr) GlobalLock(GlobalHandle(address_));
      return false;
    }
    address_ = static_cast<T*>(moved);
    return true;
  }

  [[nodiscard]] T* get() const { return address_; }
  [[nodiscard]] T* release() { return std::exchange(address_, nullptr); }
  void reset(T* address = nullptr) {
    if (address_ != nullptr) Zv_OsFree(address_);
    address_ = address;
  }
  explicit operator bool() const { return address_ != nullptr; }
  T* operator->() const { return address_; }
  T& operator*() const { return *address_; }
  T& operator[](size_t index) const { return address_[index]; }

 private:
  static constexpr uint64_t maxItems = UINT32_MAX / sizeof(T);

  // A block of no bytes would have no address, so it gets one byte.
  static unsigned bytesFor(uint64_t count) { return count == 0 ? 1 : static_cast<unsigned>(count * sizeof(T)); }

  static OsBlock make(uint64_t count, int zero) {
    if (count > maxItems) return OsBlock();
    return OsBlock(static_cast<T*>(Zv_OsAllocInit(bytesFor(count), zero)));
  }

  T* address_ = nullptr;
};

}  // namespace zavo
