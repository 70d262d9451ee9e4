// Global memory and temporary files, which hold the pixels on a legacy host. This program is started as on such a
// host: script/wine tells Wine so for its name.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "support/import_patch.h"
#include "support/platform_watch.h"
#include "support/progress_log.h"
#include "support/row_storage_checks.h"
#include "support/run_model.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr unsigned stateFlags = BMF_ALLOCATED | BMF_MEMORY | BMF_DISK | BMF_LOCKED | BMF_RUNLENGTH;
constexpr unsigned globalMemory = BMF_ALLOCATED | BMF_MEMORY;
constexpr unsigned temporaryFile = BMF_ALLOCATED | BMF_DISK;

class LegacyHost : public testing::Test {
 protected:
  void SetUp() override {
    const DWORD version = GetVersion();
    const bool legacy = (version & 0x80000000u) != 0 && (version & 0xFFu) < 4;
    ASSERT_TRUE(legacy) << "start this program with script/wine, after removing build/wine if that is an old one";
  }

  std::mt19937 random{17};
};

TEST_F(LegacyHost, MemoryTypeChoosesTheKind) {
  const struct {
    int memoryType, bits;
    const char* refused;
    int status;
    unsigned flags;
  } cases[] = {{ALLOC_MEMORY, 24, "ReadFile", KSUCCESS, globalMemory},
               {ALLOC_MEMORY_ONLY, 1, "ReadFile", KSUCCESS, globalMemory},
               {0x300, 8, "ReadFile", KSUCCESS, globalMemory},
               {ALLOC_DISK, 8, "ReadFile", KSUCCESS, temporaryFile},
               {0x280, 8, "ReadFile", KSUCCESS, temporaryFile},
               {0x280, 1, "ReadFile", KSUCCESS, globalMemory | BMF_RUNLENGTH},
               {ALLOC_MEMORY, 8, "GlobalAlloc", KSUCCESS, temporaryFile},
               {ALLOC_MEMORY_ONLY, 8, "GlobalAlloc", KERR_NO_MEMORY, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "type " << c.memoryType << ", refused " << c.refused);
    TestBitmap bitmap;
    Zv_InitBitmap(&bitmap, 10, 7, c.bits);
    const Refusal refusal(c.refused, 1);
    EXPECT_EQ(Zv_AllocateBitmap(&bitmap, c.memoryType), c.status);
    EXPECT_EQ(bitmap.Flags & stateFlags, c.flags);
  }
}

TEST_F(LegacyHost, LocksNest) {
  TestBitmap bitmap(10, 7, 8);
  EXPECT_EQ(bitmap.Data, nullptr);
  EXPECT_EQ(Zv_LockBitmap(&bitmap), 0);
  EXPECT_EQ(bitmap.Flags & stateFlags, globalMemory | BMF_LOCKED);
  unsigned char* const data = bitmap.Data;
  EXPECT_NE(data, nullptr);
  EXPECT_EQ(Zv_LockBitmap(&bitmap), 1);
  Zv_UnlockBitmap(&bitmap, 1);
  EXPECT_EQ(bitmap.Data, data);
  EXPECT_EQ(Zv_ChangeBitmapHeight(&bitmap, 9), KERR_BAD_PARAMETER);
  Zv_UnlockBitmap(&bitmap, 0);
  EXPECT_EQ(bitmap.Data, nullptr);
  EXPECT_EQ(bitmap.Flags & stateFlags, globalMemory);
  // These two do not nest.
  Zv_AccessBitmap(&bitmap);
  Zv_AccessBitmap(&bitmap);
  Zv_ReleaseBitmap(&bitmap);
  EXPECT_EQ(bitmap.Data, nullptr);
  // A freed run-length bitmap is still marked as being in memory.
  TestBitmap freed(10, 7, 1, ALLOC_RUNLENGTH);
  Zv_FreeBitmap(&freed);
  freed.StorageHandle = bitmap.StorageHandle;
  EXPECT_EQ(Zv_LockBitmap(&freed), 0);
  EXPECT_EQ(freed.Flags & stateFlags, BMF_MEMORY);
  Zv_LockBitmap(&bitmap);  // freeing unlocks
}

