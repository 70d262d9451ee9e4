// Owners of what a call takes and must give back: kernel and GDI handles, device contexts, locks, bitmaps.
// All are move-only. Members are destroyed in reverse order of declaration, so declare what is borrowed from
// before what borrows: device context, then bitmap, then Selection.
#pragma once

#include <zavo.h>

#include <utility>

#include "core/status.h"

namespace zavo {

// Owns one handle. Traits: `Handle`, the type; `none()`, the value that means nothing is owned; `close(handle)`.
template <typename Traits>
class [[nodiscard]] Owner {
 public:
  using Handle = typename Traits::Handle;

  Owner() = default;
  explicit Owner(Handle handle) : handle_(handle) {}
  Owner(Owner&& other) noexcept : handle_(other.release()) {}
  Owner& operator=(Owner&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  ~Owner() { reset(); }

  [[nodiscard]] Handle get() const { return handle_; }
  [[nodiscard]] Handle release() { return std::exchange(handle_, Traits::none()); }
  void reset(Handle handle = Traits::none()) {
    if (handle_ != Traits::none()) Traits::close(handle_);
    handle_ = handle;
  }
  explicit operator bool() const { return handle_ != Traits::none(); }

 private:
  Handle handle_ = Traits::none();
};

template <typename H>
struct GdiObjectTraits {
  using Handle = H;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { DeleteObject(handle); }
};
template <typename H>
using GdiObject = Owner<GdiObjectTraits<H>>;
using PaletteObject = GdiObject<HPALETTE>;
using BitmapObject = GdiObject<HBITMAP>;
using RegionObject = GdiObject<HRGN>;
using BrushObject = GdiObject<HBRUSH>;

struct KernelHandleTraits {
  using Handle = HANDLE;
  static Handle none() { return nullptr; }
  static void close(Handle handle) { CloseHandle(handle); }
};
using KernelHandle = Owner<KernelHandleTraits>;

struct MappedViewTraits {
  using Handle = void*;
  static Handle none() { return nullptr; }
  static void close(Handle view) { UnmapViewOfFile(view); }
};
using MappedView = Owner<MappedViewTraits>;

struct GlobalMemoryTraits {
  using Handle = HGLOBAL;
  static Handle none() { return nullptr; }
  static void close(Handle memory) { GlobalFree(memory); }
};
using GlobalMemory = Owner<GlobalMemoryTraits>;

struct MemoryDCTraits {
  using Handle = HDC;
  static Handle none() { return nullptr; }
  static void close(Handle dc) { DeleteDC(dc); }
};
// A device context made by CreateCompatibleDC or CreateDC.
using MemoryDC = Owner<MemoryDCTraits>;

// The address of global memory, locked while this lives.
template <typename T>
class [[nodiscard]] GlobalLockOf {
 public:
  explicit GlobalLockOf(HGLOBAL memory) : memory_(memory), address_(static_cast<T*>(GlobalLock(memory))) {}
  GlobalLockOf(const GlobalLockOf&) = delete;
  GlobalLockOf& operator=(const GlobalLockOf&) = delete;
  ~GlobalLockOf() {
    if (address_ != nullptr) GlobalUnlock(memory_);
  }
  [[nodiscard]] T* get() const { return address_; }
  explicit operator bool() const { return address_ != nullptr; }
  T* operator->() const { return address_; }

 private:
  HGLOBAL memory_;
  T* address_;
};

// A window's device context, or the screen's for a null window.
class [[nodiscard]] ScreenDC {
 public:
  explicit ScreenDC(HWND window = nullptr) : window_(window), dc_(GetDC(window)) {}
  ScreenDC(const ScreenDC&) = delete;
  ScreenDC& operator=(const ScreenDC&) = delete;
  ~ScreenDC() {
    if (dc_ != nullptr) ReleaseDC(window_, dc_);
  }
  [[nodiscard]] HDC get() const { return dc_; }
  explicit operator bool() const { return dc_ != nullptr; }

