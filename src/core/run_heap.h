// The heap that holds the runs of a run-length bitmap: one resizable block of memory, divided into blocks that are
// named by their offset, because the heap moves when it grows. Offset 0 means no block.
//
// Invariants: the blocks tile the heap from offset 12 to its end, less 24 bytes for every trim since it grew; no two
// free neighbours stay unmerged after a free; payload sizes of used blocks are multiples of 4.
#pragma once

#include <cstdint>

namespace zavo {

struct RunHeapHeader {
  uint32_t totalBytes;
  uint32_t lastBlock;  // the block with the highest offset, 0 for none
  uint32_t firstFree;  // head of the free list, most recently freed first, 0 for none
};

struct RunHeapBlock {
  uint32_t previous = 0;  // lower neighbour, 0 for none
  uint32_t next = 0;      // higher neighbour, 0 for none
  uint32_t inUse = 0;     // 1 or 0
  uint32_t previousFree = 0;
  uint32_t nextFree = 0;
  uint32_t payloadBytes = 0;
};

static_assert(sizeof(RunHeapHeader) == 12 && sizeof(RunHeapBlock) == 24);

// The heap is handed around by the address of its memory, which lives in the bitmap's row table; operations that may
// move it take that address by reference.
using RunHeap = RunHeapHeader*;

// A heap for an image of `imageBytes` unpacked bytes; null when there is no memory.
[[nodiscard]] RunHeap createRunHeap(uint32_t imageBytes);
void destroyRunHeap(RunHeap heap);

// A block of at least `bytes` bytes, growing the heap if needed; 0 when it cannot be had.
[[nodiscard]] uint32_t allocateRunBlock(RunHeap& heap, uint32_t bytes);
// Resizes a block, keeping its content; the offset may change. 0 when it cannot be had, the block then unchanged.
[[nodiscard]] uint32_t reallocateRunBlock(RunHeap& heap, uint32_t block, uint32_t bytes);
void freeRunBlock(RunHeap heap, uint32_t block);

// Enlarges the heap so that `bytes` more fit at its end.
[[nodiscard]] bool growRunHeap(RunHeap& heap, uint32_t bytes);
// Gives the unused end back to the system. False when there is nothing to give back or resizing failed.
[[nodiscard]] bool trimRunHeap(RunHeap& heap);

[[nodiscard]] inline uint8_t* runBlockPayload(RunHeap heap, uint32_t block) {
  return reinterpret_cast<uint8_t*>(heap) + block + sizeof(RunHeapBlock);
}

}  // namespace zavo
