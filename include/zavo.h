/*
 * zavo.h - the exported interface of the Zavo imaging kernel (zavo.dll), for C11 and C++17 or later.
 *
 * Pixels in memory
 *
 *   A bitmap is a sequence of Height stored rows of BytesPerLine bytes each. Every row is padded to a multiple of
 *   4 bytes. ViewPerspective says how the stored rows lie in the picture a user sees; unless a function says
 *   otherwise, rows and columns are those of the stored image and row 0 is the first stored row.
 *
 *   1 to 8 bits  palette indexes, packed most significant bit first. Pixels run on across byte boundaries without
 *                padding, so a pixel of 3, 5, 6 or 7 bits may lie in two bytes.
 *   16 bits      5-5-5 in a little-endian word. Colour order 1 has red in bits 10-14, green in 5-9, blue in 0-4;
 *                colour order 0 has red and blue exchanged. Bit 15 is the alpha bit.
 *   24 bits      three bytes: blue, green, red for colour order 1, red, green, blue for colour order 0.
 *   32 bits      as 24 bits, and a fourth byte of alpha.
 *
 * Palettes are arrays of RGBQUAD (blue, green, red, reserved). A colour value is a COLORREF, 0x00BBGGRR; where the
 * text says so, a top byte of 1 marks the low bits as a palette index instead.
 *
 * Results
 *
 *   Unless a function says otherwise it returns KSUCCESS (1) or one of the negative KERR_ codes. An operation that
 *   was stopped by the status callback returns what the callback returned. After a failure the caller's bitmap is
 *   as it was, unless the function says otherwise.
 *
 * Threads
 *
 *   Every setting (defaults, callback, I/O functions, painting options) belongs to the calling thread. Different
 *   bitmaps can be worked on by different threads at once; one bitmap must not.
 */
#ifndef ZAVO_H
#define ZAVO_H

#include <windows.h>

#ifdef ZAVO_BUILDING_DLL
#define ZAVO_API
#else
#define ZAVO_API __declspec(dllimport)
#endif

/** The calling convention of every exported function and of every function a caller hands to the library. */
#define ZAVO_CALL __stdcall

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------------------
 * Status codes
 * --------------------------------------------------------------------------------------------------------- */

enum {
  KSUCCESS = 1,             /**< Success. */
  KERR_NO_MEMORY = -1,      /**< Memory, a section, a file or another resource could not be had. */
  KERR_BAD_BITMAP = -2,     /**< The bitmap is null or has no pixel storage. */
  KERR_SEEK = -4,           /**< A seek in a file did not reach its position. */
  KERR_WRITE = -5,          /**< A write to a file failed. */
  KERR_READ = -7,           /**< A read from a file failed. */
  KERR_EMPTY = -11,         /**< The bitmap to be allocated has no pixels; the pixel lies outside the region. */
  KERR_BAD_PARAMETER = -13, /**< An argument is null or out of range. */
  KERR_BAD_DIB = -16,       /**< A device-independent bitmap of a format the library does not take. */
  KERR_BAD_BPP = -27        /**< Bits per pixel are not one of 1 to 8, 16, 24, 32. */
};

/* ------------------------------------------------------------------------------------------------------------
 * Records and constants
 * --------------------------------------------------------------------------------------------------------- */

/** Bits of BitmapHandle::Flags. */
enum {
  BMF_ALLOCATED = 0x001,            /**< The handle owns pixel storage. */
  BMF_MEMORY = 0x002,               /**< The pixels are in memory. */
  BMF_DISK = 0x004,                 /**< The pixels are in a temporary file. */
  BMF_LOCKED = 0x010,               /**< Moveable global memory is locked and Data holds its address. */
  BMF_PLAYBACK_WAITUSER = 0x040,    /**< Animation: wait for the user after this frame. */
  BMF_PLAYBACK_TRANSPARENT = 0x080, /**< Animation: PlaybackTransparentColor is in force. */
  BMF_RUNLENGTH = 0x100             /**< Run-length rows (1-bit images). */
};

/** Memory types of Zv_AllocateBitmap and Zv_CreateBitmap. */
enum {
  ALLOC_MEMORY = 1,        /**< Memory; on a legacy host a temporary file when global memory runs out. */
  ALLOC_DISK = 128,        /**< A temporary file on a legacy host, memory elsewhere. */
  ALLOC_MEMORY_ONLY = 256, /**< Memory, never a file. */
  ALLOC_RUNLENGTH = 0x200  /**< Added to one of the above: run-length rows for a 1-bit image, ignored otherwise. */
};

/** Values of BitmapHandle::ViewPerspective. Every value other than 2, 4 and 8 means upright. */
enum {
  VIEW_UPRIGHT = 1,   /**< The first stored row is the top row. */
  VIEW_BOTTOM_UP = 2, /**< The first stored row is the bottom row; what Zv_InitBitmap gives. */
  VIEW_TURNED_90 = 4, /**< The stored image is the picture turned by 90 degrees. */
  VIEW_TURNED_270 = 8 /**< The stored image is the picture turned by 270 degrees. */
};

/** Values of BitmapHandle::ColorOrder. */
enum {
  ORDER_RED_FIRST = 0, /**< Red, green, blue. */
  ORDER_BLUE_FIRST = 1 /**< Blue, green, red: the order of device-independent bitmaps. */
};

struct BitmapRegion;

/**
 * One image. The caller owns the record (26 words of 32 bits) and may copy it word for word; the library owns what
 * it points to and frees that in Zv_FreeBitmap. Copies made by assignment share storage, palette and region.
 */
typedef struct BitmapHandle {
  HANDLE StorageHandle;              /**< Global memory, section or file; not used by run-length storage. */
  unsigned char* Data;               /**< Address of the pixels, path of the temporary file, or the row table. */
  int Width;                         /**< Pixels in a row. */
  int Height;                        /**< Number of rows. */
  int BitsPerPixel;                  /**< 1 to 8, 16, 24 or 32. */
  unsigned BytesPerLine;             /**< Bytes of a stored row, a multiple of 4. */
  unsigned CachedRowOffset;          /**< Byte offset of the row addressed last. */
  int CachedRow;                     /**< Index of the row addressed last. */
  unsigned Flags;                    /**< BMF_ bits. */
  unsigned ColorCount;               /**< Palette entries: 1 << BitsPerPixel up to 8 bits, 0 above. */
  HPALETTE Palette;                  /**< The palette of an image of up to 8 bits, or null. */
  int ViewPerspective;               /**< VIEW_ value: where the first stored row lies in the picture. */
  int ColorOrder;                    /**< ORDER_ value of 16-, 24- and 32-bit pixels; 0 for palette images. */
  unsigned DataSize;                 /**< Height * BytesPerLine; for run-length storage the size of its heap. */
  void* DitherState;                 /**< State of an open dither run, or null. */
  int DitheringMethod;               /**< Method, 0 to 8, used when colours must be reduced. */
  unsigned Reserved1;                /**< Copied with the handle, otherwise the caller's. */
  struct BitmapRegion* Region;       /**< The bitmap's region, or null. */
  int XResolution;                   /**< Dots per inch along a row. */
  int YResolution;                   /**< Dots per inch across rows. */
  int PlaybackLeft;                  /**< Animation: x of the frame on the target. */
  int PlaybackTop;                   /**< Animation: y of the frame on the target. */
  unsigned PlaybackDelay;            /**< Animation: milliseconds to show the frame. */
  COLORREF PlaybackBackground;       /**< Animation: background colour. */
  COLORREF PlaybackTransparentColor; /**< Animation: the colour that is not drawn. */
  unsigned PlaybackDisposal;         /**< Animation: 2 restores the background, 3 what was under the frame. */
} BitmapHandle;

/**
 * Progress of a long operation: `percent` is 0 to 100. A return of 1 lets the operation go on; any other value stops
 * it, and the operation returns that value to its caller.
 */
typedef int(ZAVO_CALL* StatusCallback)(int percent);

/** What Zv_VersionInfo fills in: 104 bytes. */
typedef struct VersionRecord {
  char Product[60];   /**< Name of the product, ANSI, padded with zeros. */
  unsigned Reserved;  /**< 0. */
  int Major;          /**< Major version. */
  int Minor;          /**< Minor version. */
  char BuildDate[16]; /**< Date of the build, padded with zeros. */
  char BuildTime[16]; /**< Time of the build, padded with zeros. */
} VersionRecord;

/* ------------------------------------------------------------------------------------------------------------
 * Bitmap handles and settings
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Describes an image without allocating anything: zeroes the record and fills in sizes, defaults and the bottom-up
 * perspective. Width and height are not checked here; Zv_AllocateBitmap refuses what cannot be stored.
 * @param bitmap        the record to fill
 * @param width         pixels in a row
 * @param height        number of rows
 * @param bitsPerPixel  1 to 8, 16, 24 or 32
 * @return KSUCCESS; KERR_BAD_BITMAP for null; KERR_BAD_BPP for another depth, the record then all zero
 */
ZAVO_API int ZAVO_CALL Zv_InitBitmap(BitmapHandle* bitmap, int width, int height, int bitsPerPixel);

/**
 * Initialises a bitmap, allocates its storage and gives it a palette.
 * @param bitmap           the record to fill
 * @param memoryType       an ALLOC_ value
 * @param width            pixels in a row, at least 1
 * @param height           number of rows, at least 1
 * @param bitsPerPixel     1 to 8, 16, 24, 32; 0 makes an 8-bit image with a grey palette, whatever `palette` holds
 * @param colorOrder       ORDER_ value, taken for 16 bits and up, ignored below
 * @param palette          1 << bitsPerPixel entries, or null for the fixed palette of the depth
 * @param viewPerspective  VIEW_ value, not checked
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null bitmap; KERR_BAD_BPP; or the code of Zv_AllocateBitmap, the record
 *         then initialised without storage
 */
ZAVO_API int ZAVO_CALL Zv_CreateBitmap(BitmapHandle* bitmap, int memoryType, int width, int height, int bitsPerPixel,
                                       int colorOrder, const RGBQUAD* palette, int viewPerspective);

/**
 * Releases region, palette and pixel storage. The record can be allocated again afterwards. Works on an unallocated
 * bitmap too (palette and region are still deleted); null is ignored. An open dither run is not closed.
 */
ZAVO_API void ZAVO_CALL Zv_FreeBitmap(BitmapHandle* bitmap);

/**
 * Releases the pixel storage of an allocated bitmap, with or without what is attached to it.
 * @param bitmap           the bitmap; nothing happens when it has no storage
 * @param withAttachments  0: palette and region are only taken out of the record and stay the caller's; else they are
 *                         deleted as in Zv_FreeBitmap
 * @return KSUCCESS
 */
ZAVO_API int ZAVO_CALL Zv_FreeImage(BitmapHandle* bitmap, int withAttachments);

/**
 * Sets the resolution that new bitmaps of this thread get, in dots per inch (150 at first). Any value is taken; below
 * 1, new bitmaps get 150.
 * @return the previous value
 */
ZAVO_API int ZAVO_CALL Zv_SetDefaultXResolution(int dpi);
/** As Zv_SetDefaultXResolution, across rows. */
ZAVO_API int ZAVO_CALL Zv_SetDefaultYResolution(int dpi);
/** @return the thread's default resolution along rows, as it was set */
ZAVO_API int ZAVO_CALL Zv_GetDefaultXResolution(void);
/** @return the thread's default resolution across rows, as it was set */
ZAVO_API int ZAVO_CALL Zv_GetDefaultYResolution(void);

/**
 * Sets the dithering method that new bitmaps of this thread get (7 at first).
 * @param method  0 none, 1 to 6 error diffusion, 7 and 8 ordered
 * @return KSUCCESS; KERR_BAD_PARAMETER for a method above 8
 */
ZAVO_API int ZAVO_CALL Zv_DefaultDithering(unsigned method);

/**
 * Sets the function that long operations of this thread report their progress to; null for none.
 * @return the previous function
 */
ZAVO_API StatusCallback ZAVO_CALL Zv_SetStatusCallBack(StatusCallback callback);
/** @return the thread's progress function, or null */
ZAVO_API StatusCallback ZAVO_CALL Zv_GetStatusCallBack(void);

/** Fills in the version record. @return KSUCCESS; KERR_BAD_PARAMETER for null */
ZAVO_API int ZAVO_CALL Zv_VersionInfo(VersionRecord* record);

/* ------------------------------------------------------------------------------------------------------------
 * Bitmap storage
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Gives an initialised bitmap its pixel storage. Pixels start as zero except in global memory (legacy hosts).
 * Storage the handle already has is not looked at and is lost.
 * @param bitmap      a record filled by Zv_InitBitmap
 * @param memoryType  an ALLOC_ value, with or without ALLOC_RUNLENGTH
 * @return KSUCCESS; KERR_BAD_BITMAP for null; KERR_EMPTY for a DataSize of 0; KERR_BAD_PARAMETER for another memory
 *         type; KERR_NO_MEMORY when storage cannot be had, a side is negative or the size does not fit in 32 bits;
 *         KERR_WRITE when a temporary file's space cannot be claimed. After a failure the bitmap has no storage.
 */
ZAVO_API int ZAVO_CALL Zv_AllocateBitmap(BitmapHandle* bitmap, int memoryType);

/**
 * Makes the pixels addressable: Data is valid until Zv_ReleaseBitmap. Does not nest; null is ignored. Where memory
 * cannot be locked Data stays null, and the row functions return KERR_NO_MEMORY.
 */
ZAVO_API void ZAVO_CALL Zv_AccessBitmap(BitmapHandle* bitmap);
/** Ends what Zv_AccessBitmap began. */
ZAVO_API void ZAVO_CALL Zv_ReleaseBitmap(BitmapHandle* bitmap);

/**
 * Makes the pixels addressable, nesting: pass the result to Zv_UnlockBitmap.
 * @return 1 when the storage was locked already, else 0
 */
ZAVO_API int ZAVO_CALL Zv_LockBitmap(BitmapHandle* bitmap);
/** Ends what Zv_LockBitmap began; releases the storage only when `wasLocked` is 0. */
ZAVO_API void ZAVO_CALL Zv_UnlockBitmap(BitmapHandle* bitmap, int wasLocked);

/**
 * Cuts rows off the end of the stored image, or adds rows of zeros to it (of anything in global memory, on legacy
 * hosts). The region is cut too; new rows are not in it.
 * @param bitmap     an allocated bitmap that is not locked
 * @param newHeight  the new number of rows, at least 1
 * @return KSUCCESS; KERR_BAD_BITMAP; KERR_BAD_PARAMETER for a locked bitmap; KERR_NO_MEMORY when storage cannot be
 *         had, the height is below 1 or the size does not fit in 32 bits. The bitmap is unchanged on failure, except
 *         that a shrinking run-length bitmap whose row table cannot be resized has its new height all the same.
 */
