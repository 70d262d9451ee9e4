#include "support/row_storage_checks.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "support/platform_watch.h"
#include "support/run_model.h"
#include "support/test_bitmap.h"

namespace zavotest {
namespace {

bool isFile(const BitmapHandle& bitmap) {
  return (bitmap.Flags & BMF_DISK) != 0;
}
bool isRunLength(const BitmapHandle& bitmap) {
  return (bitmap.Flags & BMF_RUNLENGTH) != 0;
}

// A bitmap locked for a check.
struct LockedBitmap : TestBitmap {
  LockedBitmap(int width, int height, int bits, int memoryType)
      : TestBitmap(width, height, bits, memoryType), wasLocked(Zv_LockBitmap(this)) {}
  ~LockedBitmap() { Zv_UnlockBitmap(this, wasLocked); }
  int wasLocked;
};

Bytes noise(std::mt19937& random, size_t count) {
  Bytes bytes(count);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

// Rows of a 1-bit bitmap as plain pixels.
std::vector<Pixels> pixelsOf(BitmapHandle& bitmap) {
  std::vector<Pixels> rows;
  Bytes bits(bitmap.BytesPerLine);
  for (unsigned row = 0; row < static_cast<unsigned>(bitmap.Height); ++row) {
    EXPECT_EQ(Zv_GetBitmapRow(&bitmap, bits.data(), row, bitmap.BytesPerLine), static_cast<int>(bitmap.BytesPerLine));
    rows.push_back(unpacked(bits.data(), static_cast<size_t>(bitmap.Width)));
  }
  return rows;
}

}  // namespace

void checkRowAccess(int memoryType) {
  std::mt19937 random(21);
  for (const int bits : allDepths) {
    for (const int width : {1, 2, 3, 7, 8, 9, 13, 33, 100}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, width " << width);
      constexpr unsigned rows = 6;
      LockedBitmap bitmap(width, rows, bits, memoryType);
      ASSERT_TRUE(bitmap.allocated());
      const unsigned stride = bitmap.BytesPerLine;
      Bytes model(rows * stride);
      // Global memory starts undefined.
      ASSERT_EQ(Zv_PutBitmapRow(&bitmap, model.data(), 0, rows * stride), static_cast<int>(rows * stride));
      for (int step = 0; step < 60; ++step) {
        // Walks up and down as well as jumps, for the row cache.
        const unsigned row = step % 3 == 0 ? random() % rows : (static_cast<unsigned>(bitmap.CachedRow) + 5) % rows;
        const unsigned column = random() % static_cast<unsigned>(width);
        const size_t position = row * stride + column * static_cast<unsigned>(bits) / 8;
        const auto count =
            static_cast<unsigned>(random() % std::min<size_t>(2 * stride + 2, model.size() - position + 1));
        if (step % 2 == 0) {
          const Bytes bytes = noise(random, count);
          std::copy(bytes.begin(), bytes.end(), model.begin() + static_cast<ptrdiff_t>(position));
          ASSERT_EQ(Zv_PutBitmapRowCol(&bitmap, count == 0 ? model.data() : bytes.data(), row, column, count),
                    static_cast<int>(count));
        } else {
          Bytes expected(model.begin() + static_cast<ptrdiff_t>(position),
                         model.begin() + static_cast<ptrdiff_t>(position + count));
          expected.resize(count + 4, filler);
          Bytes bytes(count + 4, filler);
          ASSERT_EQ(Zv_GetBitmapRowCol(&bitmap, bytes.data(), row, column, count), static_cast<int>(count));
          ASSERT_EQ(bytes, expected);
        }
        ASSERT_EQ(bitmap.CachedRow, static_cast<int>(row));
        ASSERT_EQ(bitmap.CachedRowOffset, row * stride);
      }
    }
  }
}

void checkSegments(int memoryType) {
  std::mt19937 random(23);
  for (const int bits : allDepths) {
    for (const int width : {1, 2, 7, 8, 9, 16, 31, 40, 129, 1500}) {
      if (width == 1500 && bits != 1 && bits != 7 && bits != 32) continue;
      LockedBitmap bitmap(width, 3, bits, memoryType);
      ASSERT_TRUE(bitmap.allocated());
      const auto columns = static_cast<unsigned>(width);
      const auto depth = static_cast<unsigned>(bits);
      for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(testing::Message() << bits << " bits, width " << width << " round " << round);
        const bool keepAlpha = round % 2 == 0;
        const unsigned row = random() % 3;
        // Every start within a byte comes up, and places that differ from the source's by no whole byte.
        const unsigned columnOffset = round % 4 < 2 ? 0 : random() % (2 * columns) - columns;  // either way
        std::vector<unsigned> segments;
        for (unsigned column = random() % 4 + (columnOffset > columns ? 0 - columnOffset : 0);
             std::max(column, column + columnOffset) < columns; column += random() % 12) {
          const unsigned room = columns - std::max(column, column + columnOffset);
          const unsigned count = std::min<unsigned>(room, 1 + random() % (round % 3 == 0 ? 2000 : 20));
          if (random() % 8 == 0) segments.insert(segments.end(), {column + 1, column});
          segments.insert(segments.end(), {column, column + count});
          column += count + 1;
        }
        const Bytes source = noise(random, bitmap.BytesPerLine);
        if (round % 10 == 0) fillWithNoise(bitmap, random);
        Bytes expected = bytesOf(bitmap);
        for (size_t i = 0; i < segments.size(); i += 2) {
          for (unsigned bit = segments[i] * depth; bit < segments[i + 1] * depth; ++bit) {
            // The alpha bit of 16-bit pixels tops their second byte.
            if (keepAlpha && (bits == 16 ? bit % 16 == 8 : bits == 32 && bit % 32 >= 24)) continue;
            const size_t at = (row * bitmap.BytesPerLine * 8) + columnOffset * depth + bit;
            const unsigned mask = 0x80u >> at % 8;
            const bool set = (source[bit / 8] & 0x80u >> bit % 8) != 0;
            expected[at / 8] = static_cast<uint8_t>(set ? expected[at / 8] | mask : expected[at / 8] & ~mask);
          }
        }
        ASSERT_EQ(Zv_PutBitmapRowSegments(&bitmap, source.data(), row, columnOffset, segments.data(),
                                          static_cast<unsigned>(segments.size()), keepAlpha),
                  KSUCCESS);
        ASSERT_EQ(bytesOf(bitmap), expected);
      }
    }
  }
}

void checkCompressedRows(int memoryType) {
  std::mt19937 random(22);
  for (const unsigned width : {1u, 5u, 8u, 9u, 31u, 32u, 33u, 64u, 100u, 130u}) {
    constexpr unsigned rows = 4;
    LockedBitmap bitmap(static_cast<int>(width), rows, 1, memoryType);
    ASSERT_TRUE(bitmap.allocated());
    std::vector<Pixels> model(rows, Pixels(width, false));
    Bytes workRow(bitmap.BytesPerLine);
    for (unsigned row = 0; row < rows; ++row) Zv_PutBitmapRow(&bitmap, workRow.data(), row, bitmap.BytesPerLine);
    for (int step = 0; step < 60; ++step) {
      SCOPED_TRACE(testing::Message() << "width " << width << " step " << step);
      uint8_t* work = random() % 2 == 0 ? workRow.data() : nullptr;
      const bool puts = step % 2 == 0;
      // Whole rows, now and then more than there are; or a piece, now and then going on in the next row.
      const bool whole = step % 4 < 2;
      const auto row = static_cast<unsigned>(random() % rows);
      const auto column = whole ? 0 : static_cast<unsigned>(random() % width);
      const auto count = static_cast<unsigned>(whole           ? random() % (rows + 2) * width
                                               : step % 5 == 0 ? width - column + random() % width
                                                               : random() % (width - column + 1));
      Bytes records;
      int bytes = 0;
      for (unsigned r = row, start = column, left = count; left > 0 && r < rows; ++r, start = 0) {
        const unsigned taken = std::min(left, width - start);
        Pixels piece = puts ? randomPixels(random, taken) : part(model[r], start, taken);
        append(records, recordOf(piece));
        left -= taken;
        bytes += static_cast<int>(taken + 7) / 8;
        if (!isRunLength(bitmap) && puts) {
          // Whole bytes are written, from a rounded column on, the unused bits as zeros.
          start = start / 8 * 8;
          piece.resize((taken + 7) / 8 * 8);
        }
        for (size_t i = 0; puts && i < piece.size() && start + i < width; ++i) model[r][start + i] = piece[i];
      }
      records.resize(records.size() + 4, filler);
      if (puts) {
        const int status = whole ? Zv_PutBitmapRowCompressed(&bitmap, work, records.data(), row, count / width)
                                 : Zv_PutBitmapRowColCompressed(&bitmap, work, records.data(), row, column, count);
        ASSERT_EQ(status, whole || isRunLength(bitmap) ? KSUCCESS : bytes);
      } else {
        Bytes made(records.size(), filler);
        const int status = whole ? Zv_GetBitmapRowCompressed(&bitmap, work, made.data(), row, count / width)
                                 : Zv_GetBitmapRowColCompressed(&bitmap, work, made.data(), row, column, count);
        ASSERT_EQ(status, KSUCCESS);
        ASSERT_EQ(made, records);
      }
      ASSERT_EQ(pixelsOf(bitmap), model);
    }
    uint8_t record[8] = {};
    EXPECT_EQ(Zv_GetBitmapRowColCompressed(&bitmap, nullptr, record, 0, width, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_PutBitmapRowColCompressed(&bitmap, nullptr, record, 0, width, 1), KERR_BAD_PARAMETER);
    EXPECT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, record, rows, 1), KSUCCESS);
    EXPECT_EQ(Zv_PutBitmapRowCompressed(&bitmap, nullptr, record, rows + 7, 1), KSUCCESS);
  }
}