 private:
  HWND window_;
  HDC dc_;
};

// An object selected into a device context; the displaced one goes back at the end.
class [[nodiscard]] Selection {
 public:
  Selection(HDC dc, HGDIOBJ object) : dc_(dc), displaced_(SelectObject(dc, object)) {}
  Selection(const Selection&) = delete;
  Selection& operator=(const Selection&) = delete;
  ~Selection() {
    if (displaced_ != nullptr) SelectObject(dc_, displaced_);
  }
  explicit operator bool() const { return displaced_ != nullptr; }

 private:
  HDC dc_;
  HGDIOBJ displaced_;
};

// A palette selected and realised, with the old one put back at the end; a null palette changes nothing.
class [[nodiscard]] PaletteSelection {
 public:
  PaletteSelection(HDC dc, HPALETTE palette) : dc_(dc) {
    if (palette == nullptr) return;
    previous_ = SelectPalette(dc, palette, FALSE);
    RealizePalette(dc);
  }
  PaletteSelection(const PaletteSelection&) = delete;
  PaletteSelection& operator=(const PaletteSelection&) = delete;
  ~PaletteSelection() {
    if (previous_ == nullptr) return;
    SelectPalette(dc_, previous_, FALSE);
    RealizePalette(dc_);
  }

 private:
  HDC dc_;
  HPALETTE previous_ = nullptr;
};

// Display-mode flags of the thread, set while this lives; all flags are then what they were.
class [[nodiscard]] DisplayModeScope {
 public:
  DisplayModeScope(unsigned mask, unsigned values) : previous_(Zv_SetDisplayMode(mask, values)) {}
  DisplayModeScope(const DisplayModeScope&) = delete;
  DisplayModeScope& operator=(const DisplayModeScope&) = delete;
  ~DisplayModeScope() { Zv_SetDisplayMode(~0u, previous_); }

 private:
  unsigned previous_;
};

// A device context's state, restored at the end.
class [[nodiscard]] SavedDC {
 public:
  explicit SavedDC(HDC dc) : dc_(dc), level_(SaveDC(dc)) {}
  SavedDC(const SavedDC&) = delete;
  SavedDC& operator=(const SavedDC&) = delete;
  ~SavedDC() {
    if (level_ != 0) RestoreDC(dc_, level_);
  }

 private:
  HDC dc_;
  int level_;
};

// A bitmap locked while this lives, with the previous state restored; nests.
class [[nodiscard]] BitmapLock {
 public:
  explicit BitmapLock(BitmapHandle& bitmap) : bitmap_(bitmap), wasLocked_(Zv_LockBitmap(&bitmap)) {}
  BitmapLock(const BitmapLock&) = delete;
  BitmapLock& operator=(const BitmapLock&) = delete;
  ~BitmapLock() { Zv_UnlockBitmap(&bitmap_, wasLocked_); }

 private:
  BitmapHandle& bitmap_;
  int wasLocked_;
};

// A temporary bitmap, freed unless moved into a caller's handle: an operation that replaces an image builds the new
// one in here and moves it in when all has gone well.
class [[nodiscard]] OwnedBitmap {
 public:
  OwnedBitmap() = default;
  explicit OwnedBitmap(const BitmapHandle& handle) : handle_(handle) {}
  OwnedBitmap(const OwnedBitmap&) = delete;
  OwnedBitmap& operator=(const OwnedBitmap&) = delete;
  ~OwnedBitmap() { Zv_FreeBitmap(&handle_); }

  [[nodiscard]] BitmapHandle* get() { return &handle_; }
  BitmapHandle& operator*() { return handle_; }
  BitmapHandle* operator->() { return &handle_; }

  // Hands the record and all it points to over to the caller.
  [[nodiscard]] BitmapHandle release() { return std::exchange(handle_, BitmapHandle{}); }
  // Frees what `target` holds and puts this bitmap in its place. A dither run that is open on the handle stays the
  // caller's.
  void moveInto(BitmapHandle& target) {
    Zv_FreeBitmap(&target);
    handle_.DitherState = target.DitherState;
    target = release();
  }

 private:
  BitmapHandle handle_{};
};

}  // namespace zavo