ZAVO_API int ZAVO_CALL Zv_ChangeBitmapHeight(BitmapHandle* bitmap, int newHeight);

/**
 * Gives the unused end of a run-length bitmap's heap back to the system; DataSize becomes the heap's size.
 * @return 1 when the heap was shrunk; 0 when there was nothing to give back or shrinking failed; KERR_BAD_PARAMETER
 *         for a bitmap that is null, unallocated or not of run-length storage
 */
ZAVO_API int ZAVO_CALL Zv_TrimBitmapHeap(BitmapHandle* bitmap);

/**
 * Enlarges a run-length bitmap's heap so that `bytes` more bytes fit; DataSize becomes the heap's size.
 * @return 1; 0 when the heap could not be enlarged; KERR_BAD_PARAMETER as for Zv_TrimBitmapHeap
 */
ZAVO_API int ZAVO_CALL Zv_GrowBitmapHeap(BitmapHandle* bitmap, unsigned bytes);

/* ------------------------------------------------------------------------------------------------------------
 * Rows
 *
 * The bitmap must be locked or accessed (Zv_LockBitmap, Zv_AccessBitmap). For speed, these functions check neither
 * the storage flag nor the row, column and byte count against the bitmap: that is the caller's duty. Columns of
 * depths below 8 are rounded down to the byte that holds them; on run-length storage to a multiple of 8, and there
 * rows and columns are checked.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Copies the first bytes of a stored row. A count beyond the row goes on in the rows that follow; on run-length
 * storage it repeats the same row.
 * @param bitmap  the bitmap
 * @param buffer  receives `bytes` bytes
 * @param row     stored row, 0 to Height - 1
 * @param bytes   byte count
 * @return the bytes copied (fewer at the end of a temporary file); KERR_BAD_BITMAP for null; KERR_BAD_PARAMETER for a
 *         null buffer and, on run-length storage, for a row beyond the last; KERR_NO_MEMORY for a bitmap without
 *         storage or whose memory is not locked; KERR_SEEK, KERR_READ from a temporary file
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapRow(BitmapHandle* bitmap, unsigned char* buffer, unsigned row, unsigned bytes);

/**
 * As Zv_GetBitmapRow, from the byte that holds pixel `column`.
 * @return as Zv_GetBitmapRow; KERR_BAD_PARAMETER for a column at or beyond Width on run-length storage
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapRowCol(BitmapHandle* bitmap, unsigned char* buffer, unsigned row, unsigned column,
                                          unsigned bytes);

/**
 * Writes the first bytes of a stored row. A count beyond the row goes on in the rows that follow. A failed write may
 * leave part of the data written.
 * @param bitmap  the bitmap
 * @param buffer  `bytes` bytes
 * @param row     stored row, 0 to Height - 1
 * @param bytes   byte count
 * @return the bytes written (on run-length storage fewer when the rows end); KERR_BAD_BITMAP for null;
 *         KERR_BAD_PARAMETER for a null buffer and, on run-length storage, for a row beyond the last; KERR_NO_MEMORY
 *         for a bitmap without storage or when a run heap cannot hold the row, which is then unchanged; KERR_SEEK,
 *         KERR_WRITE from a temporary file
 */
ZAVO_API int ZAVO_CALL Zv_PutBitmapRow(BitmapHandle* bitmap, const unsigned char* buffer, unsigned row, unsigned bytes);

/**
 * As Zv_PutBitmapRow, from the byte that holds pixel `column`.
 * @return as Zv_PutBitmapRow; KERR_BAD_PARAMETER for a column at or beyond Width on run-length storage
 */
ZAVO_API int ZAVO_CALL Zv_PutBitmapRowCol(BitmapHandle* bitmap, const unsigned char* buffer, unsigned row,
                                          unsigned column, unsigned bytes);

/**
 * Writes those pixels of a stored row that lie in a list of segments, and no others.
 * @param bitmap        the bitmap
 * @param buffer        pixels in the bitmap's layout, from column 0 on, up to the last segment's end
 * @param row           stored row, 0 to Height - 1
 * @param columnOffset  added to a segment's columns for the place in the bitmap, by sums that wrap; `buffer` is
 *                      read at the columns themselves
 * @param segments      column numbers in pairs of start and end, the end exclusive, in increasing order
 * @param count         column numbers in the list, twice the number of segments; may be 0
 * @param keepAlpha     not 0: the alpha of stored pixels of 16 and 32 bits is kept
 * @return KSUCCESS; KERR_BAD_BITMAP for null; KERR_BAD_PARAMETER for a null buffer or list and, on run-length storage,
 *         for a row beyond the last; KERR_NO_MEMORY for a bitmap without storage or when a run heap cannot hold the
 *         row, which is then unchanged; KERR_SEEK, KERR_READ, KERR_WRITE from a temporary file, with part of the
 *         segments written
 */
ZAVO_API int ZAVO_CALL Zv_PutBitmapRowSegments(BitmapHandle* bitmap, const unsigned char* buffer, unsigned row,
                                               unsigned columnOffset, const unsigned* segments, unsigned count,
                                               int keepAlpha);

/* ------------------------------------------------------------------------------------------------------------
 * View perspective
 *
 * A frame is the coordinate system of one perspective code: columns from its left edge, rows from its top edge. The
 * bitmap's own frame, that of its ViewPerspective, is the stored image: Width columns, Height rows. In the frames of
 * codes 4 and 8 rows run along the columns of the upright picture: turned clockwise by 90 or 270 degrees they show it.
 * Only the record's sizes and code are looked at; the bitmap need not be allocated.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Carries a pixel's place from the bitmap's own frame to the frame of `perspective`.
 * @param bitmap       the bitmap
 * @param perspective  VIEW_ value of the other frame; the bitmap's own code changes nothing
 * @param x, y         column and row, converted in place
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null argument
 */
ZAVO_API int ZAVO_CALL Zv_PointFromBitmap(BitmapHandle* bitmap, int perspective, int* x, int* y);
/** The reverse: carries a pixel's place from the frame of `perspective` to the bitmap's own. */
ZAVO_API int ZAVO_CALL Zv_PointToBitmap(BitmapHandle* bitmap, int perspective, int* x, int* y);
/**
 * As Zv_PointFromBitmap for a rectangle, right and bottom exclusive.
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null argument
 */
ZAVO_API int ZAVO_CALL Zv_RectFromBitmap(BitmapHandle* bitmap, int perspective, RECT* rect);
/** The reverse: carries a rectangle from the frame of `perspective` to the bitmap's own. */
ZAVO_API int ZAVO_CALL Zv_RectToBitmap(BitmapHandle* bitmap, int perspective, RECT* rect);

/**
 * Stores the pixels again so that the bitmap shows the same picture with another view perspective. The status callback
 * is not called.
 * @param destination  receives a changed copy of the source; null or the source itself: the source is changed in place
 * @param source       the bitmap, untouched when there is a separate destination
 * @param perspective  the VIEW_ value wanted
 * @return KSUCCESS, at once when the bitmap has that perspective; KERR_BAD_PARAMETER for a source that is null or
 *         unallocated; KERR_NO_MEMORY; a row's code. A destination owns nothing after a failure. A change in place
 *         that takes a flip and a turn, and fails at the second, leaves the bitmap upright, with perspective 0: it
 *         shows the same picture.
 */
ZAVO_API int ZAVO_CALL Zv_ChangeBitmapViewPerspective(BitmapHandle* destination, BitmapHandle* source, int perspective);

/* ------------------------------------------------------------------------------------------------------------
 * Run-length rows
 *
 * A run record is a 1-bit row, or a piece of one, as runs of equal pixels: the number of runs n in 32 bits, then n run
 * lengths of 16 bits, little-endian, without padding. Runs alternate in colour; the first is of 0 bits and may be
 * empty, and the lengths add up to the pixels of the row or piece. Records of consecutive rows lie back to back in a
 * run buffer. Buffers of records must lie at even addresses; a record takes at most 6 + 2 * pixels bytes.
 *
 * A run of more than 65535 pixels is written as several runs with empty runs of the other colour between them, so
 * that a row may have any width. Records that are read may hold empty runs anywhere; pixels that the runs do not reach
 * are 0, and what the runs have beyond the row or piece is ignored.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Encodes packed pixels.
 * @param record      receives the record
 * @param bits        packed pixels, most significant bit first
 * @param startPixel  first pixel within the first byte; only its remainder by 8 is used
 * @param count       pixels to encode
 * @return count; KERR_BAD_PARAMETER for a null pointer
 */
ZAVO_API int ZAVO_CALL Zv_CompressRow(void* record, const unsigned char* bits, unsigned startPixel, unsigned count);

/**
 * Encodes packed rows that lie ((width + 31) / 32) * 4 bytes apart.
 * @param buffer  receives `rows` consecutive records
 * @param bits    the packed rows
 * @param width   pixels in a row
 * @param rows    number of rows, may be 0
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null pointer
 */
ZAVO_API int ZAVO_CALL Zv_CompressRows(void* buffer, const unsigned char* bits, unsigned width, unsigned rows);

/**
 * Decodes pixels of a record.
 * @param record      the record
 * @param bits        receives (count + 7) / 8 bytes; unused bits of the last are 0
 * @param startPixel  first pixel of the record's row to decode; it becomes the first bit of `bits`
 * @param count       pixels to decode
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null pointer
 */
ZAVO_API int ZAVO_CALL Zv_ExpandRow(const void* record, unsigned char* bits, unsigned startPixel, unsigned count);

/**
 * Decodes consecutive whole-row records into packed rows ((width + 31) / 32) * 4 bytes apart. Of each row only
 * (width + 7) / 8 bytes are written.
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null pointer
 */
ZAVO_API int ZAVO_CALL Zv_ExpandRows(const void* buffer, unsigned char* bits, unsigned width, unsigned rows);

/**
 * Reads whole rows of a 1-bit bitmap as consecutive records; of run-length storage without unpacking them. A blank row
 * is the one run Width.
 * @param bitmap   an allocated bitmap of 1 bit, of any storage
 * @param workRow  BytesPerLine bytes to work in, or null; needed for temporary files only and allocated if null
 * @param buffer   receives the records
 * @param row      first stored row
 * @param rows     number of rows; cut to the bitmap, possibly to none
 * @return KSUCCESS; KERR_BAD_BITMAP; KERR_BAD_BPP for a depth other than 1; KERR_BAD_PARAMETER for a null buffer;
 *         KERR_NO_MEMORY; KERR_SEEK, KERR_READ from a temporary file, KERR_WRITE when it gave too few bytes
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapRowCompressed(BitmapHandle* bitmap, unsigned char* workRow, void* buffer,
                                                 unsigned row, unsigned rows);

/**
 * Writes whole rows of a 1-bit bitmap from consecutive records; arguments as Zv_GetBitmapRowCompressed.
 * @return KSUCCESS; KERR_BAD_BITMAP; KERR_BAD_BPP; KERR_BAD_PARAMETER for a null buffer; KERR_NO_MEMORY for a work row
 *         or when the run heap cannot hold a row; KERR_SEEK, KERR_WRITE from a temporary file. Rows before the failed
 *         one are written; in run-length storage the failed one is unchanged.
 */
ZAVO_API int ZAVO_CALL Zv_PutBitmapRowCompressed(BitmapHandle* bitmap, unsigned char* workRow, const void* buffer,
                                                 unsigned row, unsigned rows);

/**
 * Reads a piece of a 1-bit bitmap as records: the rest of the first row, then whole rows, a record each, up to the
 * bitmap's last row. In run-length storage a whole blank row wider than 32767 pixels is given as runs of at most that
 * length.
 * @param bitmap   an allocated bitmap of 1 bit, of any storage
 * @param workRow  BytesPerLine bytes to work in, or null; needed for temporary files only and allocated if null
 * @param buffer   receives the records
 * @param row      stored row of the first pixel, 0 to Height - 1
 * @param column   its column, 0 to Width - 1
 * @param count    pixels in all
 * @return KSUCCESS; KERR_BAD_BITMAP; KERR_BAD_BPP for a depth other than 1; KERR_BAD_PARAMETER for a null buffer and a
 *         row or column outside the bitmap; KERR_NO_MEMORY; KERR_SEEK, KERR_READ, KERR_WRITE as
 *         Zv_GetBitmapRowCompressed
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapRowColCompressed(BitmapHandle* bitmap, unsigned char* workRow, void* buffer,
                                                    unsigned row, unsigned column, unsigned count);

/**
 * Writes a piece of a 1-bit bitmap from records; arguments as Zv_GetBitmapRowColCompressed. In run-length storage the
 * pixels around the piece are kept. In other storage each record is decoded to whole bytes, written at the byte that
 * holds its first pixel: the piece begins at a column rounded down to a multiple of 8, and the last byte's unused bits
 * become 0.
 * @return KSUCCESS for run-length storage, the number of bytes written for others; KERR_BAD_BITMAP; KERR_BAD_BPP;
 *         KERR_BAD_PARAMETER for a null buffer and a row or column outside the bitmap; KERR_NO_MEMORY, KERR_SEEK,
 *         KERR_WRITE as Zv_PutBitmapRowCompressed, with the same state after a failure
 */
ZAVO_API int ZAVO_CALL Zv_PutBitmapRowColCompressed(BitmapHandle* bitmap, unsigned char* workRow, const void* buffer,
                                                    unsigned row, unsigned column, unsigned count);

/**
 * Mirrors every record of a run buffer left to right.
 * @param source       `rows` consecutive records
 * @param destination  receives the mirrored records, each up to a run longer or shorter than its source; must not
 *                     overlap the source
 * @param rows         number of records, may be 0
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null pointer
 */
ZAVO_API int ZAVO_CALL Zv_MirrorCompressedBuffer(const void* source, void* destination, unsigned rows);

/**
 * Copies the records of a run buffer in reverse order; arguments as Zv_MirrorCompressedBuffer. The destination takes as
 * many bytes as the source.
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null pointer
 */
ZAVO_API int ZAVO_CALL Zv_FlipCompressedBuffer(const void* source, void* destination, unsigned rows);

/* ------------------------------------------------------------------------------------------------------------
 * Copying and bitmap lists
 *
 * A function that fills in a `destination` overwrites the record: what it held before is not looked at and not
 * freed. On failure nothing is left allocated in it.
 * --------------------------------------------------------------------------------------------------------- */

