// Allocating, addressing, resizing and releasing a bitmap's pixel storage.
//
// Rows of sections, global memory and temporary files lie one after another, DataSize bytes in all; run-length rows
// are blocks of a heap that the row table names.
#include "core/storage.h"

#include <cstring>
#include <optional>

#include "core/memory.h"
#include "core/module.h"
#include "core/owners.h"
#include "core/region_services.h"
#include "core/row_table.h"
#include "core/sizes.h"
#include "core/status.h"

namespace zavo {
namespace {

constexpr int allocRunLengthRows = ALLOC_RUNLENGTH | ALLOC_MEMORY_ONLY;
constexpr unsigned globalMemorySlack = 16;  // past the pixels of a new block, on purpose
constexpr unsigned tempNameBytes = 260;

char* filePath(const BitmapHandle& bitmap) {
  return reinterpret_cast<char*>(bitmap.Data);
}

// Sets DataSize to the true size of the unpacked image, which a freed run-length bitmap does not hold any more.
// False for an image whose sizes the record cannot express.
bool settleSizes(BitmapHandle& bitmap) {
  if (bitmap.Width < 0 || bitmap.Height < 0 || !isSupportedDepth(bitmap.BitsPerPixel)) return false;
  const uint64_t rowBytes =
      rowBytesFor(static_cast<unsigned>(bitmap.Width), static_cast<unsigned>(bitmap.BitsPerPixel));
  const uint64_t imageBytes = rowBytes * static_cast<unsigned>(bitmap.Height);
  if (rowBytes != bitmap.BytesPerLine || imageBytes > UINT32_MAX) return false;
  bitmap.DataSize = static_cast<unsigned>(imageBytes);
  return true;
}

void markAllocated(BitmapHandle& bitmap, unsigned kindFlags) {
  bitmap.Flags &= ~static_cast<unsigned>(BMF_MEMORY | BMF_DISK | BMF_LOCKED);
  bitmap.Flags |= BMF_ALLOCATED | kindFlags;
}

// --- Sections

struct Section {
  KernelHandle handle;
  MappedView view;
};

// Committed and uncached, so that running out of space shows now and not in the middle of an operation.
std::optional<Section> createSection(unsigned bytes) {
  Section section;
  section.handle.reset(
      CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE | SEC_COMMIT | SEC_NOCACHE, 0, bytes, nullptr));
  if (!section.handle) return std::nullopt;
  section.view.reset(MapViewOfFile(section.handle.get(), FILE_MAP_WRITE, 0, 0, 0));
  if (!section.view) return std::nullopt;
  return section;
}

void install(BitmapHandle& bitmap, Section& section) {
  bitmap.StorageHandle = section.handle.release();
  bitmap.Data = static_cast<unsigned char*>(section.view.release());
}

int allocateSection(BitmapHandle& bitmap) {
  auto section = createSection(bitmap.DataSize);
  if (!section) return KERR_NO_MEMORY;
  install(bitmap, *section);
  markAllocated(bitmap, BMF_MEMORY);
  return KSUCCESS;
}

void releaseSection(BitmapHandle& bitmap) {
  UnmapViewOfFile(bitmap.Data);
  CloseHandle(bitmap.StorageHandle);
}

int resizeSection(BitmapHandle& bitmap, unsigned newBytes) {
  auto section = createSection(newBytes);
  if (!section) return KERR_NO_MEMORY;
  memcpy(section->view.get(), bitmap.Data, bitmap.DataSize < newBytes ? bitmap.DataSize : newBytes);
  releaseSection(bitmap);
  install(bitmap, *section);
  return KSUCCESS;
}

// --- Global memory (legacy hosts)

int allocateGlobalMemory(BitmapHandle& bitmap) {
  if (bitmap.DataSize > UINT32_MAX - globalMemorySlack) return KERR_NO_MEMORY;
  HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE | GMEM_DDESHARE, bitmap.DataSize + globalMemorySlack);
  if (memory == nullptr) return KERR_NO_MEMORY;
  bitmap.StorageHandle = memory;
  bitmap.Data = nullptr;
  markAllocated(bitmap, BMF_MEMORY);
  return KSUCCESS;
}

