// Global memory and temporary files, which hold the pixels on a legacy host. This program is started as on such a
// host: script/wine tells Wine so for its name.
#include <zavo.h>

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>

#include "support/import_patch.h"
#include "support/platform_watch.h"
#include "support/row_storage_checks.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr unsigned stateFlags = BMF_ALLOCATED | BMF_MEMORY | BMF_DISK | BMF_LOCKED | BMF_RUNLENGTH;
constexpr unsigned globalMemory = BMF_ALLOCATED | BMF_MEMORY;
constexpr unsigned temporaryFile = BMF_ALLOCATED | BMF_DISK;

std::string pathOf(const BitmapHandle& bitmap) {
  return reinterpret_cast<const char*>(bitmap.Data);
}

bool exists(const std::string& path) {
  return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

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
    unsigned flags;
  } cases[] = {{ALLOC_MEMORY, 24, globalMemory}, {ALLOC_MEMORY_ONLY, 1, globalMemory},
               {0x300, 8, globalMemory},         {ALLOC_DISK, 8, temporaryFile},
               {0x280, 8, temporaryFile},        {0x280, 1, globalMemory | BMF_RUNLENGTH}};
  for (const auto& c : cases) {
    TestBitmap bitmap(10, 7, c.bits, c.memoryType);
    EXPECT_EQ(bitmap.Flags & stateFlags, c.flags) << "type " << c.memoryType;
  }
}

TEST_F(LegacyHost, MemoryFallsBackToAFileUnlessForbidden) {
  const struct {
    int memoryType, status;
    unsigned flags;
  } cases[] = {{ALLOC_MEMORY, KSUCCESS, temporaryFile}, {ALLOC_MEMORY_ONLY, KERR_NO_MEMORY, 0}};
  for (const auto& c : cases) {
    TestBitmap bitmap;
    Zv_InitBitmap(&bitmap, 10, 7, 8);
    const Refusal refusal("GlobalAlloc", 1);
    EXPECT_EQ(Zv_AllocateBitmap(&bitmap, c.memoryType), c.status);
    EXPECT_EQ(bitmap.Flags & stateFlags, c.flags);
  }
}

TEST_F(LegacyHost, LocksNest) {
  TestBitmap bitmap(10, 7, 8);
  EXPECT_EQ(bitmap.Data, nullptr);
  EXPECT_EQ(GlobalSize(bitmap.StorageHandle), bitmap.DataSize + 16);
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
  Zv_LockBitmap(&bitmap);  // freeing unlocks
}

TEST_F(LegacyHost, RowsOfMemoryThatCannotBeLockedAreRefused) {
  TestBitmap bitmap(10, 7, 8);
  const Refusal refusal("GlobalLock", 1);
  EXPECT_EQ(Zv_LockBitmap(&bitmap), 0);
  EXPECT_NE(refusal.refused(), nullptr);
  uint8_t bytes[4] = {};
  EXPECT_EQ(Zv_GetBitmapRow(&bitmap, bytes, 0, 4), KERR_NO_MEMORY);
  EXPECT_EQ(Zv_PutBitmapRow(&bitmap, bytes, 0, 4), KERR_NO_MEMORY);
  EXPECT_EQ(bitmap.Flags & stateFlags, globalMemory);
}

TEST_F(LegacyHost, CopyingMemoryThatCannotBeLockedIsRefused) {
  for (unsigned n = 1; n <= 2; ++n) {
    TestBitmap source(10, 7, 8), copy(10, 7, 8);
    const Refusal refusal("GlobalLock", n);
    EXPECT_EQ(Zv_CopyBitmapData(&copy, &source), KERR_NO_MEMORY) << "lock " << n;
    EXPECT_NE(refusal.refused(), nullptr);
  }
}

TEST_F(LegacyHost, FilesClaimTheirSpaceAndGoWithTheBitmap) {
  std::string path;
  {
    TestBitmap bitmap(10, 7, 8, ALLOC_DISK);
    path = pathOf(bitmap);
    EXPECT_TRUE(exists(path));
    EXPECT_EQ(GetFileSize(bitmap.StorageHandle, nullptr), bitmap.DataSize + 1);
    const BitmapHandle before = bitmap;
    EXPECT_EQ(Zv_LockBitmap(&bitmap), 0) << "nothing to lock";
    EXPECT_EQ(memcmp(&before, static_cast<BitmapHandle*>(&bitmap), sizeof before), 0);
  }
  EXPECT_FALSE(exists(path));
}