/** What a duplicate gets of its own; what is not asked for is shared with the source, which stays the owner. */
enum {
  DUP_STORAGE = 1, /**< Allocate storage, run-length rows when source and duplicate are 1-bit ones of that kind. */
  DUP_PALETTE = 2, /**< An own copy of the palette. */
  DUP_REGION = 4   /**< An own copy of the region. */
};

/**
 * Describes a bitmap like `source` under another size and depth: storage kind, perspective, resolution, colour order
 * and playback parameters carry over; no pixels are copied.
 * @param destination   the record to fill; not `source` itself
 * @param source        an allocated bitmap
 * @param width         pixels in a row of the duplicate
 * @param height        number of rows of the duplicate
 * @param bitsPerPixel  depth of the duplicate, 1 to 8, 16, 24 or 32
 * @param flags         any of the DUP_ bits
 * @return KSUCCESS; KERR_BAD_BITMAP for a null destination or a source that is null or unallocated;
 *         KERR_BAD_PARAMETER when both are the same record; KERR_EMPTY when storage was asked for and a side is 0 or
 *         the depth is not supported (without storage the latter is not noticed, the record then has no size);
 *         KERR_NO_MEMORY, also for a palette or region that could not be copied, and KERR_WRITE from the
 *         allocation. On failure the duplicate has no storage, palette or region.
 */
ZAVO_API int ZAVO_CALL Zv_DupBitmapNewDim(BitmapHandle* destination, BitmapHandle* source, int width, int height,
                                          int bitsPerPixel, unsigned flags);

/** Copies the record word for word; storage, palette and region are then shared. Nothing happens for a null. */
ZAVO_API void ZAVO_CALL Zv_CopyBitmapHandle(BitmapHandle* destination, const BitmapHandle* source);

/**
 * Copies the pixels between two allocated bitmaps of the same size and depth. Of bitmaps that differ, the rows and
 * bytes that both have are copied, whatever they mean. Failing reads and writes of temporary files are passed over.
 * @return KSUCCESS, also for a bitmap and itself; KERR_BAD_BITMAP when either is null or unallocated;
 *         KERR_NO_MEMORY for want of a work buffer or room in a run heap, the destination then partly written
 */
ZAVO_API int ZAVO_CALL Zv_CopyBitmapData(BitmapHandle* destination, BitmapHandle* source);

/**
 * Makes a full copy that owns its storage, palette and region.
 * @param destination  the record to fill
 * @param source       an allocated bitmap
 * @return KSUCCESS, also for a bitmap and itself; KERR_BAD_PARAMETER for a null destination or a source that is null
 *         or unallocated; otherwise the code of Zv_DupBitmapNewDim or Zv_CopyBitmapData
 */
ZAVO_API int ZAVO_CALL Zv_CopyBitmap(BitmapHandle* destination, BitmapHandle* source);

/**
 * Copies a rectangle of a bitmap into a bitmap of the rectangle's size, with an own palette and the source's region
 * moved along and cut to it. Where the rectangle reaches beyond the source the result is zero.
 * @param destination  the record to fill; null or `source` itself replaces the source
 * @param source       an allocated bitmap
 * @param left         first column of the rectangle in the stored image, may be negative
 * @param top          first row of the rectangle, may be negative
 * @param width        pixels in a row of the rectangle
 * @param height       rows of the rectangle
 * @return KSUCCESS, also for a rectangle that shares no pixel with the source: the destination is then left without
 *         storage, and a source that was to be replaced as it was; KERR_BAD_PARAMETER for a source that is null or
 *         unallocated; KERR_EMPTY for a side of 0; KERR_NO_MEMORY, also for a side above the signed range;
 *         KERR_SEEK, KERR_READ, KERR_WRITE from temporary files. On failure the destination has no storage, and a
 *         source that was to be replaced is as it was.
 */
ZAVO_API int ZAVO_CALL Zv_CopyBitmapRect(BitmapHandle* destination, BitmapHandle* source, int left, int top,
                                         unsigned width, unsigned height);

/**
 * Cuts a bitmap down to the part of it that lies in a rectangle.
 * @return KERR_BAD_PARAMETER for a bitmap that is null or unallocated; KERR_EMPTY when the rectangle shares no pixel
 *         with the bitmap; otherwise as Zv_CopyBitmapRect in place
 */
ZAVO_API int ZAVO_CALL Zv_TrimBitmap(BitmapHandle* bitmap, int left, int top, unsigned width, unsigned height);

/**
 * An ordered list of bitmaps. The items are handle records: putting a bitmap into a list hands it over to the list,
 * taking it out hands it back. Every function that takes a list refuses one that is null or freed with
 * KERR_BAD_PARAMETER.
 */
typedef HANDLE BitmapListHandle;

/**
 * Makes an empty list.
 * @param list  receives the list, null on failure; the caller frees it with Zv_DestroyBitmapList
 * @return KSUCCESS; KERR_BAD_PARAMETER for null; KERR_NO_MEMORY
 */
ZAVO_API int ZAVO_CALL Zv_CreateBitmapList(BitmapListHandle* list);
/** Frees a list and every bitmap in it. @return KSUCCESS; KERR_BAD_PARAMETER */
ZAVO_API int ZAVO_CALL Zv_DestroyBitmapList(BitmapListHandle list);

/**
 * Puts a bitmap into a list; the items from `index` on move up by one.
 * @param list   the list
 * @param index  position of the new item; at or beyond the number of items appends
 * @param item   record to copy, now the list's; null puts in a record of zeros
 * @return KSUCCESS; KERR_BAD_PARAMETER; KERR_NO_MEMORY, the list then unchanged and the bitmap still the caller's
 */
ZAVO_API int ZAVO_CALL Zv_InsertBitmapListItem(BitmapListHandle list, unsigned index, const BitmapHandle* item);
/**
 * Takes a bitmap out of a list without freeing it.
 * @param list   the list
 * @param index  the item's position
 * @param item   receives the record, which is the caller's again; null loses it
 * @return KSUCCESS; KERR_BAD_PARAMETER, also for an index at or beyond the number of items
 */
ZAVO_API int ZAVO_CALL Zv_RemoveBitmapListItem(BitmapListHandle list, unsigned index, BitmapHandle* item);
/**
 * Takes items out of a list and frees them.
 * @param list   the list
 * @param index  position of the first
 * @param count  number of items; more than follow `index` means all of these
 * @return KSUCCESS; KERR_BAD_PARAMETER, also for an index at or beyond the number of items or a count of 0
 */
ZAVO_API int ZAVO_CALL Zv_DeleteBitmapListItems(BitmapListHandle list, unsigned index, unsigned count);
/** Stores the number of items in `count`. @return KSUCCESS; KERR_BAD_PARAMETER, also for a null `count` */
ZAVO_API int ZAVO_CALL Zv_GetBitmapListCount(BitmapListHandle list, unsigned* count);
/**
 * Copies an item's record out; it shares storage, palette and region with the item, which the list still owns.
 * @return KSUCCESS; KERR_BAD_PARAMETER, also for an index at or beyond the number of items or a null `item`
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapListItem(BitmapListHandle list, unsigned index, BitmapHandle* item);
/**
 * Overwrites an item's record, or zeroes it for a null `item`. The bitmap it held is not freed.
 * @return KSUCCESS; KERR_BAD_PARAMETER, also for an index at or beyond the number of items
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapListItem(BitmapListHandle list, unsigned index, const BitmapHandle* item);
/**
 * Makes a new list of full copies (Zv_CopyBitmap) of the items from `index` on.
 * @param destination  receives the new list; not written on failure
 * @param list         the list
 * @param index        position of the first item
 * @param count        number of items; more than follow `index` means all of these
 * @return KSUCCESS; KERR_BAD_PARAMETER, also for an index at or beyond the number of items, a count of 0, a null
 *         destination or an item without storage; KERR_NO_MEMORY; the code of Zv_CopyBitmap
 */
ZAVO_API int ZAVO_CALL Zv_CopyBitmapListItems(BitmapListHandle* destination, BitmapListHandle list, unsigned index,
                                              unsigned count);

/* ------------------------------------------------------------------------------------------------------------
 * Operating-system services and redirected I/O
 * --------------------------------------------------------------------------------------------------------- */

/** Opens a file: name, open flags, permission flags (as Zv_OsOpen). Returns a file handle or -1. */
typedef int(ZAVO_CALL* IoOpenFunction)(const char* name, int openFlags, int permissionFlags);
/** Reads `count` bytes. Returns the bytes read or -1. */
typedef int(ZAVO_CALL* IoReadFunction)(int file, void* buffer, unsigned count);
/** Writes `count` bytes. Returns the bytes written or -1. */
typedef int(ZAVO_CALL* IoWriteFunction)(int file, const void* buffer, unsigned count);
/** Moves the file position; origin 0 start, 1 current position, else end. Returns the new one or 0xFFFFFFFF. */
typedef unsigned(ZAVO_CALL* IoSeekFunction)(int file, int offset, int origin);
/** Closes a file. Returns 0 or -1. */
typedef int(ZAVO_CALL* IoCloseFunction)(int file);

/**
 * Allocates a block of shareable global memory that stays locked for its whole life.
 * @param size  bytes
 * @param zero  not 0: the block starts as zeros
 * @return its address, or null; free it with Zv_OsFree
 */
ZAVO_API void* ZAVO_CALL Zv_OsAllocInit(unsigned size, int zero);
/** As Zv_OsAllocInit without zeroing. */
ZAVO_API void* ZAVO_CALL Zv_OsAlloc(unsigned size);
/**
 * Resizes a block, which may move.
 * @return the new address; null when it could not be resized, the old block then still existing
 */
ZAVO_API void* ZAVO_CALL Zv_OsReAlloc(void* address, unsigned size);
/** Frees a block; null is ignored. @return 0 */
ZAVO_API int ZAVO_CALL Zv_OsFree(void* address);

/**
 * Creates or empties a file, shared for reading and writing.
 * @param name        its path, in the system's code page
 * @param attributes  bit 0 makes a read-only file, opened for reading; bits 1 and 2 are hidden and system
 * @return a file handle, or -1
 */
ZAVO_API int ZAVO_CALL Zv_OsCreat(const char* name, int attributes);
/**
 * Opens a file.
 * @param name             its path, in the system's code page
 * @param openFlags        bits 0-1: 0 read, 1 write, 2 or 3 both; 0x100 creates or empties, else 0x200 empties
 * @param permissionFlags  0x80 | 0x100 shares for reading and writing, 0x100 for reading, others not at all
 * @return a file handle, or -1
 */
ZAVO_API int ZAVO_CALL Zv_OsOpen(const char* name, int openFlags, int permissionFlags);
/** Reads from a file. @return bytes read, or -1 */
ZAVO_API int ZAVO_CALL Zv_OsRead(int file, void* buffer, unsigned count);
/** Writes to a file. @return bytes written, or -1 */
ZAVO_API int ZAVO_CALL Zv_OsWrite(int file, const void* buffer, unsigned count);
/** Moves the file position; origin 0 start, 1 current position, else end. @return the position, or 0xFFFFFFFF */
ZAVO_API unsigned ZAVO_CALL Zv_OsSeek(int file, int offset, int origin);
/** Closes a file. @return 0, or -1 */
ZAVO_API int ZAVO_CALL Zv_OsClose(int file);
/** Deletes a file. @return 0, or -1 */
ZAVO_API int ZAVO_CALL Zv_OsDelete(const char* name);
/**
 * Creates an empty temporary file and puts its path into `buffer`, of at least 260 bytes; an empty text when there can
 * be none.
 * @return 0 always
 */
ZAVO_API int ZAVO_CALL Zv_OsGetTempName(char* buffer);

/**
 * Installs the application's own file functions for this thread; a null argument installs the library's own. Only
 * the Zv_Redirected functions use them: the library's temporary files are never redirected.
 * @return the address of the thread's settings; of no use to callers
 */
ZAVO_API void* ZAVO_CALL Zv_RedirectIO(IoOpenFunction open, IoReadFunction read, IoWriteFunction write,
                                       IoSeekFunction seek, IoCloseFunction close);
/**
 * Reads the thread's file functions and chains filters to them: for each pointer that is not null, the function it
 * points to is installed, unless that is null, and the function in force before is stored back through the pointer.
 * @return as Zv_RedirectIO
 */
ZAVO_API void* ZAVO_CALL Zv_FilterIO(IoOpenFunction* open, IoReadFunction* read, IoWriteFunction* write,
                                     IoSeekFunction* seek, IoCloseFunction* close);

/** Calls the thread's open function. */
ZAVO_API int ZAVO_CALL Zv_RedirectedOpen(const char* name, int openFlags, int permissionFlags);
/** Calls the thread's read function. */
ZAVO_API int ZAVO_CALL Zv_RedirectedRead(int file, void* buffer, unsigned count);
/** Calls the thread's write function. */
ZAVO_API int ZAVO_CALL Zv_RedirectedWrite(int file, const void* buffer, unsigned count);
/** Calls the thread's seek function. */
ZAVO_API unsigned ZAVO_CALL Zv_RedirectedSeek(int file, int offset, int origin);
/** Calls the thread's close function. */
ZAVO_API int ZAVO_CALL Zv_RedirectedClose(int file);

/* ------------------------------------------------------------------------------------------------------------
 * Palettes
 *
 * Colours pass as palette arrays (RGBQUAD: blue, green, red, reserved). The reserved byte travels as the flags of a
 * palette object's entry. Palette objects that a function returns belong to the caller.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Makes a palette object.
 * @param palette  `count` entries
 * @param count    1 to 65535
 * @return the palette, or null when it cannot be made or an argument is out of range
 */
ZAVO_API HPALETTE ZAVO_CALL Zv_CreatePalette(const RGBQUAD* palette, unsigned count);
/** @return the number of entries of a palette object, 0 for null */
ZAVO_API unsigned ZAVO_CALL Zv_GetPaletteSize(HPALETTE palette);
/**
 * Reads entries of a palette object.
 * @param palette  the palette object
 * @param first    first entry
 * @param count    number of entries
 * @param colors   receives up to `count` entries
 * @return the number of entries read, fewer at the end of the palette; 0 on failure, `colors` then untouched
 */
ZAVO_API unsigned ZAVO_CALL Zv_GetPaletteEntries(HPALETTE palette, unsigned first, unsigned count, RGBQUAD* colors);
/**
 * Changes entries of a palette object.
 * @param palette  the palette object
 * @param first    first entry
 * @param count    number of entries
 * @param colors   `count` entries
 * @return the number of entries changed, fewer at the end of the palette; 0 on failure
 */
