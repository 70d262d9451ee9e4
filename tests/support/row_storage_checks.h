// What rows must do on a kind of storage. The kinds differ by memory type and by host, so that these checks are run
// for sections and run-length rows here, and for global memory and temporary files on a legacy host.
#pragma once

namespace zavotest {

// Rows and row pieces written and read back against plain pixels; `memoryType` without ALLOC_RUNLENGTH.
void checkRowAccess(int memoryType);
// Segments written to every depth against plain pixels.
void checkSegments(int memoryType);
// Rows and pieces of 1-bit bitmaps exchanged as run records.
void checkCompressedRows(int memoryType);
// Rows that stay and rows that are added when the height changes.
void checkHeightChanges(int memoryType);

}  // namespace zavotest