// The slack of the allocation is not kept.
int resizeGlobalMemory(BitmapHandle& bitmap, unsigned newBytes) {
  HGLOBAL resized = GlobalReAlloc(bitmap.StorageHandle, newBytes, GMEM_MOVEABLE);
  if (resized == nullptr) return KERR_NO_MEMORY;
  bitmap.StorageHandle = resized;
  return KSUCCESS;
}

void lockGlobalMemory(BitmapHandle& bitmap) {
  bitmap.Data = static_cast<unsigned char*>(GlobalLock(bitmap.StorageHandle));
  if (bitmap.Data != nullptr) bitmap.Flags |= BMF_LOCKED;
}

void unlockGlobalMemory(BitmapHandle& bitmap) {
  GlobalUnlock(bitmap.StorageHandle);
  bitmap.Data = nullptr;
  bitmap.Flags &= ~static_cast<unsigned>(BMF_LOCKED);
}

// --- Temporary files (legacy hosts)

// A temporary file that is closed and deleted unless it becomes a bitmap's storage.
class TemporaryFile {
 public:
  TemporaryFile() = default;
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (file_ != -1) Zv_OsClose(file_);
    if (path_) Zv_OsDelete(path_.get());
  }

  bool create() {
    char name[tempNameBytes];
    Zv_OsGetTempName(name);
    path_ = OsBlock<char>::allocate(strlen(name) + 1);
    if (!path_) {
      if (name[0] != '\0') Zv_OsDelete(name);
      return false;
    }
    memcpy(path_.get(), name, strlen(name) + 1);
    file_ = Zv_OsCreat(name, 0);
    return file_ != -1;
  }

  // Claims the disk space at once, by a byte past the pixels.
  int claim(unsigned bytes) {
    if (Zv_OsSeek(file_, static_cast<int>(bytes), 0) != bytes) return KERR_NO_MEMORY;
    const char zero = 0;
    if (Zv_OsWrite(file_, &zero, 1) != 1) return KERR_WRITE;
    Zv_OsSeek(file_, 0, 0);
    return KSUCCESS;
  }

  void install(BitmapHandle& bitmap) {
    bitmap.StorageHandle = reinterpret_cast<HANDLE>(static_cast<intptr_t>(file_));
    bitmap.Data = reinterpret_cast<unsigned char*>(path_.release());
    file_ = -1;
  }

 private:
  OsBlock<char> path_;
  int file_ = -1;
};

int allocateTemporaryFile(BitmapHandle& bitmap) {
  TemporaryFile file;
  if (!file.create()) return KERR_NO_MEMORY;
  if (const int status = file.claim(bitmap.DataSize); status != KSUCCESS) return status;
  file.install(bitmap);
  markAllocated(bitmap, BMF_DISK);
  return KSUCCESS;
}

int resizeTemporaryFile(BitmapHandle& bitmap, unsigned newBytes) {
  if (Zv_OsSeek(fileHandle(bitmap), static_cast<int>(newBytes), 0) != newBytes) return KERR_NO_MEMORY;
  return SetEndOfFile(bitmap.StorageHandle) ? KSUCCESS : KERR_NO_MEMORY;
}

void releaseTemporaryFile(BitmapHandle& bitmap) {
  Zv_OsClose(fileHandle(bitmap));
  Zv_OsDelete(filePath(bitmap));
  Zv_OsFree(filePath(bitmap));
}

// --- Run-length rows

int allocateRunLengthRows(BitmapHandle& bitmap) {
  const uint64_t scratchBytes = uint64_t{static_cast<unsigned>(bitmap.Width)} * 2 + 2;
  auto table = OsBlock<uint8_t>::allocateZeroed(RowTable::bytesFor(static_cast<unsigned>(bitmap.Height)));
  auto scratch = OsBlock<uint8_t>::allocate(scratchBytes);
  if (!table || !scratch) return KERR_NO_MEMORY;
  RunHeap heap = createRunHeap(bitmap.DataSize);
  if (heap == nullptr) return KERR_NO_MEMORY;

  auto& rows = *reinterpret_cast<RowTable*>(table.get());
  rows.scratch = scratch.release();
  rows.scratchBytes = static_cast<uint32_t>(scratchBytes);
  rows.heap = heap;
  bitmap.Data = table.release();
  markAllocated(bitmap, BMF_MEMORY | BMF_RUNLENGTH);
  return KSUCCESS;
}