TEST_F(LegacyHost, MemoryThatCannotBeLockedIsRefused) {
  TestBitmap bitmap(10, 7, 8), copy(10, 7, 8);
  uint8_t bytes[4] = {};
  const Refusal refusal("GlobalLock", 1, Repeat::fromThenOn);
  EXPECT_EQ(Zv_LockBitmap(&bitmap), 0);
  EXPECT_EQ(Zv_GetBitmapRow(&bitmap, bytes, 0, 4), KERR_NO_MEMORY);
  EXPECT_EQ(Zv_PutBitmapRow(&bitmap, bytes, 0, 4), KERR_NO_MEMORY);
  EXPECT_EQ(bitmap.Flags & stateFlags, globalMemory);
  EXPECT_EQ(Zv_CopyBitmapData(&copy, &bitmap), KERR_NO_MEMORY);
}

TEST_F(LegacyHost, FilesGoWithTheBitmap) {
  std::string path;
  {
    TestBitmap bitmap(10, 7, 8, ALLOC_DISK);
    path = reinterpret_cast<const char*>(bitmap.Data);
    EXPECT_NE(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
    const BitmapHandle before = bitmap;
    EXPECT_EQ(Zv_LockBitmap(&bitmap), 0) << "nothing to lock";
    EXPECT_EQ(memcmp(&before, static_cast<BitmapHandle*>(&bitmap), sizeof before), 0);
  }
  EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST_F(LegacyHost, FileFailuresHaveTheirCodes) {
  using Operation = int(BitmapHandle&, uint8_t*);
  static constexpr unsigned stretch[] = {3, 21};
  Operation* const allocate = [](BitmapHandle& bitmap, uint8_t*) { return Zv_AllocateBitmap(&bitmap, ALLOC_DISK); };
  Operation* const change = [](BitmapHandle& bitmap, uint8_t*) { return Zv_ChangeBitmapHeight(&bitmap, 20); };
  Operation* const read = [](BitmapHandle& bitmap, uint8_t* b) { return Zv_GetBitmapRowCol(&bitmap, b, 3, 2, 5); };
  Operation* const write = [](BitmapHandle& bitmap, uint8_t* b) { return Zv_PutBitmapRowCol(&bitmap, b, 3, 2, 5); };
  Operation* const putSegments = [](BitmapHandle& bitmap, uint8_t* bytes) {
    return Zv_PutBitmapRowSegments(&bitmap, bytes, 3, 0, stretch, 2, 1);
  };
  Operation* const getPiece = [](BitmapHandle& bitmap, uint8_t* bytes) {
    return Zv_GetBitmapRowColCompressed(&bitmap, nullptr, bytes, 3, 9, 10);
  };
  Operation* const putPiece = [](BitmapHandle& bitmap, uint8_t* bytes) {
    return Zv_PutBitmapRowColCompressed(&bitmap, nullptr, bytes, 3, 9, 10);
  };
  const struct {
    Operation* operation;
    int bits;
    const char* refused;
    unsigned n;
    int status;
  } cases[] = {{allocate, 8, "SetFilePointer", 1, KERR_NO_MEMORY},
               {allocate, 8, "WriteFile", 1, KERR_WRITE},
               {allocate, 8, "CreateFileA", 1, KERR_NO_MEMORY},
               {allocate, 8, "GetTempFileNameA", 1, KERR_NO_MEMORY},
               {change, 8, "SetFilePointer", 1, KERR_NO_MEMORY},
               {change, 8, "SetEndOfFile", 1, KERR_NO_MEMORY},
               {read, 8, "SetFilePointer", 1, KERR_SEEK},
               {read, 8, "ReadFile", 1, KERR_READ},
               {write, 8, "SetFilePointer", 1, KERR_SEEK},
               {write, 8, "WriteFile", 1, KERR_WRITE},
               {putSegments, 1, "SetFilePointer", 1, KERR_SEEK},
               {putSegments, 1, "SetFilePointer", 2, KERR_SEEK},
               {putSegments, 1, "SetFilePointer", 3, KERR_SEEK},
               {putSegments, 1, "ReadFile", 1, KERR_READ},
               {putSegments, 1, "ReadFile", 2, KERR_READ},
               {putSegments, 1, "WriteFile", 1, KERR_WRITE},
               {putSegments, 24, "WriteFile", 1, KERR_WRITE},
               {putSegments, 24, "ReadFile", 1, KSUCCESS},  // whole pixels are written without reading
               {putSegments, 16, "SetFilePointer", 2, KERR_SEEK},
               {putSegments, 16, "ReadFile", 1, KERR_READ},
               {putSegments, 32, "WriteFile", 1, KERR_WRITE},
               {getPiece, 1, "GlobalAlloc", 1, KERR_NO_MEMORY},
               {getPiece, 1, "SetFilePointer", 1, KERR_SEEK},
               {getPiece, 1, "ReadFile", 1, KERR_READ},
               {putPiece, 1, "GlobalAlloc", 1, KERR_NO_MEMORY},
               {putPiece, 1, "SetFilePointer", 1, KERR_SEEK},
               {putPiece, 1, "WriteFile", 1, KERR_WRITE}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << &c - cases << ", " << c.refused << " " << c.n);
    TestBitmap bitmap;
    Zv_InitBitmap(&bitmap, 30, 5, c.bits);
    if (c.operation != allocate) {
      ASSERT_EQ(Zv_AllocateBitmap(&bitmap, ALLOC_DISK), KSUCCESS);
      fillWithNoise(bitmap, random);
    }
    const Snapshot before(bitmap);
    const Ledger ledger;
    Bytes bytes = recordOf(Pixels(30, true));
    bytes.resize(200);
    {
      const Refusal refusal(c.refused, c.n);
      EXPECT_EQ(c.operation(bitmap, bytes.data()), c.status);
      EXPECT_EQ(refusal.refused() == nullptr, c.status == KSUCCESS);
    }
    if (c.status == KSUCCESS) continue;
    EXPECT_TRUE(before.unchanged());
    EXPECT_TRUE(ledger.balanced());
  }
}

TEST_F(LegacyHost, ShortTransfers) {
  TestBitmap bitmap(30, 7, 1, ALLOC_DISK), other;
  Bytes bytes = recordOf(Pixels(30, true));
  bytes.resize(200);
  EXPECT_EQ(Zv_GetBitmapRow(&bitmap, bytes.data() + 100, 6, 50), 5) << "one row, and the byte that claims the space";
  const Replacement<"ReadFile", decltype(&ReadFile)> shortRead(
      [&](HANDLE file, LPVOID data, DWORD, LPDWORD done, LPOVERLAPPED overlapped) {
        return shortRead.original(file, data, 1, done, overlapped);
      });
  const Replacement<"WriteFile", decltype(&WriteFile)> shortWrite(
      [&](HANDLE file, LPCVOID data, DWORD bytesWanted, LPDWORD done, LPOVERLAPPED overlapped) {
        return shortWrite.original(file, data, bytesWanted / 2, done, overlapped);
      });
  EXPECT_EQ(Zv_PutBitmapRow(&bitmap, bytes.data(), 0, 12), 6) << "reported as it is";
  // With records and segments a short transfer is a failed write, whichever way it went.
  EXPECT_EQ(Zv_GetBitmapRowCompressed(&bitmap, nullptr, bytes.data() + 100, 3, 1), KERR_WRITE);
  EXPECT_EQ(Zv_PutBitmapRowCompressed(&bitmap, nullptr, bytes.data(), 3, 1), KERR_WRITE);
  const unsigned whole[] = {0, 16};
  EXPECT_EQ(Zv_PutBitmapRowSegments(&bitmap, bytes.data(), 3, 0, whole, 2, 1), KERR_WRITE);
  Zv_InitBitmap(&other, 10, 7, 8);
  EXPECT_EQ(Zv_AllocateBitmap(&other, ALLOC_DISK), KERR_WRITE) << "the claiming byte is one byte";
}

TEST_F(LegacyHost, RowsFollowPlainModels) {
  for (const int memoryType : {ALLOC_MEMORY, ALLOC_DISK}) {
    SCOPED_TRACE(memoryType);
    checkRowAccess(memoryType);
    checkSegments(memoryType);
    checkCompressedRows(memoryType);
    checkHeightChanges(memoryType);
  }
}

TEST_F(LegacyHost, FillsOfFilesReportEveryRow) {
  TestBitmap bitmap(37, 7, 5, ALLOC_DISK);
  {
    const ProgressLog log;
    ASSERT_EQ(Zv_FillBitmap(&bitmap, 0x01000015), KSUCCESS);
    EXPECT_EQ(log.percents, std::vector<int>({0, 14, 28, 42, 57, 71, 85, 100}));
  }
  // Stopped after two rows of a region: these stay cleared.
  const RECT part = {3, 2, 30, 6};
  ASSERT_EQ(Zv_SetBitmapRgnRect(&bitmap, nullptr, &part, CombineSet), KSUCCESS);
  const ProgressLog log(3, -99);
  EXPECT_EQ(Zv_ClearBitmap(&bitmap), -99);
  EXPECT_EQ(log.percents, std::vector<int>({0, 25, 50}));
  const Picture picture = pictureOf(bitmap);
  for (int y = 0; y < 7; ++y) {
    for (int x = 0; x < 37; ++x) ASSERT_EQ(picture.at(x, y), y >= 2 && y < 4 && x >= 3 && x < 30 ? 0u : 0x15u);
  }
}

}  // namespace