ZAVO_API unsigned ZAVO_CALL Zv_SetPaletteEntries(HPALETTE palette, unsigned first, unsigned count,
                                                 const RGBQUAD* colors);
/** Makes a palette of the screen's system colours. @return the palette; null when the screen is no palette device */
ZAVO_API HPALETTE ZAVO_CALL Zv_CreateSystemPalette(void);
/** @return the library's constant fixed palette of 1 to 8 bits, 1 << bitsPerPixel entries; null for other depths */
ZAVO_API const RGBQUAD* ZAVO_CALL Zv_IntGetFixedPalette(int bitsPerPixel);
/**
 * Copies a fixed palette.
 * @param palette       receives 1 << bitsPerPixel entries, 256 for 0
 * @param bitsPerPixel  1 to 8; 0 for 256 greys in rising order
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null array or another depth
 */
ZAVO_API int ZAVO_CALL Zv_GetFixedPalette(RGBQUAD* palette, int bitsPerPixel);
/**
 * Makes a palette object of a fixed palette.
 * @param bitsPerPixel  1 to 8; 0 gives black and white like 1
 * @return the palette; null for another depth or when it cannot be made
 */
ZAVO_API HPALETTE ZAVO_CALL Zv_CreateFixedPalette(int bitsPerPixel);
/**
 * Gives a bitmap the fixed palette of its ColorCount (2, 4, 8, 16, 32, 64, 128 or 256). A palette that the bitmap
 * already has is not deleted.
 * @return 1; 0 for a null bitmap, another count or when the palette cannot be made, the bitmap then unchanged
 */
ZAVO_API int ZAVO_CALL Zv_CreateBitmapFixedPalette(BitmapHandle* bitmap);
/**
 * Makes a palette of evenly spaced greys, rounded down, from black to white.
 * @param bitsPerPixel  the palette has 1 << (bitsPerPixel & 31) entries, at most 32768; 0 means 8; a palette of one
 *                      entry is black
 * @return the palette; null when it cannot be made
 */
ZAVO_API HPALETTE ZAVO_CALL Zv_CreateGrayPalette(int bitsPerPixel);
/** Copies a palette object. @return the copy; null for a null or empty palette or when it cannot be made */
ZAVO_API HPALETTE ZAVO_CALL Zv_DupPalette(HPALETTE palette);
/**
 * Compares the first entries of a palette object with an array by red, green and blue.
 * @param palette  the palette object
 * @param colors   `count` entries
 * @param count    entries to compare; those beyond the palette's end are not looked at
 * @return 1 when all agree or the palette has no entries to read; else 0
 */
ZAVO_API int ZAVO_CALL Zv_CompareHandleToPalette(HPALETTE palette, const RGBQUAD* colors, unsigned count);
/**
 * Tells whether a bitmap's palette is grey. Steps of a ramp are 255 / (ColorCount - 1), rounded down.
 * @return 0 not grey, more than 8 bits, null, or without a readable palette; 1 an even ramp rising from black; 2 an
 *         even ramp falling from white; 3 other greys
 */
ZAVO_API int ZAVO_CALL Zv_IsGrayScaleBitmap(const BitmapHandle* bitmap);
/**
 * Reads colours of a bitmap's palette. The bitmap need not have pixels.
 * @param bitmap  a bitmap of up to 8 bits
 * @param first   first entry
 * @param count   number of entries, at least 1
 * @param colors  receives `count` entries
 * @return KSUCCESS; KERR_BAD_BITMAP for null; KERR_BAD_PARAMETER for a null array, a count of 0, more than 8 bits or
 *         when the palette does not hold all entries, `colors` then untouched
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapColors(const BitmapHandle* bitmap, int first, unsigned count, RGBQUAD* colors);
/**
 * Replaces colours of a bitmap's palette. The bitmap gets a new palette object, the old one is deleted.
 * @param bitmap  an allocated bitmap of up to 8 bits
 * @param first   first entry
 * @param count   number of entries; first + count at most ColorCount
 * @param colors  `count` entries
 * @return KSUCCESS; KERR_BAD_BITMAP for a null or unallocated bitmap; KERR_BAD_PARAMETER for a null array, entries
 *         out of range or more than 8 bits; KERR_NO_MEMORY when the new palette cannot be made. On failure the bitmap
 *         is unchanged.
 */
ZAVO_API int ZAVO_CALL Zv_PutBitmapColors(BitmapHandle* bitmap, int first, unsigned count, const RGBQUAD* colors);
/**
 * Finds the palette entry nearest to a colour by the sum of squared channel differences. Black prefers entry 0 and
 * white the last entry when these hold them; among equally near entries a later one wins only when its channels
 * stand in the same order as the colour's.
 * @param palette  `count` entries
 * @param count    number of entries
 * @param red, green, blue  the colour, 0 to 255 each; higher bits are ignored
 * @return the index; 0xFFFFFFFF for a null or empty palette
 */
ZAVO_API unsigned ZAVO_CALL Zv_FindPaletteIndex(const RGBQUAD* palette, unsigned count, unsigned red, unsigned green,
                                                unsigned blue);
/**
 * Computes a match table: 32768 entries, one for each colour of 5 bits a channel. Entry red5 << 10 | green5 << 5 |
 * blue5 is the index nearest to 8 * red5, 8 * green5, 8 * blue5, plus 1; 0 stands for no entry.
 * @param palette  `count` entries; without any, all of the table is 0
 * @param count    number of entries
 * @return the table, to be freed with Zv_FreeUserMatchTable; null without memory
 */
ZAVO_API unsigned* ZAVO_CALL Zv_CreateUserMatchTable(const RGBQUAD* palette, unsigned count);
/**
 * Installs a match table for this thread: colours are then reduced by looking them up in the table instead of
 * searching the palette. The table stays the caller's and must live until another one is installed.
 * @param table  the table, or null for none
 * @return the table in force before
 */
ZAVO_API unsigned* ZAVO_CALL Zv_SetUserMatchTable(unsigned* table);
/** Frees a match table; null is ignored. @return 1 */
ZAVO_API int ZAVO_CALL Zv_FreeUserMatchTable(unsigned* table);
/** @return 256 bytes: entry v is the number of 1 bits in the byte v */
ZAVO_API const unsigned char* ZAVO_CALL Zv_Get1BitOnTable(void);

/* ------------------------------------------------------------------------------------------------------------
 * Buffer conversion
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Converts a row of pixels in place. Pixels of up to 8 bits follow the palettes; to reduce colours each is given the
 * nearest palette entry (Zv_FindPaletteIndex), found through the thread's match table when one is installed
 * (Zv_SetUserMatchTable). Grey is (2 * red + 5 * green + blue + 4) / 8. Channels of 5 bits become 8 bits by repeating
 * their top bits, channels of 8 bits become 5 bits by dropping the lower ones. From 32 to 16 bits an alpha above 127
 * sets bit 15; other conversions to 16 or 32 bits clear alpha, except those that only exchange the channels.
 * @param buffer              the row; room for the longer of the two formats (Zv_CalcConvertSize)
 * @param width               pixels, at least 1
 * @param sourceDepth         0 for 8-bit grey without a palette, 1 to 8, 16, 24 or 32
 * @param destinationDepth    likewise
 * @param sourceOrder         ORDER_ value; looked at for 16 bits and up
 * @param destinationOrder    likewise
 * @param sourcePalette       for 1 to 8 bits: 1 << sourceDepth entries, or null for the fixed palette
 * @param destinationPalette  likewise
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null buffer, a width below 1, another depth or order, the buffer then
 *         untouched
 */
ZAVO_API int ZAVO_CALL Zv_ConvertBuffer(unsigned char* buffer, int width, int sourceDepth, int destinationDepth,
                                        int sourceOrder, int destinationOrder, const RGBQUAD* sourcePalette,
                                        const RGBQUAD* destinationPalette);
/**
 * Tells the size of a row buffer for a conversion: the largest of `widthB` pixels of `bitsA`, `widthB` pixels of
 * `bitsB` and `widthA` pixels of `bitsA`, each a multiple of 4 bytes. To convert in place pass the row's width twice.
 * @param widthA, widthB  pixels
 * @param bitsA, bitsB    bits per pixel; 0 counts as 8
 * @return bytes; 0xFFFFFFFC for a size that does not fit in 32 bits
 */
ZAVO_API unsigned ZAVO_CALL Zv_CalcConvertSize(unsigned widthA, unsigned bitsA, unsigned widthB, unsigned bitsB);

/* ------------------------------------------------------------------------------------------------------------
 * Dithering
 *
 * A dither run turns rows of a bitmap into rows of palette indexes, carrying what is lost at one pixel to those that
 * follow (methods 1 to 6) or adding an 8 x 8 pattern (7 and 8). The bitmap's record is all that is needed, it need not
 * have pixels; DitheringMethod is read at the start, and any value but 1 to 8 gives each pixel its nearest entry.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Opens a dither run; one that is open on the handle is closed first.
 * @param bitmap      describes the rows: Width, BitsPerPixel, ColorOrder, Palette (the fixed palette when null)
 * @param palette     target palette, `colorCount` entries, copied; null for the fixed palette
 * @param colorCount  1 to 256; destination rows have the fewest bits per pixel that hold as many indexes, at least 1
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null bitmap, a colour count out of range, a depth other than 1 to 8, 16,
 *         24 and 32, or a negative width; KERR_NO_MEMORY. On failure the handle has no dither run.
 */
ZAVO_API int ZAVO_CALL Zv_StartDithering(BitmapHandle* bitmap, const RGBQUAD* palette, unsigned colorCount);
/**
 * Dithers the next row; rows are given in order from the top.
 * @param bitmap       a bitmap with an open run
 * @param source       Width pixels of the bitmap's format
 * @param destination  receives Width packed indexes; the bits after the last one in its byte are kept. May be `source`.
 * @return KSUCCESS; KERR_BAD_PARAMETER when the bitmap, its run or a row is null
 */
ZAVO_API int ZAVO_CALL Zv_DitherLine(BitmapHandle* bitmap, const unsigned char* source, unsigned char* destination);
/** Closes the dither run, if one is open. @return KSUCCESS; KERR_BAD_PARAMETER for a null bitmap */
ZAVO_API int ZAVO_CALL Zv_StopDithering(BitmapHandle* bitmap);

/* ------------------------------------------------------------------------------------------------------------
 * Colour reduction, translation and colour spaces
 * --------------------------------------------------------------------------------------------------------- */

/** Options of Zv_ColorResBitmap. Those of 1 to 8 bits mean nothing above, and the other way round. */
enum {
  COLORRES_BLUE_FIRST = 0x0004,        /**< 16 bits and up: blue first; clear: red first. */
  COLORRES_GIVEN_PALETTE = 0x0010,     /**< 1 to 8 bits: the palette given. */
  COLORRES_FIXED_PALETTE = 0x0020,     /**< The library's fixed palette of the depth. */
  COLORRES_OPTIMISED_PALETTE = 0x0040, /**< A palette chosen from the colours of the image. */
  COLORRES_GRAY_PALETTE = 0x0080,      /**< An even grey ramp; colours count by their brightness. */
  COLORRES_NEAREST = 0x10000           /**< Each colour becomes its nearest entry; clear: dithering. */
};

/**
 * Makes a converted copy of a bitmap at another depth, in another colour order or with another palette. Size,
 * perspective, resolution, playback parameters and an own copy of the region carry over.
 *
 * Palettes of 1 to 8 bits: at most one of the four options; with none, the source's own palette when it fits, else an
 * optimised one. Without COLORRES_NEAREST colours are dithered by the source's DitheringMethod (0: nearest), except
 * where every colour of the source's palette is in the new one. Where colours of 16 bits and up are matched with a
 * given or fixed palette, the thread's match table is used when there is one.
 * @param source        the bitmap
 * @param destination   receives the copy; what the record held is overwritten, not freed, and only on success. Null or
 *                      `source`: the bitmap itself is converted.
 * @param bitsPerPixel  1 to 8, 16, 24, 32; 0 makes an 8-bit grey image, whatever palette is asked for
 * @param options       COLORRES_ values
 * @param palette       for COLORRES_GIVEN_PALETTE: `colorCount` entries; else not looked at
 * @param colorCount    entries of the given palette, 1 to 1 << bitsPerPixel; the most colours of an optimised one, 0
 *                      for the depth's full number; 216 with COLORRES_FIXED_PALETTE at 8 bits takes the colour cube of
 *                      six levels; else not looked at
 * @return KSUCCESS; KERR_BAD_BITMAP for a source that is null or unallocated; KERR_BAD_BPP for another depth;
 *         KERR_BAD_PARAMETER for more than one palette option and for a given palette that is null or of a count out
 *         of range; KERR_NO_MEMORY; KERR_SEEK, KERR_READ, KERR_WRITE from temporary files; the value of the status
 *         callback. On failure source and destination are unchanged.
 */
ZAVO_API int ZAVO_CALL Zv_ColorResBitmap(BitmapHandle* source, BitmapHandle* destination, int bitsPerPixel,
                                         unsigned options, const RGBQUAD* palette, unsigned colorCount);

/**
 * As Zv_ColorResBitmap for every item of a list, in place: all are converted or, on failure, none. Items that get an
 * optimised palette share one, chosen from the colours of the whole list.
 * @param list          the list; an empty one is a success
 * @param bitsPerPixel  as for Zv_ColorResBitmap
 * @param options       as for Zv_ColorResBitmap
 * @param palette       as for Zv_ColorResBitmap
 * @param colorCount    as for Zv_ColorResBitmap
 * @return as Zv_ColorResBitmap; KERR_BAD_PARAMETER for a null list too; KERR_BAD_BITMAP when an item has no storage
 */
ZAVO_API int ZAVO_CALL Zv_ColorResBitmapList(BitmapListHandle list, int bitsPerPixel, unsigned options,
                                             const RGBQUAD* palette, unsigned colorCount);

/**
 * Carries a colour value from one bitmap to another. A palette index of `source` becomes its colour, or, for a
 * destination of up to 8 bits, the nearest index there (an index that has the same colour in both keeps its number).
 * A plain colour stays as it is.
 * @param destination  the bitmap the colour is meant for
 * @param source       the bitmap the colour comes from
 * @param color        colour value; a top byte of 1 marks a palette index
 * @return the colour value for `destination`; `color` itself when a bitmap is null or unallocated or the source's
 *         palette has no such entry
 */
ZAVO_API COLORREF ZAVO_CALL Zv_TranslateBitmapColor(BitmapHandle* destination, BitmapHandle* source, COLORREF color);

