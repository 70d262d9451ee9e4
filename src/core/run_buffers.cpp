// The exported converters between packed 1-bit rows and run records, and the operations on buffers of records.
#include <zavo.h>

#include <cstring>

#include "core/run_records.h"
#include "core/sizes.h"

namespace zavo {
namespace {

size_t packedStride(unsigned width) {
  return static_cast<size_t>(rowBytesFor(width, 1));
}

uint8_t* encodeRecord(uint8_t* record, const uint8_t* bits, unsigned startPixel, unsigned count) {
  return finishRecord(record, encodeRuns(recordRuns(record), bits, startPixel, count));
}

size_t bytesOfRecords(const uint8_t* records, unsigned rows) {
  size_t bytes = 0;
  for (unsigned row = 0; row < rows; ++row) bytes += recordBytes(runsOfRecord(records + bytes));
  return bytes;
}

}  // namespace
}  // namespace zavo

using namespace zavo;

int ZAVO_CALL Zv_CompressRow(void* record, const unsigned char* bits, unsigned startPixel, unsigned count) {
  if (record == nullptr || bits == nullptr) return KERR_BAD_PARAMETER;
  encodeRecord(static_cast<uint8_t*>(record), bits, startPixel % 8, count);
  return static_cast<int>(count);
}

int ZAVO_CALL Zv_CompressRows(void* buffer, const unsigned char* bits, unsigned width, unsigned rows) {
  if (buffer == nullptr || bits == nullptr) return KERR_BAD_PARAMETER;
  auto* record = static_cast<uint8_t*>(buffer);
  const size_t stride = packedStride(width);
  for (unsigned row = 0; row < rows; ++row) record = encodeRecord(record, bits + row * stride, 0, width);
  return KSUCCESS;
}

int ZAVO_CALL Zv_ExpandRow(const void* record, unsigned char* bits, unsigned startPixel, unsigned count) {
  if (record == nullptr || bits == nullptr) return KERR_BAD_PARAMETER;
  decodeRuns(bits, runsOfRecord(static_cast<const uint8_t*>(record)), startPixel, count);
  return KSUCCESS;
}

int ZAVO_CALL Zv_ExpandRows(const void* buffer, unsigned char* bits, unsigned width, unsigned rows) {
  if (buffer == nullptr || bits == nullptr) return KERR_BAD_PARAMETER;
  const auto* record = static_cast<const uint8_t*>(buffer);
  const size_t stride = packedStride(width);
  for (unsigned row = 0; row < rows; ++row) {
    const RunSpan runs = runsOfRecord(record);
    decodeRuns(bits + row * stride, runs, 0, width);
    record += recordBytes(runs);
  }
  return KSUCCESS;
}

int ZAVO_CALL Zv_MirrorCompressedBuffer(const void* source, void* destination, unsigned rows) {
  if (source == nullptr || destination == nullptr) return KERR_BAD_PARAMETER;
  const auto* from = static_cast<const uint8_t*>(source);
  auto* to = static_cast<uint8_t*>(destination);
  for (unsigned row = 0; row < rows; ++row) {
    const RunSpan runs = runsOfRecord(from);
    to = finishRecord(to, mirrorRuns(recordRuns(to), runs));
    from += recordBytes(runs);
  }
  return KSUCCESS;
}

int ZAVO_CALL Zv_FlipCompressedBuffer(const void* source, void* destination, unsigned rows) {
  if (source == nullptr || destination == nullptr) return KERR_BAD_PARAMETER;
  const auto* from = static_cast<const uint8_t*>(source);
  uint8_t* to = static_cast<uint8_t*>(destination) + bytesOfRecords(from, rows);
  for (unsigned row = 0; row < rows; ++row) {
    const size_t bytes = recordBytes(runsOfRecord(from));
    to -= bytes;
    memcpy(to, from, bytes);
    from += bytes;
  }
  return KSUCCESS;
}
