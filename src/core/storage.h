// The four kinds of pixel storage: page-file section, moveable global memory, temporary file, run-length rows.
#pragma once

#include <zavo.h>

namespace zavo {

enum class StorageKind { section, globalMemory, temporaryFile, runLength };

// The kind of an allocated bitmap's storage.
[[nodiscard]] StorageKind storageKind(const BitmapHandle& bitmap);

// Gives the storage of an allocated bitmap back and clears the flags that stood for it.
void releaseStorage(BitmapHandle& bitmap);

}  // namespace zavo