/** Colour spaces of Zv_ConvertColorSpace: what the three bytes of a pixel are. */
enum {
  SPACE_BGR = 0,   /**< Blue, green, red. */
  SPACE_YCBCR = 1, /**< Y, Cb, Cr of BT.601, full range, no colour at 128. */
  SPACE_CMY = 2,   /**< Cyan, magenta, yellow. */
  SPACE_HSV = 3,   /**< Hue (0 to 255 for the full circle: red 0, green 85, blue 171), saturation, value. */
  SPACE_HLS = 4    /**< Hue, lightness, saturation. */
};

/**
 * Converts a row of 3-byte pixels from one colour space to another, in place. Values are rounded to the nearest; greys
 * have hue and saturation 0.
 * @param buffer            `width` pixels
 * @param width             pixels, at least 1
 * @param sourceSpace       SPACE_ value
 * @param destinationSpace  SPACE_ value
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null buffer, a width of 0 or another space
 */
ZAVO_API int ZAVO_CALL Zv_ConvertColorSpace(unsigned char* buffer, unsigned width, int sourceSpace,
                                            int destinationSpace);

/* ------------------------------------------------------------------------------------------------------------
 * Device-independent and device-dependent bitmaps
 *
 * A packed DIB is one block of moveable global memory: header, colour table, rows of a multiple of 4 bytes. The
 * Convert functions leave what they read alone, the Change functions take it over. A DIB is taken in with 1, 4, 8,
 * 16 (5-5-5), 24 or 32 bits (blue, green, red, unused), one plane, uncompressed; its colour table has at most 256
 * entries. A header resolution of 0 stands for the screen's.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Makes a packed DIB of a bitmap: a 40-byte header, the picture's bottom row first. 2 and 3 bits become 4, 5 to 7
 * become 8, 16 and 32 become 24. The header's colours-used field is 0, the colour table has all 2, 16 or 256 entries
 * with reserved bytes of 0; without a palette the fixed one of the depth is written.
 * @param bitmap  an allocated bitmap
 * @return the DIB, the caller's; null for a bitmap that is null or unallocated, when memory cannot be had, or when a
 *         row cannot be read
 */
ZAVO_API HGLOBAL ZAVO_CALL Zv_ConvertToDIB(const BitmapHandle* bitmap);

/**
 * As Zv_ConvertToDIB, and frees the bitmap; but the colours-used field is the bitmap's ColorCount, the colour table
 * has as many entries, and their reserved bytes are those of the palette.
 * @param bitmap  an allocated bitmap that is not locked (BMF_LOCKED)
 * @return the DIB, the caller's; null as for Zv_ConvertToDIB and for a locked bitmap, the bitmap then unchanged
 */
ZAVO_API HGLOBAL ZAVO_CALL Zv_ChangeToDIB(BitmapHandle* bitmap);

/**
 * Makes a bitmap of a DIB whose header and rows lie where the caller says. The view perspective is VIEW_UPRIGHT for a
 * negative height, else VIEW_BOTTOM_UP; ColorOrder is 1 for every depth. The palette is read as 4-byte entries that
 * begin 40 bytes after the header's start, whatever the header's size.
 * @param bitmap  receives the bitmap; what it held is not looked at
 * @param header  a BITMAPINFOHEADER, BITMAPCOREHEADER or longer header with its colour table
 * @param rows    the first stored row
 * @return KSUCCESS; KERR_BAD_PARAMETER for null; KERR_BAD_DIB for a format that is not taken, a side of 0, a negative
 *         width, a size beyond 32 bits, or memory that does not hold what the header claims, as far as that can be
 *         told; KERR_NO_MEMORY; KERR_WRITE from a temporary file. The record is untouched on failure.
 */
ZAVO_API int ZAVO_CALL Zv_ConvertFromDIB(BitmapHandle* bitmap, const BITMAPINFO* header, const unsigned char* rows);

/**
 * Makes a bitmap of a packed DIB and frees the DIB. The view perspective is as for Zv_ConvertFromDIB; ColorOrder is 1
 * above 8 bits, else 0.
 * @param bitmap  receives the bitmap; what it held is not looked at
 * @param dib     global memory; the library's on success, still the caller's on failure
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null bitmap or memory that cannot be locked; KERR_BAD_DIB as for
 *         Zv_ConvertFromDIB; KERR_NO_MEMORY; KERR_WRITE from a temporary file. The record is untouched on failure.
 */
ZAVO_API int ZAVO_CALL Zv_ChangeFromDIB(BitmapHandle* bitmap, HGLOBAL dib);

/**
 * Paints a bitmap into a new device-dependent bitmap: upright, with its own colours, dithered where the device shows
 * fewer. The thread's display mode is set to PAINT_DITHER alone of PAINT_DITHER and PAINT_INDEX_COLORS meanwhile.
 * @param dc      the device context that the result is compatible with; null for the screen's
 * @param bitmap  an allocated bitmap; run-length and rotated bitmaps are read as they are
 * @return the device-dependent bitmap, the caller's to delete; null for a bitmap that is null or unallocated, or when
 *         memory or a GDI object cannot be had
 */
ZAVO_API HBITMAP ZAVO_CALL Zv_ConvertToDDB(HDC dc, BitmapHandle* bitmap);

/** As Zv_ConvertToDDB, and frees the bitmap on success. */
ZAVO_API HBITMAP ZAVO_CALL Zv_ChangeToDDB(HDC dc, BitmapHandle* bitmap);

/**
 * Makes a bitmap, VIEW_BOTTOM_UP, of a device-dependent bitmap: 1 bit a pixel stays 1, 2 to 4 become 4, 5 to 8 become
 * 8, more become 24. The resolution is the screen's.
 * @param dc       a device context, for the palette and the pixels
 * @param bitmap   receives the bitmap; what it held is not looked at
 * @param source   the device-dependent bitmap, not selected into a device context; untouched
 * @param palette  selected and realised into dc meanwhile; null for none
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null bitmap or a source that cannot be read; KERR_NO_MEMORY; KERR_WRITE
 *         from a temporary file. The record is untouched on failure.
 */
ZAVO_API int ZAVO_CALL Zv_ConvertFromDDB(HDC dc, BitmapHandle* bitmap, HBITMAP source, HPALETTE palette);

/** As Zv_ConvertFromDDB, and on success deletes the source and the palette, if given, with DeleteObject. */
ZAVO_API int ZAVO_CALL Zv_ChangeFromDDB(HDC dc, BitmapHandle* bitmap, HBITMAP source, HPALETTE palette);

/* ------------------------------------------------------------------------------------------------------------
 * Pixel colour
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Reads one pixel as a colour value 0x00BBGGRR; an index as its palette colour.
 * @param bitmap  the bitmap
 * @param row     stored row
 * @param column  pixel of the row
 * @return the colour; 0x80000000 for a null or unallocated bitmap and for a pixel outside it
 */
ZAVO_API COLORREF ZAVO_CALL Zv_GetPixelColor(BitmapHandle* bitmap, int row, int column);
/**
 * Writes one pixel, if the bitmap's region holds it. Up to 8 bits the nearest palette entry is stored
 * (Zv_FindPaletteIndex), or the index itself when the colour's top byte is 1. The alpha bit of a 16-bit pixel is
 * cleared, the fourth byte of a 32-bit pixel kept. A write that fails in the storage is not reported.
 * @param bitmap  the bitmap
 * @param row     stored row
 * @param column  pixel of the row
 * @param color   0x00BBGGRR, or an index with a top byte of 1
 * @return KSUCCESS; KERR_BAD_BITMAP for a null or unallocated bitmap; KERR_EMPTY for a pixel outside the region, or
 *         outside the bitmap when it has none
 */
ZAVO_API int ZAVO_CALL Zv_PutPixelColor(BitmapHandle* bitmap, int row, int column, COLORREF color);

/* ------------------------------------------------------------------------------------------------------------
 * Painting
 *
 * Pictures are painted with the thread's display mode and with its brightness ("intensity"), contrast and gamma.
 * --------------------------------------------------------------------------------------------------------- */

/** Display-mode flags. */
enum {
  PAINT_ORDERED_DITHER = 0x001, /**< Dithering by an ordered matrix; clear: by error diffusion. */
  PAINT_INDEX_COLORS = 0x004,   /**< Palette images refer to the palette selected into the device context. */
  PAINT_DITHER = 0x008,         /**< What the device cannot show is dithered here; clear: the device is left to it. */
  PAINT_GRAY_1BIT = 0x010,      /**< 1-bit grey-palette images become grey levels by area coverage. */
  PAINT_CLUSTERED_DOT = 0x020,  /**< Ordered 1-bit output uses clustered dots. */
  PAINT_GRAY_1BIT_ALT = 0x040,  /**< As PAINT_GRAY_1BIT, when that is clear, and only for stretched pictures. */
  PAINT_FIXED_PALETTE = 0x080,  /**< On palette devices, pictures are brought onto the fixed palettes. */
  PAINT_CUBE_PALETTE = 0x100    /**< 256 colours means the 6 x 6 x 6 cube instead of the 3-3-2 palette. */
};

/**
 * Paints a bitmap onto a device context, scaled to the destination. A source rectangle counts on the picture as seen
 * for the upright and the bottom-up perspective, in stored coordinates for the rotated ones.
 * @param dc               the device context
 * @param bitmap           the bitmap
 * @param source           the part to paint, null for all
 * @param sourceClip       limits the source, null for no limit
 * @param destination      where the source goes; its height is taken without its sign
 * @param destinationClip  limits the destination, null for no limit
 * @param rop              raster operation, for example SRCCOPY
 * @return KSUCCESS, also when nothing is left to paint or the device refuses; KERR_BAD_BITMAP for null or unallocated;
 *         KERR_BAD_PARAMETER for a null device context or destination; KERR_NO_MEMORY; a row's code
 */
ZAVO_API int ZAVO_CALL Zv_PaintDC(HDC dc, BitmapHandle* bitmap, const RECT* source, const RECT* sourceClip,
                                  const RECT* destination, const RECT* destinationClip, DWORD rop);

/**
 * Paints rows that the caller holds; the bitmap's own storage is not read and need not exist.
 * @param dc               the device context
 * @param bitmap           gives the rows' size, depth, palette and perspective
 * @param source           as for Zv_PaintDC
 * @param sourceClip       as for Zv_PaintDC
 * @param destination      as for Zv_PaintDC
 * @param destinationClip  as for Zv_PaintDC
 * @param rop              raster operation
 * @param rows             the rows, BytesPerLine bytes each; untouched
 * @param firstRow         stored row that the first of them stands for; rows outside the bitmap are left out
 * @param rowCount         their number; negative: that many run records of a 1-bit image
 * @return as Zv_PaintDC; KERR_BAD_BITMAP for a null bitmap or null rows; KERR_BAD_PARAMETER also for a depth other
 *         than 1 to 8, 16, 24 and 32 and for run records of another depth than 1
 */
ZAVO_API int ZAVO_CALL Zv_PaintDCBuffer(HDC dc, BitmapHandle* bitmap, const RECT* source, const RECT* sourceClip,
                                        const RECT* destination, const RECT* destinationClip, DWORD rop,
                                        const unsigned char* rows, int firstRow, int rowCount);

/** Sets the brightness, -1000 to 1000, 0 at first. @return KSUCCESS; KERR_BAD_PARAMETER outside */
ZAVO_API int ZAVO_CALL Zv_SetPaintIntensity(int value);
/** Sets the contrast, -1000 to 1000, 0 at first. @return KSUCCESS; KERR_BAD_PARAMETER outside */
ZAVO_API int ZAVO_CALL Zv_SetPaintContrast(int value);
/** Sets 100 times the gamma, 100 at first. @return KSUCCESS; KERR_BAD_PARAMETER for 0 */
ZAVO_API int ZAVO_CALL Zv_SetPaintGamma(int value);
/** @return the thread's brightness */
ZAVO_API int ZAVO_CALL Zv_GetPaintIntensity(void);
/** @return the thread's contrast */
ZAVO_API int ZAVO_CALL Zv_GetPaintContrast(void);
/** @return 100 times the thread's gamma */
ZAVO_API int ZAVO_CALL Zv_GetPaintGamma(void);

/**
 * Tells how a bitmap would be painted.
 * @param dc          the device context
 * @param bitmap      the bitmap
 * @param deviceBits  receives the device's depth brought down to 1, 4, 8 or 24; may be null
 * @param paintMode   receives 0 as stored, 1 widened, 2 dithered, 3 to 6 grey levels of a 1-bit image; may be null
 */
ZAVO_API void ZAVO_CALL Zv_GetDitherFlags(HDC dc, BitmapHandle* bitmap, int* deviceBits, int* paintMode);

/* ------------------------------------------------------------------------------------------------------------
 * Paint palette, display mode, device contexts over a bitmap
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Sets display-mode flags of this thread (12 at first: PAINT_INDEX_COLORS and PAINT_DITHER).
 * @param mask    the flags to set
 * @param values  their values, in the same bits
 * @return the previous flags
 */
ZAVO_API unsigned ZAVO_CALL Zv_SetDisplayMode(unsigned mask, unsigned values);
/** @return the thread's display-mode flags */
ZAVO_API unsigned ZAVO_CALL Zv_GetDisplayMode(void);

/**
 * Makes the palette to select and realise before a bitmap is painted.
 * @return a palette that the caller deletes, or null when none is needed or it cannot be made
 */
ZAVO_API HPALETTE ZAVO_CALL Zv_CreatePaintPalette(HDC dc, BitmapHandle* bitmap);

/**
 * Makes a memory device context that draws into the bitmap's own pixels, clipped to its region. Run-length rows are
 * unpacked and rotated perspectives changed to bottom-up first; that stays done when a later step fails.
 * @param bitmap  of 1, 4, 8, 16, 24 or 32 bits; it must not be freed before the device context
 * @return the device context, to be released with Zv_DeleteZavoDC, or null
 */
ZAVO_API HDC ZAVO_CALL Zv_CreateZavoDC(BitmapHandle* bitmap);
/** Releases such a device context; the pixels stay. @return what DeleteDC returned */
ZAVO_API int ZAVO_CALL Zv_DeleteZavoDC(HDC dc);

/**
 * Paints through the bitmap's region, scaled to the destination; otherwise as Zv_PaintDC.
 * @return as Zv_PaintDC, or the code of Zv_IntGetBitmapRgnHandle before anything is drawn
 */
ZAVO_API int ZAVO_CALL Zv_PaintRgnDC(HDC dc, BitmapHandle* bitmap, const RECT* source, const RECT* sourceClip,
                                     const RECT* destination, const RECT* destinationClip, DWORD rop);