void checkHeightChanges(int memoryType) {
  std::mt19937 random(5);
  for (const int bits : {1, 3, 8, 24}) {
    for (const int height : {1, 4, 5, 6, 40}) {
      for (const bool refused : {false, true}) {
        SCOPED_TRACE(testing::Message() << bits << " bits, height " << height << ", refused " << refused);
        TestBitmap bitmap(37, 5, bits, memoryType);
        if (refused && !isRunLength(bitmap)) continue;
        const bool isGlobalMemory = bitmap.Data == nullptr;
        fillWithNoise(bitmap, random);
        Picture expected = pictureOf(bitmap);
        bitmap.CachedRow = 4;
        bitmap.CachedRowOffset = 4 * bitmap.BytesPerLine;
        const bool changes = height != 5;
        {
          const Refusal refusal("GlobalReAlloc", refused ? 1 : 1000);
          ASSERT_EQ(Zv_ChangeBitmapHeight(&bitmap, height), changes && refused ? KERR_NO_MEMORY : KSUCCESS);
        }
        EXPECT_EQ(bitmap.CachedRow, changes && !refused ? 0 : 4);
        // Run-length rows are given up even when their table then cannot shrink.
        ASSERT_EQ(bitmap.Height, refused ? std::min(height, 5) : height);
        const unsigned bytes = bitmap.BytesPerLine * static_cast<unsigned>(height);
        EXPECT_EQ(bitmap.DataSize, isRunLength(bitmap) ? 0x40000 : bytes);
        // A new file or block of memory is larger than its rows.
        const unsigned held = isFile(bitmap)   ? GetFileSize(bitmap.StorageHandle, nullptr) - (changes ? 0 : 1)
                              : isGlobalMemory ? GlobalSize(bitmap.StorageHandle) - (changes ? 0 : 16)
                                               : bytes;
        EXPECT_EQ(held, bytes);
        Picture changed = pictureOf(bitmap);
        expected.height = bitmap.Height;
        expected.pixels.resize(changed.pixels.size());
        // Rows added to global memory are undefined.
        if (isGlobalMemory && height > 5) std::fill(changed.pixels.begin() + 5 * 37, changed.pixels.end(), 0);
        EXPECT_EQ(changed, expected);
      }
    }
  }
}

}  // namespace zavotest