TEST_F(LegacyHost, HeightChangeKeepsRows) {
  for (const int memoryType : {ALLOC_MEMORY, ALLOC_DISK}) {
    for (const int height : {1, 4, 5, 6, 40}) {
      SCOPED_TRACE(testing::Message() << "type " << memoryType << ", height " << height);
      TestBitmap bitmap(37, 5, 4, memoryType);
      fillWithNoise(bitmap, random);
      Picture expected = pictureOf(bitmap);
      ASSERT_EQ(Zv_ChangeBitmapHeight(&bitmap, height), KSUCCESS);
      EXPECT_EQ(bitmap.DataSize, bitmap.BytesPerLine * static_cast<unsigned>(height));
      const bool isFile = memoryType == ALLOC_DISK;
      EXPECT_EQ(isFile ? GetFileSize(bitmap.StorageHandle, nullptr) : GlobalSize(bitmap.StorageHandle),
                bitmap.DataSize + (height != 5 ? 0u
                                   : isFile    ? 1u
                                               : 16u));
      Picture changed = pictureOf(bitmap);
      // Rows added to global memory are undefined.
      const int known = isFile || height < 5 ? height : 5;
      for (Picture* picture : {&expected, &changed}) {
        picture->height = known;
        picture->pixels.resize(37u * static_cast<unsigned>(known));
      }
      EXPECT_TRUE(changed == expected);
    }
  }
}

TEST_F(LegacyHost, FileFailuresHaveTheirCodes) {
  const auto allocate = [](BitmapHandle& bitmap, uint8_t*) { return Zv_AllocateBitmap(&bitmap, ALLOC_DISK); };
  const auto change = [](BitmapHandle& bitmap, uint8_t*) { return Zv_ChangeBitmapHeight(&bitmap, 20); };
  const auto read = [](BitmapHandle& bitmap, uint8_t* bytes) { return Zv_GetBitmapRowCol(&bitmap, bytes, 3, 2, 5); };
  const auto write = [](BitmapHandle& bitmap, uint8_t* bytes) { return Zv_PutBitmapRowCol(&bitmap, bytes, 3, 2, 5); };
  const struct {
    const char* name;
    int (*operation)(BitmapHandle&, uint8_t*);
    const char* refused;
    unsigned n;
    int status;
  } cases[] = {{"allocate", allocate, "SetFilePointer", 1, KERR_NO_MEMORY},
               {"allocate", allocate, "WriteFile", 1, KERR_WRITE},
               {"allocate", allocate, "CreateFileA", 1, KERR_NO_MEMORY},
               {"allocate", allocate, "GetTempFileNameA", 1, KERR_NO_MEMORY},
               {"change", change, "SetFilePointer", 1, KERR_NO_MEMORY},
               {"change", change, "SetEndOfFile", 1, KERR_NO_MEMORY},
               {"read", read, "SetFilePointer", 1, KERR_SEEK},
               {"read", read, "ReadFile", 1, KERR_READ},
               {"write", write, "SetFilePointer", 1, KERR_SEEK},
               {"write", write, "WriteFile", 1, KERR_WRITE}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name << ", " << c.refused);
    TestBitmap bitmap;
    Zv_InitBitmap(&bitmap, 10, 7, 8);
    const bool allocates = std::string("allocate") == c.name;
    if (!allocates) {
      ASSERT_EQ(Zv_AllocateBitmap(&bitmap, ALLOC_DISK), KSUCCESS);
      fillWithNoise(bitmap, random);
    }
    const Snapshot before(bitmap);
    const Ledger ledger;
    uint8_t bytes[8] = {};
    {
      const Refusal refusal(c.refused, c.n);
      EXPECT_EQ(c.operation(bitmap, bytes), c.status);
    }
    EXPECT_TRUE(before.unchanged());
    EXPECT_TRUE(ledger.balanced());
  }
}

TEST_F(LegacyHost, ShortTransfersAreReportedAsTheyAre) {
  TestBitmap bitmap(10, 7, 8, ALLOC_DISK);
  uint8_t bytes[200] = {};
  EXPECT_EQ(Zv_GetBitmapRow(&bitmap, bytes, 6, 50), 13) << "one row, and the byte that claims the space";
  const Replacement<"WriteFile", decltype(&WriteFile)> shortWrite(
      [&](HANDLE file, LPCVOID data, DWORD, LPDWORD done, LPOVERLAPPED overlapped) {
        return shortWrite.original(file, data, 3, done, overlapped);
      });
  EXPECT_EQ(Zv_PutBitmapRow(&bitmap, bytes, 0, 12), 3);
  TestBitmap other;
  Zv_InitBitmap(&other, 10, 7, 8);
  EXPECT_EQ(Zv_AllocateBitmap(&other, ALLOC_DISK), KERR_WRITE) << "the claiming byte is one byte";
}

TEST_F(LegacyHost, RowAccess) {
  for (const int memoryType : {ALLOC_MEMORY, ALLOC_DISK}) {
    SCOPED_TRACE(memoryType);
    checkRowAccess(memoryType);
    checkSegments(memoryType);
    checkCompressedRows(memoryType);
  }
}

}  // namespace