/** Paints held rows through the bitmap's region; otherwise as Zv_PaintDCBuffer and Zv_PaintRgnDC. */
ZAVO_API int ZAVO_CALL Zv_PaintRgnDCBuffer(HDC dc, BitmapHandle* bitmap, const RECT* source, const RECT* sourceClip,
                                           const RECT* destination, const RECT* destinationClip, DWORD rop,
                                           const unsigned char* rows, int firstRow, int rowCount);

/* ------------------------------------------------------------------------------------------------------------
 * Clipboard and capture
 *
 * Besides pictures and palettes the clipboard carries the region, as a 1-bit mask in a registered format of its own.
 * --------------------------------------------------------------------------------------------------------- */

/** What Zv_CopyToClipboardExt does. */
enum {
  CLIP_EMPTY = 0x01,   /**< Empty the clipboard first. */
  CLIP_DIB = 0x02,     /**< Place the picture as CF_DIB. */
  CLIP_DDB = 0x04,     /**< Place the picture as CF_BITMAP of the window's device. */
  CLIP_PALETTE = 0x08, /**< Place CF_PALETTE, when the device needs a palette to show the picture. */
  CLIP_REGION = 0x10   /**< Place the region, when the bitmap has one. */
};

/**
 * Places a bitmap on the clipboard, in the formats asked for. All is made before the clipboard is opened.
 * @param window  the window that will own the clipboard; null for none
 * @param bitmap  an allocated bitmap
 * @param flags   CLIP_ flags; without any of them the clipboard is opened and closed
 * @return KSUCCESS; KERR_BAD_BITMAP for a bitmap that is null or unallocated; KERR_BAD_PARAMETER when the window has
 *         no device context or the clipboard cannot be opened; KERR_NO_MEMORY when a format cannot be made; the code
 *         of Zv_CreateMaskFromBitmapRgn. Nothing is placed or emptied on failure.
 */
ZAVO_API int ZAVO_CALL Zv_CopyToClipboardExt(HWND window, BitmapHandle* bitmap, unsigned flags);

/** As Zv_CopyToClipboardExt with all flags. @return 1 on success, else 0 */
ZAVO_API int ZAVO_CALL Zv_CopyToClipboard(HWND window, BitmapHandle* bitmap);

/**
 * Makes a bitmap of the picture on the clipboard, with the region when there is one. CF_DIB is preferred to CF_BITMAP,
 * which is read with CF_PALETTE or else the system palette. A region that cannot be read is left out.
 * @param window  the window that opens the clipboard; null for none
 * @param bitmap  receives the bitmap; what it held is not looked at
 * @return 1 on success; 0 for a null bitmap, when the clipboard cannot be opened or has no picture, or when it cannot
 *         be converted. The record is untouched on failure.
 */
ZAVO_API int ZAVO_CALL Zv_CopyFromClipboard(HWND window, BitmapHandle* bitmap);

/** @return nonzero when the clipboard holds a picture, CF_DIB or CF_BITMAP; a region alone is none */
ZAVO_API int ZAVO_CALL Zv_ClipboardReady(void);

/**
 * Captures a rectangle of a device context into a bitmap, as by Zv_ConvertFromDDB.
 * @param dc      the device context, for example GetDC(NULL)
 * @param bitmap  receives the bitmap; what it held is not looked at
 * @param rect    the rectangle; right must be greater than left. With bottom above top, as many rows are still taken
 *                from top downwards.
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null bitmap or rectangle, an empty rectangle, or a device context that
 *         none can be made compatible with; KERR_NO_MEMORY; the code of Zv_ConvertFromDDB. The record is untouched on
 *         failure.
 */
ZAVO_API int ZAVO_CALL Zv_ScreenCaptureBitmap(HDC dc, BitmapHandle* bitmap, const RECT* rect);

/* ------------------------------------------------------------------------------------------------------------
 * Printing
 *
 * A page of a job is begun, one or more pictures are printed on it, and the job is ended.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Prints a bitmap, as Zv_PaintDC paints it. On a printer that shows black and white only it is dithered by clustered
 * dots, elsewhere it is left to the device. With a status callback it is printed one printer row at a time; a result
 * other than KSUCCESS stops: a job that the library opened is aborted, a caller's is ended only when endJob says so.
 * @param dc      the printer's device context with a page begun; null opens the default printer and begins a job
 *                named "ZAVO GRAPHIC" with one page
 * @param bitmap  an allocated bitmap; null or unallocated: only the job is begun or ended
 * @param x, y    the upper left corner in printer pixels; 0 centres the picture on the page
 * @param width, height  the size in printer pixels; when one is 0 it follows from the other and the picture's sides,
 *                when both are 0 the picture is fitted into the page
 * @param endJob  nonzero ends the page and the job and deletes the device context, also a caller's
 * @return the device context, which is no longer valid when the job was ended; null when there is no printer, the job
 *         cannot be begun or ended, or printing was stopped. Failures of painting are not reported.
 */
ZAVO_API HDC ZAVO_CALL Zv_PrintBitmapExt(HDC dc, BitmapHandle* bitmap, int x, int y, int width, int height, int endJob);

/**
 * As Zv_PrintBitmapExt on a job that the thread's record keeps: while endJob is 0, further calls print on the same
 * page of the same job.
 */
ZAVO_API HDC ZAVO_CALL Zv_PrintBitmap(BitmapHandle* bitmap, int x, int y, int width, int height, int endJob);

/**
 * As Zv_PrintBitmapExt, but the whole picture is handed to the printer's driver in one call, which scales it; no
 * fitting, no centring, no reports of progress. What a driver cannot take (temporary files, run-length rows, rotated
 * perspectives, red-first order, depths other than 1, 4, 8 and 24) is printed by Zv_PrintBitmapExt.
 */
ZAVO_API HDC ZAVO_CALL Zv_PrintBitmapFast(HDC dc, BitmapHandle* bitmap, int x, int y, int width, int height,
                                          int endJob);

/* ------------------------------------------------------------------------------------------------------------
 * Regions
 *
 * A bitmap may carry one region: the set of pixels that fills, region painting, masks and pixel writes are limited to.
 * It belongs to the bitmap and is freed with it. A region may be present and yet empty; a bitmap without a region is
 * treated as if all its pixels were in one.
 *
 * The Set functions make a shape and combine it with the region there is. A shape that is empty changes nothing and
 * the call succeeds, whatever the mode; one that merely lies outside the bitmap is combined as a shape without pixels.
 * The result is cut to the bitmap.
 *
 * A RegionXForm given to a Set function says in which coordinates the shape is given: the offset is added to them, then
 * they are multiplied by numerator / denominator (dividing towards zero), which gives coordinates of the picture in the
 * transform's perspective; these are then brought into the stored image. Null stands for stored coordinates.
 *
 * A RegionXForm given to a function that brings a region onto a display works the other way: the stored image is
 * brought into the transform's perspective, coordinates are multiplied by numerator / denominator (x rounded up, y
 * down, as painting rounds), and the offset is added. So it holds the size of the picture on the display as numerators,
 * the bitmap's as denominators, and the picture's left and top as offsets. Null stands for stored coordinates.
 *
 * Both take only the perspectives 0, 2, 4 and 8 and denominators other than 0; else KERR_BAD_PARAMETER.
 * --------------------------------------------------------------------------------------------------------- */

/** Scale and place of coordinates outside a bitmap, see above: 7 words. */
typedef struct RegionXForm {
  int ViewPerspective;   /**< The frame: 0 for upright, 2, 4 or 8 as the VIEW_ values. */
  int XScaleNumerator;   /**< Horizontal scale. */
  int XScaleDenominator; /**< Not 0. */
  int YScaleNumerator;   /**< Vertical scale. */
  int YScaleDenominator; /**< Not 0. */
  int XOffset;           /**< Pixels to the right. */
  int YOffset;           /**< Pixels down. */
} RegionXForm;

/**
 * How a new shape changes the region. Where the existing region takes part, a bitmap without one stands for the whole
 * bitmap.
 */
enum {
  CombineAnd = 0,          /**< Existing AND new. */
  CombineSet = 1,          /**< New. */
  CombineAndNotBitmap = 2, /**< New AND NOT existing. */
  CombineAndNotRegion = 3, /**< Existing AND NOT new. */
  CombineOr = 4,           /**< Existing OR new. */
  CombineXor = 5,          /**< Existing XOR new. */
  CombineSetNot = 6        /**< Whole bitmap AND NOT new. */
};

/** Fill modes of Zv_SetBitmapRgnPolygon. */
enum {
  POLYGON_WINDING = 0,  /**< Pixels that the outline winds around. */
  POLYGON_ALTERNATE = 1 /**< Pixels with an odd number of edges to their left. */
};

/**
 * Sets the region from a rectangle.
 * @param bitmap       the bitmap
 * @param xform        coordinates of the rectangle, or null
 * @param rect         any values; right and bottom are exclusive; empty unless left < right and top < bottom
 * @param combineMode  a Combine value
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null bitmap or rectangle, an unusable transform or, unless the shape is
 *         empty, another mode; KERR_NO_MEMORY. On failure the region is as it was.
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapRgnRect(BitmapHandle* bitmap, const RegionXForm* xform, const RECT* rect,
                                           int combineMode);

/**
 * Sets the region from a rectangle with elliptic corners, as CreateRoundRectRgn draws it.
 * @param bitmap         the bitmap
 * @param xform          coordinates of the rectangle, or null
 * @param rect           the rectangle
 * @param ellipseWidth   width of the ellipse that rounds the corners
 * @param ellipseHeight  its height
 * @param combineMode    a Combine value
 * @return as Zv_SetBitmapRgnRect; KERR_BAD_PARAMETER also for a shape without pixels; KERR_NO_MEMORY also when the
 *         system cannot make the shape, coordinates pass 2^27 or a side of the ellipse 2^20
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapRgnRoundRect(BitmapHandle* bitmap, const RegionXForm* xform, const RECT* rect,
                                                int ellipseWidth, int ellipseHeight, int combineMode);

/**
 * Sets the region from an ellipse, as CreateEllipticRgn draws it.
 * @param bitmap       the bitmap
 * @param xform        coordinates of the rectangle, or null
 * @param rect         the ellipse's bounding box
 * @param combineMode  a Combine value
 * @return as Zv_SetBitmapRgnRoundRect
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapRgnEllipse(BitmapHandle* bitmap, const RegionXForm* xform, const RECT* rect,
                                              int combineMode);

/**
 * Sets the region from a polygon, as CreatePolygonRgn draws it.
 * @param bitmap       the bitmap
 * @param xform        coordinates of the points, or null
 * @param points       the corners; the last is joined to the first
 * @param count        how many, at least 1
 * @param fillMode     a POLYGON_ value
 * @param combineMode  a Combine value
 * @return as Zv_SetBitmapRgnRoundRect, with 2^20 limiting the polygon's height; KERR_BAD_PARAMETER also for null
 *         points, a count below 1 and another fill mode
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapRgnPolygon(BitmapHandle* bitmap, const RegionXForm* xform, const POINT* points,
                                              int count, int fillMode, int combineMode);

/**
 * Sets the region from a region of the graphics interface.
 * @param bitmap       the bitmap
 * @param xform        coordinates of the region, or null
 * @param region       the region, still the caller's; null frees the bitmap's region
 * @param combineMode  a Combine value; not looked at for a null region
 * @return as Zv_SetBitmapRgnRect; KERR_BAD_PARAMETER also for an empty region or a handle that is none
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapRgnHandle(BitmapHandle* bitmap, const RegionXForm* xform, HRGN region,
                                             int combineMode);

/**
 * Sets the region from the pixels of one colour.
 * @param bitmap       an allocated bitmap
 * @param color        above 8 bits the pixels' red, green and blue; up to 8 bits a palette index when the top byte is 1
 *                     (cut to the depth), else a colour, of which the first equal palette entry is taken (of the fixed
 *                     palette when the bitmap has none). The alpha of 16 and 32 bits does not count. A colour that no
 *                     pixel has is an empty shape.
 * @param combineMode  a Combine value
 * @return as Zv_SetBitmapRgnRect; KERR_BAD_BITMAP for a bitmap without pixels; KERR_SEEK, KERR_READ
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapRgnColor(BitmapHandle* bitmap, COLORREF color, int combineMode);

/**
 * Sets the region from the white pixels (255, 255, 255) of a mask, by their stored coordinates.
 * @param bitmap       the bitmap
 * @param xform        coordinates of the mask, or null
 * @param mask         an allocated bitmap of any size and depth, unchanged. A 1-bit mask is taken with its own palette
 *                     when `bitmap` (not the mask) has an even grey palette; otherwise its pixels are first reduced to
 *                     black and white, whichever is nearer.
 * @param combineMode  a Combine value
 * @return as Zv_SetBitmapRgnRect; KERR_BAD_PARAMETER also for a mask that is null or unallocated; otherwise the code of
 *         Zv_ColorResBitmap
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapRgnFromMask(BitmapHandle* bitmap, const RegionXForm* xform, BitmapHandle* mask,
                                               int combineMode);

/**
 * Moves the region down by `rowOffset` and right by `columnOffset` stored pixels; what leaves the bitmap is lost. A
 * bitmap without a region gets what is left of the whole bitmap.
 * @return KSUCCESS; KERR_BAD_BITMAP for null; KERR_NO_MEMORY, the region then as it was
 */
ZAVO_API int ZAVO_CALL Zv_OffsetBitmapRgn(BitmapHandle* bitmap, int rowOffset, int columnOffset);
/** Frees the region, if there is one. @return KSUCCESS; KERR_BAD_PARAMETER for null */
ZAVO_API int ZAVO_CALL Zv_FreeBitmapRgn(BitmapHandle* bitmap);
/** @return 1 for a bitmap with a region, be it empty; else 0 */
ZAVO_API int ZAVO_CALL Zv_BitmapHasRgn(const BitmapHandle* bitmap);

/**
 * Gets the region (without one: the whole bitmap) as a region of the graphics interface. The region keeps the handle it
 * gave last for the next call; any change of the region invalidates it.
 * @param bitmap      the bitmap
 * @param xform       the display in whose coordinates it is wanted, or null for stored coordinates
 * @param region      receives the handle, null on failure
 * @param callerOwns  receives 1 when the caller is to delete the handle, 0 when it stays the region's own
 * @return KSUCCESS; KERR_BAD_BITMAP for a null bitmap; KERR_BAD_PARAMETER for null `region` or `callerOwns` or an
 *         unusable transform; KERR_NO_MEMORY, also when the system refuses a region or coordinates pass 2^27
 */
ZAVO_API int ZAVO_CALL Zv_IntGetBitmapRgnHandle(BitmapHandle* bitmap, const RegionXForm* xform, HRGN* region,
                                                int* callerOwns);
