// Segments and run records on temporary files that fail.
#include <zavo.h>

#include <gtest/gtest.h>

#include "support/import_patch.h"
#include "support/platform_watch.h"
#include "support/run_model.h"
#include "support/snapshot.h"
#include "support/test_bitmap.h"

namespace {

using namespace zavotest;

constexpr unsigned segments[] = {3, 21};

int putSegments(BitmapHandle& bitmap, uint8_t* bytes) {
  return Zv_PutBitmapRowSegments(&bitmap, bytes, 3, 0, segments, 2, 1);
}

int getRecord(BitmapHandle& bitmap, uint8_t* bytes) {
  return Zv_GetBitmapRowCompressed(&bitmap, nullptr, bytes, 3, 1);
}

int putRecord(BitmapHandle& bitmap, uint8_t* bytes) {
  return Zv_PutBitmapRowCompressed(&bitmap, nullptr, bytes, 3, 1);
}

int getPiece(BitmapHandle& bitmap, uint8_t* bytes) {
  return Zv_GetBitmapRowColCompressed(&bitmap, nullptr, bytes, 3, 9, 10);
}

int putPiece(BitmapHandle& bitmap, uint8_t* bytes) {
  return Zv_PutBitmapRowColCompressed(&bitmap, nullptr, bytes, 3, 9, 10);
}

TEST(RowsOnFiles, FailuresHaveTheirCodes) {
  const struct {
    const char* name;
    int (*operation)(BitmapHandle&, uint8_t*);
    int bits;
    const char* refused;
    unsigned n;
    int status;
  } cases[] = {{"segments", putSegments, 1, "SetFilePointer", 1, KERR_SEEK},
               {"segments", putSegments, 1, "SetFilePointer", 2, KERR_SEEK},
               {"segments", putSegments, 1, "SetFilePointer", 3, KERR_SEEK},
               {"segments", putSegments, 1, "ReadFile", 1, KERR_READ},
               {"segments", putSegments, 1, "ReadFile", 2, KERR_READ},
               {"segments", putSegments, 1, "WriteFile", 1, KERR_WRITE},
               {"segments", putSegments, 24, "SetFilePointer", 1, KERR_SEEK},
               {"segments", putSegments, 24, "WriteFile", 1, KERR_WRITE},
               {"segments", putSegments, 16, "SetFilePointer", 1, KERR_SEEK},
               {"segments", putSegments, 16, "SetFilePointer", 2, KERR_SEEK},
               {"segments", putSegments, 16, "ReadFile", 1, KERR_READ},
               {"segments", putSegments, 32, "WriteFile", 1, KERR_WRITE},
               {"get record", getRecord, 1, "GlobalAlloc", 1, KERR_NO_MEMORY},
               {"get record", getRecord, 1, "SetFilePointer", 1, KERR_SEEK},
               {"get record", getRecord, 1, "ReadFile", 1, KERR_READ},
               {"put record", putRecord, 1, "GlobalAlloc", 1, KERR_NO_MEMORY},
               {"put record", putRecord, 1, "SetFilePointer", 1, KERR_SEEK},
               {"put record", putRecord, 1, "WriteFile", 1, KERR_WRITE},
               {"get piece", getPiece, 1, "GlobalAlloc", 1, KERR_NO_MEMORY},
               {"get piece", getPiece, 1, "ReadFile", 1, KERR_READ},
               {"put piece", putPiece, 1, "SetFilePointer", 1, KERR_SEEK},
               {"put piece", putPiece, 1, "WriteFile", 1, KERR_WRITE}};
  std::mt19937 random(41);
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name << ", " << c.bits << " bits, " << c.refused << " " << c.n);
    TestBitmap bitmap(30, 5, c.bits, ALLOC_DISK);
    ASSERT_NE(bitmap.Flags & BMF_DISK, 0u);
    fillWithNoise(bitmap, random);
    const Snapshot before(bitmap);
    const Ledger ledger;
    Bytes bytes = recordOf(Pixels(30, true));
    bytes.resize(200);
    {
      const Refusal refusal(c.refused, c.n);
      EXPECT_EQ(c.operation(bitmap, bytes.data()), c.status);
      EXPECT_NE(refusal.refused(), nullptr);
    }
    EXPECT_TRUE(before.unchanged());
    EXPECT_TRUE(ledger.balanced());
  }
}

TEST(RowsOnFiles, WholePixelsAreWrittenWithoutReading) {
  std::mt19937 random(42);
  TestBitmap bitmap(30, 5, 24, ALLOC_DISK);
  fillWithNoise(bitmap, random);
  Bytes bytes(100);
  const Refusal refusal("ReadFile", 1);
  EXPECT_EQ(putSegments(bitmap, bytes.data()), KSUCCESS);
  EXPECT_EQ(refusal.refused(), nullptr);
}

// A short transfer is reported as a failed write, whichever way it went.
TEST(RowsOnFiles, ShortTransfersOfRecords) {
  TestBitmap bitmap(30, 5, 1, ALLOC_DISK);
  Bytes bytes = recordOf(Pixels(30, true));
  bytes.resize(200);
  const Replacement<"ReadFile", decltype(&ReadFile)> shortRead(
      [&](HANDLE file, LPVOID data, DWORD, LPDWORD done, LPOVERLAPPED overlapped) {
        return shortRead.original(file, data, 1, done, overlapped);
      });
  const Replacement<"WriteFile", decltype(&WriteFile)> shortWrite(
      [&](HANDLE file, LPCVOID data, DWORD, LPDWORD done, LPOVERLAPPED overlapped) {
        return shortWrite.original(file, data, 1, done, overlapped);
      });
  EXPECT_EQ(getRecord(bitmap, bytes.data()), KERR_WRITE);
  EXPECT_EQ(putRecord(bitmap, recordOf(Pixels(30, true)).data()), KERR_WRITE);
  EXPECT_EQ(putSegments(bitmap, bytes.data()), KERR_WRITE);
}

}  // namespace