void releaseRunLengthRows(BitmapHandle& bitmap) {
  RowTable& table = rowTable(bitmap);
  destroyRunHeap(table.heap);
  Zv_OsFree(table.scratch);
  Zv_OsFree(&table);
}

int resizeRunLengthRows(BitmapHandle& bitmap, int newHeight) {
  const auto oldRows = static_cast<unsigned>(bitmap.Height);
  const auto newRows = static_cast<unsigned>(newHeight);
  for (unsigned row = newRows; row < oldRows; ++row) {
    const RowTable& table = rowTable(bitmap);
    if (table.rows[row].block != 0) freeRunBlock(table.heap, table.rows[row].block);
  }
  OsBlock<uint8_t> table(bitmap.Data);
  const bool resized = table.resize(RowTable::bytesFor(newRows));
  bitmap.Data = table.release();
  if (!resized) {
    // The dropped rows are gone, so the bitmap shrinks in spite of the failure.
    if (newHeight < bitmap.Height) bitmap.Height = newHeight;
    return KERR_NO_MEMORY;
  }
  for (unsigned row = oldRows; row < newRows; ++row) rowTable(bitmap).rows[row].block = 0;
  return KSUCCESS;
}

// The bitmap is of run-length storage and its heap may be changed.
bool hasRunHeap(const BitmapHandle* bitmap) {
  return isAllocated(bitmap) && isRunLength(*bitmap);
}

bool canBeLocked(const BitmapHandle* bitmap) {
  constexpr unsigned asked = BMF_ALLOCATED | BMF_MEMORY | BMF_RUNLENGTH;
  return bitmap != nullptr && isLegacyHost() && (bitmap->Flags & asked) == (BMF_ALLOCATED | BMF_MEMORY);
}

bool isLocked(const BitmapHandle& bitmap) {
  return (bitmap.Flags & BMF_LOCKED) != 0;
}

// The storage of another number of rows; DataSize and the row cache are left to the caller.
int resizeStorage(BitmapHandle& bitmap, int newHeight, unsigned newBytes) {
  switch (storageKind(bitmap)) {
    case StorageKind::runLength:
      return resizeRunLengthRows(bitmap, newHeight);
    case StorageKind::section:
      return resizeSection(bitmap, newBytes);
    case StorageKind::globalMemory:
      return resizeGlobalMemory(bitmap, newBytes);
    case StorageKind::temporaryFile:
      break;
  }
  return resizeTemporaryFile(bitmap, newBytes);
}

}  // namespace

StorageKind storageKind(const BitmapHandle& bitmap) {
  if (isRunLength(bitmap)) return StorageKind::runLength;
  if ((bitmap.Flags & BMF_DISK) != 0) return StorageKind::temporaryFile;
  return isLegacyHost() ? StorageKind::globalMemory : StorageKind::section;
}

void releaseStorage(BitmapHandle& bitmap) {
  switch (storageKind(bitmap)) {
    case StorageKind::runLength:
      releaseRunLengthRows(bitmap);
      // BMF_MEMORY stays set, on purpose: it means nothing without BMF_ALLOCATED.
      bitmap.Flags &= ~static_cast<unsigned>(BMF_RUNLENGTH | BMF_ALLOCATED);
      return;
    case StorageKind::globalMemory:
      if (isLocked(bitmap)) unlockGlobalMemory(bitmap);
      GlobalFree(bitmap.StorageHandle);
      bitmap.Flags &= ~static_cast<unsigned>(BMF_MEMORY | BMF_ALLOCATED);
      return;
    case StorageKind::section:
      releaseSection(bitmap);
      bitmap.Flags &= ~static_cast<unsigned>(BMF_MEMORY | BMF_ALLOCATED);
      return;
    case StorageKind::temporaryFile:
      releaseTemporaryFile(bitmap);
      bitmap.Flags &= ~static_cast<unsigned>(BMF_DISK | BMF_ALLOCATED);
      return;
  }
}

}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_AllocateBitmap(BitmapHandle* bitmap, int memoryType) {
  if (bitmap == nullptr) return KERR_BAD_BITMAP;
  // Storage the record has is lost, so that a failure must not leave the record claiming it, perhaps as another kind.
  // One described like a run-length bitmap carries that flag before it has storage, perhaps at another depth.
  bitmap->Flags &= ~static_cast<unsigned>(BMF_ALLOCATED | BMF_RUNLENGTH);
  if (bitmap->DataSize == 0) return KERR_EMPTY;
  if ((memoryType & ALLOC_RUNLENGTH) != 0) {
    if (bitmap->BitsPerPixel == 1) {
      bitmap->Flags |= BMF_RUNLENGTH;
      memoryType = allocRunLengthRows;
    } else {
      memoryType &= ~ALLOC_RUNLENGTH;
    }
  }
  if (memoryType != ALLOC_MEMORY && memoryType != ALLOC_DISK && memoryType != ALLOC_MEMORY_ONLY &&
      memoryType != allocRunLengthRows) {
    return KERR_BAD_PARAMETER;
  }
  if (!settleSizes(*bitmap)) return KERR_NO_MEMORY;

  if (memoryType == allocRunLengthRows) return allocateRunLengthRows(*bitmap);
  if (!isLegacyHost()) return allocateSection(*bitmap);
  if (memoryType != ALLOC_DISK) {
    const int status = allocateGlobalMemory(*bitmap);
    if (status == KSUCCESS || memoryType == ALLOC_MEMORY_ONLY) return status;
  }
  return allocateTemporaryFile(*bitmap);
}

