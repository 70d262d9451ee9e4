// The settings of a thread: defaults, callback, I/O functions, painting options.
#pragma once

#include <zavo.h>

#include <cstddef>
#include <cstdint>

namespace zavo {

// The functions behind the Zv_Redirected calls.
struct IoTable {
  IoOpenFunction open;
  IoReadFunction read;
  IoWriteFunction write;
  IoSeekFunction seek;
  IoCloseFunction close;
};

// The header handed to the graphics interface for every painted band. The slots hold colours, or palette indexes
// of 16 bits each in the first half.
struct PaintHeader {
  BITMAPINFOHEADER header;
  RGBQUAD slots[256];
};

// Fills the first half of the slots with the palette indexes 0 to 255.
void writeIndexTable(PaintHeader& header);

// Zero-filled when made; createThreadSettings writes the defaults of a thread's own block. The process-wide fallback
// block stays zero: no I/O functions, no callback, no dithering.
struct ThreadSettings {
  uint32_t* userMatchTable;  // 32768 entries, the application's; null for none
  uint32_t reserved;
  IoTable io;
  uint32_t defaultDithering;
  int32_t defaultXResolution;  // as set; below 1 means 150
  int32_t defaultYResolution;
  StatusCallback statusCallback;
  PaintHeader paintBitmapInfo;
  PaintHeader printerBitmapInfo;  // used instead while painting on a raster printer
  HDC printJobDC;                 // of the print job left open, null for none
  uint32_t displayMode;           // PAINT_ flags
  int32_t paintIntensity;
  int32_t paintContrast;
  int32_t paintGamma;
  uint8_t paintAdjustTable[256];
  uint32_t paintAdjustActive;  // 1 when the table is not the identity
};

#ifndef _WIN64
static_assert(offsetof(ThreadSettings, io) == 8 && offsetof(ThreadSettings, paintBitmapInfo) == 44,
              "the first eleven words are a fixed layout");
#endif

// The calling thread's settings: its own block, made on first use, or the process-wide fallback block when that
// cannot be had.
[[nodiscard]] ThreadSettings& currentSettings();

// Makes the calling thread's block. At process start (`firstTime`) the TLS slot is allocated before, and given back
// when the block cannot be made. Null on failure.
ThreadSettings* createThreadSettings(bool firstTime);

// Frees the calling thread's block, if it has one.
void freeThreadSettings();

}  // namespace zavo
