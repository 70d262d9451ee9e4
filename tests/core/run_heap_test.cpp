// The heap of runs against a model that keeps its blocks in plain lists, compared whole after every step.
#include "core/run_heap.h"

#include <zavo.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

#include "support/platform_watch.h"

namespace {

using namespace zavo;

constexpr uint32_t step = 0x40000;
constexpr uint32_t headerBytes = 24;

uint32_t roundUp(uint32_t value, uint32_t multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

struct Model {
  struct Block {
    uint32_t payload;
    bool used;
    bool operator==(const Block&) const = default;
  };

  uint32_t total = step;
  std::map<uint32_t, Block> blocks = {{12, {step - 36, false}}};  // by their offsets
  std::vector<uint32_t> freeOffsets = {12};                       // in the order of the free list
  bool operator==(const Model&) const = default;

  uint32_t allocate(uint32_t bytes) {
    const uint32_t wanted = roundUp(bytes, 4);
    for (const uint32_t offset : freeOffsets) {
      if (blocks[offset].payload < wanted) continue;
      blocks[offset].used = true;
      std::erase(freeOffsets, offset);
      cut(offset, wanted);
      return offset;
    }
    grow(wanted);
    return allocate(bytes);
  }

  uint32_t reallocate(uint32_t offset, uint32_t bytes) {
    const uint32_t wanted = roundUp(bytes, 4);
    if (blocks[offset].payload < wanted) {
      const auto next = blocks.upper_bound(offset);
      if (next == blocks.end() || next->second.used ||
          blocks[offset].payload + headerBytes + next->second.payload < wanted) {
        const uint32_t moved = allocate(wanted);
        free(offset);
        return moved;
      }
      absorbFreeNext(offset);
    }
    cut(offset, wanted);
    return offset;
  }

  void free(uint32_t offset) {
    blocks[offset].used = false;
    freeOffsets.insert(freeOffsets.begin(), offset);
    absorbFreeNext(offset);
    const auto block = blocks.find(offset);
    if (block != blocks.begin() && !std::prev(block)->second.used) absorbFreeNext(std::prev(block)->first);
  }

  void grow(uint32_t bytes) {
    auto& [offset, last] = *blocks.rbegin();
    total = roundUp(last.used ? total + bytes + headerBytes : total - last.payload + bytes, step);
    const uint32_t end = offset + headerBytes + last.payload;
    if (!last.used) {
      last.payload = total - offset - headerBytes;
    } else {
      blocks[end] = {total - end - headerBytes, false};
      freeOffsets.insert(freeOffsets.begin(), end);
    }
  }

  bool trim() {
    Block& last = blocks.rbegin()->second;
    if (last.used || last.payload <= 128) return false;
    total = total - last.payload + 152;
    last.payload = 128;
    return true;
  }

  void absorbFreeNext(uint32_t offset) {
    const auto next = blocks.upper_bound(offset);
    if (next == blocks.end() || next->second.used) return;
    std::erase(freeOffsets, next->first);
    blocks[offset].payload += headerBytes + next->second.payload;
    blocks.erase(next);
  }

  void cut(uint32_t offset, uint32_t bytes) {
    if (bytes + headerBytes >= blocks[offset].payload) return;
    const uint32_t rest = offset + headerBytes + bytes;
    blocks[rest] = {blocks[offset].payload - bytes - headerBytes, false};
    blocks[offset].payload = bytes;
    freeOffsets.insert(freeOffsets.begin(), rest);
    absorbFreeNext(rest);
  }
};

// The heap as the model sees it; the links both ways must agree with each other.
Model modelOf(RunHeap heap) {
  const auto blockAt = [&](uint32_t offset) {
    return *reinterpret_cast<const RunHeapBlock*>(reinterpret_cast<const uint8_t*>(heap) + offset);
  };
  Model model{heap->totalBytes, {}, {}};
  uint32_t previous = 0;
  for (uint32_t offset = 12; offset != 0; offset = blockAt(offset).next) {
    EXPECT_EQ(blockAt(offset).previous, previous);
    EXPECT_LE(blockAt(offset).inUse, 1u);
    model.blocks[offset] = {blockAt(offset).payloadBytes, blockAt(offset).inUse == 1};
    previous = offset;
  }
  EXPECT_EQ(heap->lastBlock, previous);
  previous = 0;
  for (uint32_t offset = heap->firstFree; offset != 0; offset = blockAt(offset).nextFree) {
    EXPECT_EQ(blockAt(offset).previousFree, previous);
    model.freeOffsets.push_back(offset);
    previous = offset;
  }
  return model;
}

TEST(RunHeap, RandomUseKeepsTheLayout) {
  struct Used {
    uint32_t block, bytes;
    uint8_t content;
  };
  for (unsigned seed = 1; seed <= 8; ++seed) {
    std::mt19937 random(seed);
    RunHeap heap = createRunHeap(1000);
    Model model;
    std::vector<Used> used;
    for (int round = 0; round < 500; ++round) {
      SCOPED_TRACE(testing::Message() << "seed " << seed << ", round " << round);
      // Sizes around that of a block's header, where splitting changes its mind; now and then one to grow the heap.
      const uint32_t bytes = random() % 30 == 0 ? random() % 200000 : random() % 100;
      const uint32_t choice = random() % 20;
      Used* one = used.empty() ? nullptr : &used[random() % used.size()];
      if (one != nullptr && choice >= 8 && choice < 18) {
        const uint8_t* content = runBlockPayload(heap, one->block);
        ASSERT_EQ(static_cast<uint32_t>(std::count(content, content + one->bytes, one->content)), one->bytes);
      }
      if (one == nullptr || choice < 8) {
        used.push_back({allocateRunBlock(heap, bytes), bytes, static_cast<uint8_t>(random())});
        ASSERT_EQ(used.back().block, model.allocate(bytes));
        memset(runBlockPayload(heap, used.back().block), used.back().content, bytes);
      } else if (choice < 13) {
        const uint32_t before = one->block;
        one->block = reallocateRunBlock(heap, before, bytes);
        ASSERT_EQ(one->block, model.reallocate(before, bytes));
        const uint8_t* content = runBlockPayload(heap, one->block);
        const auto kept = static_cast<int>(std::min(one->bytes, bytes));
        EXPECT_EQ(std::count(content, content + kept, one->content), kept);
        one->bytes = bytes;
        memset(runBlockPayload(heap, one->block), one->content, bytes);
      } else if (choice < 18) {
        freeRunBlock(heap, one->block);
        model.free(one->block);
        used.erase(used.begin() + (one - used.data()));
      } else if (choice < 19) {
        ASSERT_EQ(trimRunHeap(heap), model.trim());
      } else {
        ASSERT_TRUE(growRunHeap(heap, bytes));
        model.grow(bytes);
      }
      ASSERT_TRUE(modelOf(heap) == model);
    }
    destroyRunHeap(heap);
  }
}

TEST(RunHeap, RefusedGrowthChangesNothing) {
  RunHeap heap = createRunHeap(1000);
  const uint32_t block = allocateRunBlock(heap, 1000);
  const Model model = modelOf(heap);
  {
    const zavotest::Refusal refusal("GlobalReAlloc", 1, zavotest::Repeat::fromThenOn);
    EXPECT_EQ(allocateRunBlock(heap, step), 0u);
    EXPECT_EQ(reallocateRunBlock(heap, block, step), 0u);
    EXPECT_FALSE(growRunHeap(heap, step));
    EXPECT_FALSE(trimRunHeap(heap));
  }
  EXPECT_EQ(allocateRunBlock(heap, 0xFFFFFFFE), 0u) << "more than 32 bits can say once rounded up";
  EXPECT_FALSE(growRunHeap(heap, 0xFFFFFFFF));
  EXPECT_TRUE(modelOf(heap) == model);
  destroyRunHeap(heap);
}

}  // namespace