void ZAVO_CALL Zv_AccessBitmap(BitmapHandle* bitmap) {
  if (canBeLocked(bitmap) && !isLocked(*bitmap)) lockGlobalMemory(*bitmap);
}

void ZAVO_CALL Zv_ReleaseBitmap(BitmapHandle* bitmap) {
  if (canBeLocked(bitmap) && isLocked(*bitmap)) unlockGlobalMemory(*bitmap);
}

int ZAVO_CALL Zv_LockBitmap(BitmapHandle* bitmap) {
  const int wasLocked = bitmap != nullptr && isLocked(*bitmap) ? 1 : 0;
  Zv_AccessBitmap(bitmap);
  return wasLocked;
}

void ZAVO_CALL Zv_UnlockBitmap(BitmapHandle* bitmap, int wasLocked) {
  if (wasLocked == 0) Zv_ReleaseBitmap(bitmap);
}

int ZAVO_CALL Zv_ChangeBitmapHeight(BitmapHandle* bitmap, int newHeight) {
  if (!isAllocated(bitmap)) return KERR_BAD_BITMAP;
  if (isLocked(*bitmap)) return KERR_BAD_PARAMETER;
  if (newHeight == bitmap->Height) return KSUCCESS;
  if (newHeight < 1) return KERR_NO_MEMORY;
  const uint64_t newBytes = uint64_t{bitmap->BytesPerLine} * static_cast<unsigned>(newHeight);
  if (newBytes > UINT32_MAX) return KERR_NO_MEMORY;

  // The region is cut to the new rows. A copy is cut beforehand, because nothing may fail once the pixels are gone.
  BitmapHandle fitted = *bitmap;
  fitted.Height = newHeight;
  if (const int status = copyRegion(fitted, *bitmap, 0, 0); status != KSUCCESS) return status;

  const auto bytes = static_cast<unsigned>(newBytes);
  const int status = resizeStorage(*bitmap, newHeight, bytes);
  if (status == KSUCCESS) {
    if (!isRunLength(*bitmap)) bitmap->DataSize = bytes;  // a run heap keeps its size
    bitmap->Height = newHeight;
    bitmap->CachedRow = 0;
    bitmap->CachedRowOffset = 0;
  }
  const bool resized = bitmap->Height == newHeight;  // run-length rows can be cut and yet fail
  freeRegion(resized ? *bitmap : fitted);
  if (resized) bitmap->Region = fitted.Region;
  return status;
}

int ZAVO_CALL Zv_TrimBitmapHeap(BitmapHandle* bitmap) {
  if (!hasRunHeap(bitmap)) return KERR_BAD_PARAMETER;
  RowTable& table = rowTable(*bitmap);
  if (!trimRunHeap(table.heap)) return 0;
  bitmap->DataSize = table.heap->totalBytes;
  return 1;
}

int ZAVO_CALL Zv_GrowBitmapHeap(BitmapHandle* bitmap, unsigned bytes) {
  if (!hasRunHeap(bitmap)) return KERR_BAD_PARAMETER;
  RowTable& table = rowTable(*bitmap);
  if (!growRunHeap(table.heap, bytes)) return 0;
  bitmap->DataSize = table.heap->totalBytes;
  return 1;
}
