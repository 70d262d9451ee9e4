// First fit over a free list in most-recently-freed order, splitting, immediate merging, growth in large steps.
#include "core/run_heap.h"

#include <zavo.h>

#include <cstring>

#include "core/memory.h"

namespace zavo {
namespace {

constexpr uint32_t heapStep = 0x40000;         // every size but a trimmed one is a multiple of this
constexpr uint32_t largeHeapBytes = 0x400000;  // what a large image starts with
constexpr uint32_t firstBlock = sizeof(RunHeapHeader);
constexpr uint32_t blockHeaderBytes = sizeof(RunHeapBlock);
constexpr uint32_t trimmedPayload = 128;

RunHeapBlock& blockAt(RunHeap heap, uint32_t offset) {
  return *reinterpret_cast<RunHeapBlock*>(reinterpret_cast<uint8_t*>(heap) + offset);
}

uint64_t roundUp(uint64_t value, uint32_t multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

uint32_t endOf(RunHeap heap, uint32_t block) {
  return block + blockHeaderBytes + blockAt(heap, block).payloadBytes;
}

void pushFree(RunHeap heap, uint32_t block) {
  RunHeapBlock& pushed = blockAt(heap, block);
  pushed.inUse = 0;
  pushed.previousFree = 0;
  pushed.nextFree = heap->firstFree;
  if (heap->firstFree != 0) blockAt(heap, heap->firstFree).previousFree = block;
  heap->firstFree = block;
}

void unlinkFree(RunHeap heap, uint32_t block) {
  const RunHeapBlock& gone = blockAt(heap, block);
  if (gone.previousFree != 0) {
    blockAt(heap, gone.previousFree).nextFree = gone.nextFree;
  } else {
    heap->firstFree = gone.nextFree;
  }
  if (gone.nextFree != 0) blockAt(heap, gone.nextFree).previousFree = gone.previousFree;
}

bool nextIsFree(RunHeap heap, uint32_t block) {
  const uint32_t next = blockAt(heap, block).next;
  return next != 0 && blockAt(heap, next).inUse == 0;
}

// The block takes over its free upper neighbour.
void absorbNext(RunHeap heap, uint32_t block) {
  RunHeapBlock& absorber = blockAt(heap, block);
  const uint32_t next = absorber.next;
  unlinkFree(heap, next);
  const RunHeapBlock& absorbed = blockAt(heap, next);
  absorber.payloadBytes += blockHeaderBytes + absorbed.payloadBytes;
  absorber.next = absorbed.next;
  if (absorber.next != 0) {
    blockAt(heap, absorber.next).previous = block;
  } else {
    heap->lastBlock = block;
  }
}

// Makes a free block that fills the heap from `offset` to its end, above `previous` (0 for none).
void appendFreeBlock(RunHeap heap, uint32_t offset, uint32_t previous) {
  blockAt(heap, offset) = {.previous = previous, .payloadBytes = heap->totalBytes - offset - blockHeaderBytes};
  if (previous != 0) blockAt(heap, previous).next = offset;
  heap->lastBlock = offset;
  pushFree(heap, offset);
}

// Cuts what the block has beyond `bytes` off into a free block, when a block fits there.
void split(RunHeap heap, uint32_t block, uint32_t bytes) {
  RunHeapBlock& whole = blockAt(heap, block);
  if (uint64_t{bytes} + blockHeaderBytes >= whole.payloadBytes) return;
  const uint32_t rest = block + blockHeaderBytes + bytes;
  blockAt(heap, rest) = {
      .previous = block, .next = whole.next, .payloadBytes = whole.payloadBytes - bytes - blockHeaderBytes};
  if (whole.next != 0) {
    blockAt(heap, whole.next).previous = rest;
  } else {
    heap->lastBlock = rest;
  }
  whole.next = rest;
  whole.payloadBytes = bytes;
  pushFree(heap, rest);
  if (nextIsFree(heap, rest)) absorbNext(heap, rest);
}

uint32_t findFree(RunHeap heap, uint32_t bytes) {
  uint32_t block = heap->firstFree;
  while (block != 0 && blockAt(heap, block).payloadBytes < bytes) block = blockAt(heap, block).nextFree;
  return block;
}

// Resizes the memory itself; the heap may move.
bool resizeMemory(RunHeap& heap, uint64_t totalBytes) {
  OsBlock<uint8_t> memory(reinterpret_cast<uint8_t*>(heap));
  const bool resized = memory.resize(totalBytes);
  heap = reinterpret_cast<RunHeap>(memory.release());
  if (resized) heap->totalBytes = static_cast<uint32_t>(totalBytes);
  return resized;
}

}  // namespace

RunHeap createRunHeap(uint32_t imageBytes) {
  uint64_t bytes = uint64_t{imageBytes} / 8 + sizeof(RunHeapHeader);
  if (bytes > heapStep) bytes = largeHeapBytes;
  bytes = roundUp(bytes, heapStep);
  auto memory = OsBlock<uint8_t>::allocateZeroed(bytes);
  if (!memory) return nullptr;
  auto* heap = reinterpret_cast<RunHeap>(memory.release());
  heap->totalBytes = static_cast<uint32_t>(bytes);
  appendFreeBlock(heap, firstBlock, 0);
  return heap;
}

void destroyRunHeap(RunHeap heap) {
  Zv_OsFree(heap);
}

uint32_t allocateRunBlock(RunHeap& heap, uint32_t bytes) {
  const uint64_t rounded = roundUp(bytes, 4);
  if (rounded > UINT32_MAX) return 0;
  const auto wanted = static_cast<uint32_t>(rounded);
  uint32_t block = findFree(heap, wanted);
  if (block == 0) {
    if (!growRunHeap(heap, wanted)) return 0;
    block = findFree(heap, wanted);
    if (block == 0) return 0;
  }
  blockAt(heap, block).inUse = 1;
  split(heap, block, wanted);
  unlinkFree(heap, block);
  return block;
}

uint32_t reallocateRunBlock(RunHeap& heap, uint32_t block, uint32_t bytes) {
  const uint64_t wanted = roundUp(bytes, 4);
  if (wanted > UINT32_MAX) return 0;
  const uint32_t payload = blockAt(heap, block).payloadBytes;
  if (payload < wanted) {
    const bool fitsWithNext =
        nextIsFree(heap, block) &&
        uint64_t{payload} + blockHeaderBytes + blockAt(heap, blockAt(heap, block).next).payloadBytes >= wanted;
    if (!fitsWithNext) {
      const uint32_t moved = allocateRunBlock(heap, static_cast<uint32_t>(wanted));
      if (moved == 0) return 0;
      memcpy(runBlockPayload(heap, moved), runBlockPayload(heap, block), payload);
      freeRunBlock(heap, block);
      return moved;
    }
    absorbNext(heap, block);
  }
  split(heap, block, static_cast<uint32_t>(wanted));
  return block;
}

void freeRunBlock(RunHeap heap, uint32_t block) {
  pushFree(heap, block);
  if (nextIsFree(heap, block)) absorbNext(heap, block);
  const uint32_t previous = blockAt(heap, block).previous;
  if (previous != 0 && blockAt(heap, previous).inUse == 0) absorbNext(heap, previous);
}

bool growRunHeap(RunHeap& heap, uint32_t bytes) {
  const uint32_t last = heap->lastBlock;
  const bool lastIsFree = last != 0 && blockAt(heap, last).inUse == 0;
  const uint64_t needed = lastIsFree ? uint64_t{heap->totalBytes} - blockAt(heap, last).payloadBytes + bytes
                                     : uint64_t{heap->totalBytes} + bytes + blockHeaderBytes;
  if (!resizeMemory(heap, roundUp(needed, heapStep))) return false;

  if (last == 0) {
    appendFreeBlock(heap, firstBlock, 0);
  } else if (lastIsFree) {
    blockAt(heap, last).payloadBytes = heap->totalBytes - last - blockHeaderBytes;
  } else {
    appendFreeBlock(heap, endOf(heap, last), last);
  }
  return true;
}

// The block keeps a small payload; its header's size beyond that is left as slack, on purpose.
bool trimRunHeap(RunHeap& heap) {
  const uint32_t last = heap->lastBlock;
  if (last == 0 || blockAt(heap, last).inUse != 0) return false;
  const uint32_t payload = blockAt(heap, last).payloadBytes;
  if (payload <= trimmedPayload) return false;
  if (!resizeMemory(heap, uint64_t{heap->totalBytes} - payload + trimmedPayload + blockHeaderBytes)) return false;
  blockAt(heap, last).payloadBytes = trimmedPayload;
  return true;
}

}  // namespace zavo