/**
 * As Zv_IntGetBitmapRgnHandle, but the handle is always the caller's to delete.
 * @return KSUCCESS; 0 when Zv_IntGetBitmapRgnHandle fails; KERR_BAD_PARAMETER for null `region`; KERR_NO_MEMORY when
 *         the region could not be copied. `region` receives null unless the result is KSUCCESS.
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapRgnHandle(BitmapHandle* bitmap, const RegionXForm* xform, HRGN* region);

/* ------------------------------------------------------------------------------------------------------------
 * Region queries, framing and masks
 *
 * They read the region and change nothing of it that a caller can see.
 * --------------------------------------------------------------------------------------------------------- */

/** @return 1 when the stored pixel is in the region (without a region: in the bitmap), else 0; 0 for null */
ZAVO_API int ZAVO_CALL Zv_IsPtInBitmapRgn(const BitmapHandle* bitmap, int row, int column);

/**
 * Stores the number of pixels in the region (without a region: Width * Height) in `area`.
 * @return KSUCCESS; KERR_BAD_BITMAP for a null bitmap; KERR_BAD_PARAMETER for a null `area`
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapRgnArea(const BitmapHandle* bitmap, unsigned* area);

/**
 * Stores the region's bounds (without a region: the whole bitmap) in `bounds`.
 * @param bitmap  an allocated bitmap
 * @param xform   the display in whose coordinates the bounds are wanted, or null for stored coordinates; values that
 *                pass 32 bits become the nearest
 * @param bounds  receives the rectangle
 * @return KSUCCESS; KERR_BAD_BITMAP; KERR_BAD_PARAMETER for null `bounds` or an unusable transform
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapRgnBounds(const BitmapHandle* bitmap, const RegionXForm* xform, RECT* bounds);

/**
 * Stores the largest number of values that Zv_GetBitmapClipSegments can give for a row in `count`: 2 without a region.
 * @return KSUCCESS; KERR_BAD_BITMAP for a null bitmap; KERR_BAD_PARAMETER for a null `count`
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapClipSegmentsMax(const BitmapHandle* bitmap, unsigned* count);

/**
 * Reads the pieces of a stored row that lie in the region.
 * @param bitmap    the bitmap
 * @param row       any value; a row outside the region has no pieces
 * @param segments  receives pairs of columns (start, end; end exclusive) in increasing order; without a region the one
 *                  pair (0, Width)
 * @param count     receives the number of values, twice the number of pieces
 * @return KSUCCESS; KERR_BAD_BITMAP for a null bitmap; KERR_BAD_PARAMETER for null `segments` or `count`
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapClipSegments(const BitmapHandle* bitmap, int row, int* segments, unsigned* count);

/**
 * Draws the region's outline in stripes of four black and four white pixels; nothing for a bitmap without a region.
 * Drawing with the types 0, 1, 2, ... in turn moves the stripes by a row each time.
 * @param dc         the device context; its colours, brush and bitmap are as they were afterwards
 * @param bitmap     the bitmap
 * @param xform      where the picture lies on the device context, or null for stored coordinates
 * @param frameType  0 to 7
 * @return KSUCCESS; KERR_BAD_BITMAP for a null bitmap; KERR_BAD_PARAMETER for a null device context, another type or an
 *         unusable transform; KERR_NO_MEMORY, also when the system refuses an object or the drawing, or coordinates
 *         pass 2^27
 */
ZAVO_API int ZAVO_CALL Zv_FrameBitmapRgn(HDC dc, BitmapHandle* bitmap, const RegionXForm* xform, unsigned frameType);

/**
 * Makes a mask of the region: a 1-bit bitmap of the same size and view perspective in memory, with the fixed palette,
 * index 1 (white) inside the region and 0 outside; all 1 for a bitmap without a region.
 * @param bitmap  the bitmap; it need not have pixels
 * @param mask    receives the mask; what it held is not looked at
 * @return KSUCCESS; KERR_BAD_PARAMETER for null; otherwise the code of Zv_CreateBitmap or of Zv_FillBitmap, which the
 *         status callback can stop. The record is untouched on failure.
 */
ZAVO_API int ZAVO_CALL Zv_CreateMaskFromBitmapRgn(const BitmapHandle* bitmap, BitmapHandle* mask);

/* ------------------------------------------------------------------------------------------------------------
 * Resizing
 *
 * All scaling is in whole numbers: of n source items scaled to m, item k is taken from source item k * n / m, rounded
 * down. What a resized image inherits is what Zv_DupBitmapNewDim hands on, DitheringMethod and Reserved1.
 * --------------------------------------------------------------------------------------------------------- */

/** Bits of Zv_SizeBitmap's flags. */
enum {
  SIZE_FAVOR_BLACK = 1, /**< 1-bit images with a grey palette: keep thin black strokes; goes before SIZE_RESAMPLE. */
  SIZE_RESAMPLE = 2     /**< As Zv_ResampleBitmap. */
};

/**
 * Scales a bitmap in place to the nearest pixels; its region is scaled along. The size it has already is a success at
 * once.
 * @param bitmap  an allocated bitmap
 * @param width   new pixels in a row, at least 1
 * @param height  new number of rows, at least 1
 * @param flags   SIZE_ bits; others are ignored
 * @return KSUCCESS; KERR_BAD_PARAMETER for a bitmap that is null or unallocated; KERR_EMPTY for a side of 0;
 *         KERR_NO_MEMORY when memory cannot be had, a side is negative or the size does not fit in 32 bits; KERR_SEEK,
 *         KERR_READ, KERR_WRITE from a temporary file; the value of a status callback that stopped it. The bitmap is
 *         unchanged on failure.
 */
ZAVO_API int ZAVO_CALL Zv_SizeBitmap(BitmapHandle* bitmap, int width, int height, unsigned flags);

/**
 * Scales a bitmap in place smoothly: the average of the pixels when shrinking, a straight line between them when
 * enlarging, each way for itself; its region is scaled along. Enlarged rows and columns are moved by half the span of
 * the first pixel. Images of up to 8 bits, but for 8-bit grey ones, are dithered back to their own palette. Alpha
 * becomes 0.
 * @param bitmap  an allocated bitmap
 * @param width   new pixels in a row, at least 1
 * @param height  new number of rows, at least 1
 * @return as Zv_SizeBitmap, but KERR_BAD_BITMAP for a bitmap that is null or unallocated
 */
ZAVO_API int ZAVO_CALL Zv_ResampleBitmap(BitmapHandle* bitmap, int width, int height);

/**
 * Scales the nearest pixels of a bitmap into another one as seen: rows are turned when the two view perspectives
 * differ. The destination keeps its palette and its region.
 * @param source       an allocated bitmap
 * @param destination  an allocated bitmap of any size and of the source's bits per pixel
 * @return KSUCCESS; KERR_BAD_BITMAP for a bitmap that is null or unallocated; KERR_BAD_PARAMETER when the depths
 *         differ; KERR_NO_MEMORY; KERR_SEEK, KERR_READ, KERR_WRITE from a temporary file; the value of a status
 *         callback that stopped it. On failure the destination keeps what was written so far.
 */
ZAVO_API int ZAVO_CALL Zv_ResizeBitmap(BitmapHandle* source, BitmapHandle* destination);

/** A scaling of rows in progress: 14 words that the caller owns from Zv_StartResize to Zv_StopResize. */
typedef struct ResizeState {
  int LastRow;             /**< Row handled last; -1 before the first. */
  int Decreasing;          /**< 1 while rows arrive in decreasing order. */
  int OldWidth;            /**< Pixels in a source row. */
  int OldHeight;           /**< Source rows. */
  int NewWidth;            /**< Pixels in a scaled row. */
  int NewHeight;           /**< Scaled rows. */
  int HorizontalQuotient;  /**< OldWidth / NewWidth. */
  int HorizontalRemainder; /**< OldWidth mod NewWidth. */
  int Reserved1;           /**< 0. */
  int Reserved2;           /**< 0. */
  int VerticalQuotient;    /**< NewHeight / OldHeight. */
  int VerticalRemainder;   /**< NewHeight mod OldHeight. */
  int Reserved3;           /**< 0. */
  int VerticalAccumulator; /**< Position within the vertical stepping; 0 before the first row. */
} ResizeState;

/**
 * Begins scaling rows one at a time.
 * @param oldWidth   pixels in a source row, at least 1
 * @param oldHeight  number of source rows, at least 1
 * @param newWidth   pixels in a scaled row, at least 1
 * @param newHeight  number of scaled rows, at least 1
 * @param state      receives the state; give it to Zv_StopResize
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null pointer or a side below 1; KERR_NO_MEMORY
 */
ZAVO_API int ZAVO_CALL Zv_StartResize(int oldWidth, int oldHeight, int newWidth, int newHeight, ResizeState** state);

/**
 * Scales one row in place to its nearest pixels. Rows are meant to come in increasing order from row 0; they may come
 * in decreasing order or jump, but in decreasing order each gets the number of copies of the row before it.
 * @param buffer        one packed source row, with room for the longer of the two rows
 * @param row           number of the source row
 * @param bitsPerPixel  1 to 8, 16, 24 or 32
 * @param newWidth      receives the pixels of the scaled row; may be null
 * @param copies        receives the result; may be null
 * @param state         from Zv_StartResize
 * @return how often the scaled row is to be written; 0 drops it and leaves the buffer as it is; KERR_BAD_PARAMETER for
 *         a null buffer or state; KERR_BAD_BPP
 */
ZAVO_API int ZAVO_CALL Zv_Resize(unsigned char* buffer, int row, int bitsPerPixel, int* newWidth, int* copies,
                                 ResizeState* state);

/** Ends scaling and frees the state; null is ignored. @return KSUCCESS */
ZAVO_API int ZAVO_CALL Zv_StopResize(ResizeState* state);

/* ------------------------------------------------------------------------------------------------------------
 * Shear, flip and mirror
 *
 * Angles are in hundredths of a degree.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Mirrors the seen picture top to bottom, in place; the region goes along. Stopped by the callback, the rows already
 * exchanged stay exchanged and the region is unchanged.
 * @return KSUCCESS; KERR_BAD_BITMAP for null or unallocated; KERR_NO_MEMORY; KERR_SEEK, KERR_READ, KERR_WRITE from a
 *         temporary file; what the status callback returned
 */
ZAVO_API int ZAVO_CALL Zv_FlipBitmap(BitmapHandle* bitmap);

/** Mirrors the seen picture left to right; otherwise as Zv_FlipBitmap. */
ZAVO_API int ZAVO_CALL Zv_ReverseBitmap(BitmapHandle* bitmap);

/**
 * Reverses the pixel order of one packed row in place; the bits behind the last pixel of its last byte become zero.
 * @param row           (width * bitsPerPixel + 7) / 8 bytes
 * @param width         pixels
 * @param bitsPerPixel  1 to 8, 16 or 24; any other value means 32
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null row
 */
ZAVO_API int ZAVO_CALL Zv_MirrorLine(unsigned char* row, unsigned width, int bitsPerPixel);

/**
 * Shears the seen picture into a wider (or taller) bitmap, in place. The top row (for a vertical shear the leftmost
 * column) stays; the rows below it move to the right (the columns to the right of it up) by the tangent of the angle,
 * to the other side for a negative angle. The region goes along.
 * @param bitmap      the bitmap
 * @param angle       -4500 to 4500
 * @param horizontal  not 0: rows move sideways; 0: columns move up and down
 * @param fill        colour of the uncovered pixels; a top byte of 1 marks a palette index
 * @return KSUCCESS; KERR_BAD_BITMAP for null or unallocated; KERR_BAD_PARAMETER for an angle out of range or a result
 *         whose rows would exceed 32768 bytes; KERR_NO_MEMORY; a row's code; what the status callback returned. On
 *         failure the bitmap is unchanged.
 */
ZAVO_API int ZAVO_CALL Zv_ShearBitmap(BitmapHandle* bitmap, int angle, int horizontal, COLORREF fill);

/** @return 16384 times the sine of `angle`, rounded; any angle is taken */
ZAVO_API int ZAVO_CALL Zv_SinValue(int angle);

/* ------------------------------------------------------------------------------------------------------------
 * Rotation
 * --------------------------------------------------------------------------------------------------------- */

/** Flags of the rotations. */
enum {
  ROTATE_RESIZE = 1,  /**< The bitmap grows to hold the result; clear: it keeps its size and corners are cut. */
  ROTATE_RESAMPLE = 2 /**< Bilinear sampling for 16 bits and up and for grey palettes; ignored for others. */
};

/**
 * Turns the seen picture clockwise about its centre, in place; the region turns along. Quarter turns that keep all
 * pixels (ROTATE_RESIZE, a square bitmap, or 180 degrees) are exact.
 * @param bitmap  the bitmap
 * @param angle   hundredths of a degree, any value; negative turns the other way
 * @param flags   ROTATE_ values
 * @param fill    colour of the uncovered pixels; a top byte of 1 marks a palette index
 * @return KSUCCESS; KERR_BAD_BITMAP for null or unallocated; KERR_NO_MEMORY; a row's code; what the status callback
 *         returned. On failure the bitmap is unchanged.
 */
ZAVO_API int ZAVO_CALL Zv_RotateBitmapFine(BitmapHandle* bitmap, int angle, unsigned flags, COLORREF fill);

/** As Zv_RotateBitmapFine, turning the stored image clockwise, whatever the view perspective. */
ZAVO_API int ZAVO_CALL Zv_IntRotateBitmapFine(BitmapHandle* bitmap, int angle, unsigned flags, COLORREF fill);

/** As Zv_RotateBitmapFine, with the angle in whole degrees. */
ZAVO_API int ZAVO_CALL Zv_RotateBitmap(BitmapHandle* bitmap, int degrees, unsigned flags, COLORREF fill);

/**
 * Turns the seen picture clockwise by quarter turns, through ViewPerspective alone where the turned picture has a code
 * (pixels then do not move), else by moving pixels.
 * @param bitmap   an allocated bitmap
 * @param degrees  a multiple of 90
 * @return KSUCCESS; KERR_BAD_BITMAP for null or unallocated; KERR_BAD_PARAMETER for another angle; as
 *         Zv_RotateBitmapFine when pixels move
 */
ZAVO_API int ZAVO_CALL Zv_RotateBitmapViewPerspective(BitmapHandle* bitmap, int degrees);

/* ------------------------------------------------------------------------------------------------------------
 * Fill and clear
 *
 * Both keep to the bitmap's region: set one first to fill a part of an image.
 * --------------------------------------------------------------------------------------------------------- */

