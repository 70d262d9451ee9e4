// The four kinds of pixel storage: page-file section, moveable global memory, temporary file, run-length rows.
#pragma once

#include <zavo.h>

#include <cstdint>

namespace zavo {

enum class StorageKind { section, globalMemory, temporaryFile, runLength };

// The kind of an allocated bitmap's storage.
[[nodiscard]] StorageKind storageKind(const BitmapHandle& bitmap);

// The file of a bitmap with temporary-file storage.
[[nodiscard]] inline int fileHandle(const BitmapHandle& bitmap) {
  return static_cast<int>(reinterpret_cast<intptr_t>(bitmap.StorageHandle));
}

// Gives the storage of an allocated bitmap back and clears the flags that stood for it.
void releaseStorage(BitmapHandle& bitmap);

}  // namespace zavo