/**
 * Paints every pixel of the bitmap's region, or all pixels without one, with a colour. Up to 8 bits it is the palette
 * index nearest to the colour as GetNearestPaletteIndex finds it. The alpha of 16- and 32-bit pixels becomes 0.
 * The status callback is called with 0 before the first row and with 100 after the last; on a temporary file row by
 * row.
 * @param bitmap  an allocated bitmap
 * @param color   colour value; a top byte of 1 marks a palette index, of which as many low bits as a pixel has are
 *                used
 * @return KSUCCESS; KERR_BAD_BITMAP for a bitmap that is null or unallocated; KERR_NO_MEMORY, also when a run heap
 *         cannot grow; KERR_SEEK, KERR_READ, KERR_WRITE from a temporary file; the callback's result. Rows already
 *         filled stay filled.
 */
ZAVO_API int ZAVO_CALL Zv_FillBitmap(BitmapHandle* bitmap, COLORREF color);

/** As Zv_FillBitmap with all bits of the pixels zero: black, or index 0 whatever its colour. */
ZAVO_API int ZAVO_CALL Zv_ClearBitmap(BitmapHandle* bitmap);

/* ------------------------------------------------------------------------------------------------------------
 * Grayscale and halftone
 *
 * Both replace the image by one of another depth with the same size, perspective, resolution, playback parameters
 * and region. Brightness is (2 * red + 5 * green + blue + 4) / 8. On failure the bitmap is unchanged.
 * --------------------------------------------------------------------------------------------------------- */

/** Screens of the halftones. */
enum {
  HALFTONE_CLUSTERED = 0, /**< Dots that grow from centres, as in print. */
  HALFTONE_DISPERSED = 1  /**< Dots spread as far apart as can be. */
};

/**
 * Turns a bitmap of any depth into an 8-bit image with a palette of 256 greys.
 * @return KSUCCESS; KERR_BAD_BITMAP for null or unallocated, or a palette image whose palette is missing or short;
 *         KERR_NO_MEMORY; a row's code; what the status callback returned
 */
ZAVO_API int ZAVO_CALL Zv_GrayScaleBitmap(BitmapHandle* bitmap);

/**
 * Turns a bitmap of any depth into a black-and-white image: a pixel is white when its brightness is above the cell of
 * an 8 x 8 screen laid over the stored image.
 * @param bitmap  the bitmap
 * @param type    a HALFTONE_ value
 * @return as Zv_GrayScaleBitmap; KERR_BAD_PARAMETER for another type
 */
ZAVO_API int ZAVO_CALL Zv_HalfToneBitmap(BitmapHandle* bitmap, int type);

/**
 * As Zv_HalfToneBitmap, with the screen turned: the cell for stored column x and row y is the one at column
 * x * cos(-angle) - y * sin(-angle), row x * sin(-angle) + y * cos(-angle) of the endlessly repeated screen, rounded
 * down, with sines and cosines in units of 1 / 16384 (Zv_SinValue).
 * @param bitmap  as for Zv_HalfToneBitmap
 * @param type    as for Zv_HalfToneBitmap
 * @param angle   hundredths of a degree, any value; whole turns change nothing
 */
ZAVO_API int ZAVO_CALL Zv_HalfToneBitmapExt(BitmapHandle* bitmap, int type, int angle);

/* ------------------------------------------------------------------------------------------------------------
 * Combining, underlay, alpha
 * --------------------------------------------------------------------------------------------------------- */

/** Pieces of the operation code of Zv_CombineBitmap, one of each group, added up. */
enum {
  COMBINE_SOURCE_INVERTED = 0x0001,      /**< The source operand is inverted. */
  COMBINE_SOURCE_ZEROS = 0x0002,         /**< The source operand is all zeros. */
  COMBINE_SOURCE_ONES = 0x0003,          /**< The source operand is all ones. */
  COMBINE_AND = 0x0000,                  /**< Bits of both. */
  COMBINE_OR = 0x0010,                   /**< Bits of either. */
  COMBINE_XOR = 0x0020,                  /**< Bits of one of them. */
  COMBINE_COPY = 0x0030,                 /**< The source alone. */
  COMBINE_ADD = 0x0040,                  /**< The sum, at most 255. */
  COMBINE_SOURCE_MINUS = 0x0050,         /**< Source minus destination, at least 0. */
  COMBINE_DESTINATION_MINUS = 0x0060,    /**< Destination minus source, at least 0. */
  COMBINE_DIFFERENCE = 0x0070,           /**< The absolute difference. */
  COMBINE_MULTIPLY = 0x0080,             /**< The product, divided by 255. */
  COMBINE_AVERAGE = 0x0090,              /**< Half the sum. */
  COMBINE_MINIMUM = 0x00A0,              /**< The smaller. */
  COMBINE_MAXIMUM = 0x00B0,              /**< The larger. */
  COMBINE_DESTINATION_INVERTED = 0x0100, /**< The destination operand is inverted. */
  COMBINE_DESTINATION_ZEROS = 0x0200,    /**< The destination operand is all zeros. */
  COMBINE_DESTINATION_ONES = 0x0300,     /**< The destination operand is all ones. */
  COMBINE_INVERT = 0x1000                /**< The result is inverted. */
};

/**
 * Combines a rectangle of one bitmap with another, in stored coordinates, clipped to both bitmaps and limited to the
 * destination's region and to the source's region, moved along. A source stored another way round is taken in the
 * destination's perspective, one of another depth, order or palette is converted. Up to 8 bits the bit operators work
 * on indexes; the operators on levels (COMBINE_ADD to COMBINE_MAXIMUM) need an 8-bit grey destination, which they give
 * the brightness of the source, or 16 bits and up, where they leave the alpha alone.
 * @param destination            the bitmap that is changed
 * @param left, top              where the rectangle goes, any value
 * @param width, height          its size in pixels, at least 0
 * @param source                 the other bitmap; may be the destination
 * @param sourceLeft, sourceTop  where the rectangle is taken from, any value
 * @param operation              one COMBINE_ value of each group, added up
 * @return KSUCCESS, also when nothing is left after clipping; KERR_BAD_BITMAP for a bitmap null or unallocated;
 *         KERR_BAD_PARAMETER for another operation or a negative size; KERR_BAD_BPP for an operator on levels and a
 *         destination without them, whatever the rectangle; KERR_NO_MEMORY with nothing changed; a row's code, the
 *         rows before it then done
 */
ZAVO_API int ZAVO_CALL Zv_CombineBitmap(BitmapHandle* destination, int left, int top, int width, int height,
                                        BitmapHandle* source, int sourceLeft, int sourceTop, unsigned operation);

/** Flags of Zv_UnderlayBitmap. */
enum {
  UNDERLAY_TILE = 0,   /**< The underlay is repeated from the corner seen top left. */
  UNDERLAY_STRETCH = 1 /**< It is stretched to the bitmap's size. */
};

/**
 * Shows another picture where a bitmap is not: outside its region, and through its alpha (32 bits: by the fourth
 * byte; 16 bits: where bit 15 is clear). The alpha itself stays.
 * @param bitmap    the bitmap that is changed
 * @param underlay  the other picture, of any depth; untouched
 * @param flags     an UNDERLAY_ value
 * @return KSUCCESS; KERR_BAD_BITMAP for a bitmap null or unallocated; KERR_BAD_PARAMETER for other flags;
 *         KERR_NO_MEMORY or, when stretching, what the status callback returned, with nothing changed; a row's code,
 *         the rows before it then done
 */
ZAVO_API int ZAVO_CALL Zv_UnderlayBitmap(BitmapHandle* bitmap, BitmapHandle* underlay, unsigned flags);

/**
 * Makes an 8-bit grey bitmap of the alpha: of 16-bit pixels 0 or 255.
 * @param bitmap  of 16 or 32 bits
 * @param alpha   receives the new bitmap; what the record held is overwritten
 * @return KSUCCESS; KERR_BAD_BITMAP for a bitmap null or unallocated; KERR_BAD_PARAMETER for an alpha that is null or
 *         the bitmap; KERR_BAD_BPP for other depths; KERR_NO_MEMORY; a row's code. On failure `alpha` is untouched.
 */
ZAVO_API int ZAVO_CALL Zv_GetBitmapAlpha(BitmapHandle* bitmap, BitmapHandle* alpha);

/**
 * Writes a picture's brightness as the alpha of a bitmap: of 16-bit pixels the bit is set above 127.
 * @param bitmap  of 16 or 32 bits
 * @param alpha   a bitmap of any depth, seen in the same size
 * @return KSUCCESS; KERR_BAD_BITMAP for a bitmap null or unallocated; KERR_BAD_BPP for other depths of `bitmap`;
 *         KERR_BAD_PARAMETER for another size; KERR_NO_MEMORY with nothing changed; a row's code, the rows before it
 *         then done
 */
ZAVO_API int ZAVO_CALL Zv_SetBitmapAlpha(BitmapHandle* bitmap, BitmapHandle* alpha);

/* ------------------------------------------------------------------------------------------------------------
 * Animation playback
 * --------------------------------------------------------------------------------------------------------- */

/** The handle of a playback. */
typedef HGLOBAL PlaybackHandle;

/** States of a playback: what the next call of Zv_ProcessPlayback does. */
enum {
  PB_PRECLEAR = 0,       /**< Fills the target with its PlaybackBackground. */
  PB_POSTCLEAR = 1,      /**< Goes to the first frame. */
  PB_RENDER = 2,         /**< Draws the current frame. */
  PB_WAITLINES = 3,      /**< Waits for rows of the last frame, then draws it. */
  PB_POSTRENDER = 4,     /**< Begins the frame's wait. */
  PB_WAITINPUT = 5,      /**< Waits for Zv_CancelPlaybackWait. */
  PB_WAITDELAY = 6,      /**< Waits for the frame's delay to pass. */
  PB_WAITINPUTDELAY = 7, /**< Waits for the delay or for Zv_CancelPlaybackWait. */
  PB_DISPOSE = 8,        /**< Does what the frame's PlaybackDisposal says. */
  PB_NEXT = 9,           /**< Goes to the next frame. */
  PB_END = 10            /**< All frames were played; begins again with the first, without clearing. */
};

/**
 * Begins the playback of an animation onto a target: no frame is current, the state is PB_PRECLEAR.
 * @param playback  receives the handle; null when the call fails
 * @param target    an allocated bitmap, which must outlive the playback; it is cleared to its PlaybackBackground
 * @param frames    a bitmap list, or null for an empty one made here; the playback holds it until it is destroyed
 * @return KSUCCESS; KERR_BAD_PARAMETER for a null `playback` or an unallocated target; KERR_NO_MEMORY
 */
ZAVO_API int ZAVO_CALL Zv_CreatePlayback(PlaybackHandle* playback, BitmapHandle* target, BitmapListHandle frames);

/**
 * Ends a playback.
 * @param playback  the playback, which its handle names no longer
 * @param frames    receives the frame list, which is the caller's from now on; null leaves it to who holds it already
 * @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle
 */
ZAVO_API int ZAVO_CALL Zv_DestroyPlayback(PlaybackHandle playback, BitmapListHandle* frames);

/**
 * Takes at most one step: draws, waits or disposes, as the state says. Call it again and again, repainting the update
 * rectangle in between. A frame that cannot be drawn is passed over.
 * @param playback  the playback
 * @param state     receives the new PB_ state, may be null
 * @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle
 */
ZAVO_API int ZAVO_CALL Zv_ProcessPlayback(PlaybackHandle playback, unsigned* state);

/** Tells the state. @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle or a null argument */
ZAVO_API int ZAVO_CALL Zv_GetPlaybackState(PlaybackHandle playback, unsigned* state);

/** Tells the current frame, -1 before the first. @return KSUCCESS; KERR_BAD_PARAMETER as above */
ZAVO_API int ZAVO_CALL Zv_GetPlaybackIndex(PlaybackHandle playback, int* index);

/**
 * Tells the milliseconds still to wait in PB_WAITDELAY and PB_WAITINPUTDELAY; 0 in every other state.
 * @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle or a null argument
 */
ZAVO_API int ZAVO_CALL Zv_GetPlaybackDelay(PlaybackHandle playback, unsigned* milliseconds);

/** Ends a wait, for the user or for time. @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle */
ZAVO_API int ZAVO_CALL Zv_CancelPlaybackWait(PlaybackHandle playback);

/**
 * Tells the part of the target that has changed since the update rectangle was emptied, in stored coordinates. A frame
 * counts by the bounds of its region, drawn and disposed of alike.
 * @param playback  the playback
 * @param rect      receives it, may be null
 * @param clear     not 0: the rectangle is emptied
 * @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle
 */
ZAVO_API int ZAVO_CALL Zv_GetPlaybackUpdateRect(PlaybackHandle playback, RECT* rect, int clear);

/** Empties the update rectangle. @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle */
ZAVO_API int ZAVO_CALL Zv_ClearPlaybackUpdateRect(PlaybackHandle playback);

/**
 * Goes to a frame: every frame up to it is drawn and disposed without waiting, from a cleared target when the frame
 * has gone by already.
 * @param playback  the playback
 * @param index     -1 to the number of frames
 * @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle or index
 */
ZAVO_API int ZAVO_CALL Zv_SetPlaybackIndex(PlaybackHandle playback, int index);

/**
 * Appends a frame that may still be loading: it is not drawn before all of its rows are reported by
 * Zv_ValidatePlaybackLines. A playback at its end goes on with it.
 * @param playback  the playback
 * @param frame     the bitmap, which the list takes over
 * @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle or a null frame; KERR_NO_MEMORY, the list then unchanged
 */
ZAVO_API int ZAVO_CALL Zv_AppendPlayback(PlaybackHandle playback, BitmapHandle* frame);

/**
 * Reports rows of the last appended frame as loaded. Rows outside the frame are ignored, a row counts once.
 * @param playback  the playback
 * @param firstRow  stored row
 * @param rowCount  rows from there on
 * @return KSUCCESS; KERR_BAD_PARAMETER for a bad handle
 */
ZAVO_API int ZAVO_CALL Zv_ValidatePlaybackLines(PlaybackHandle playback, int firstRow, int rowCount);

/**
 * Copies the parameters of an animation frame: the two BMF_PLAYBACK_ flags, position, delay and disposal as they are,
 * the two colours through Zv_TranslateBitmapColor.
 * @return KSUCCESS; KERR_BAD_PARAMETER when either is null
 */
ZAVO_API int ZAVO_CALL Zv_CopyPlaybackParms(BitmapHandle* destination, BitmapHandle* source);

#ifdef __cplusplus
}
#endif

#endif
