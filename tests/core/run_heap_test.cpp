// The heap of runs against a model that keeps its blocks in plain lists, compared whole after every step.
#include "core/run_heap.h"

#include <zavo.h>

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <list>
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

class Model {
 public:
  struct Block {
    uint32_t offset, payload;
    bool used;
    bool operator==(const Block&) const = default;
  };
  using Position = std::list<Block>::iterator;

  explicit Model(uint32_t total) : total(total), blocks{{12, total - 36, false}}, freeOffsets{12} {}

  uint32_t allocate(uint32_t bytes) {
    const uint32_t wanted = roundUp(bytes, 4);
    for (;;) {
      for (const uint32_t offset : freeOffsets) {
        const Position block = at(offset);
        if (block->payload < wanted) continue;
        block->used = true;
        std::erase(freeOffsets, offset);
        cut(block, wanted);
        return offset;
      }
      grow(wanted);
    }
  }

  uint32_t reallocate(uint32_t offset, uint32_t bytes) {
    const uint32_t wanted = roundUp(bytes, 4);
    const Position block = at(offset);
    const Position next = std::next(block);
    if (block->payload < wanted) {
      if (next == blocks.end() || next->used || block->payload + headerBytes + next->payload < wanted) {
        const uint32_t moved = allocate(wanted);
        free(offset);
        return moved;
      }
      absorbNext(block);
    }
    cut(block, wanted);
    return offset;
  }

  void free(uint32_t offset) {
    const Position block = at(offset);
    block->used = false;
    freeOffsets.insert(freeOffsets.begin(), offset);
    if (std::next(block) != blocks.end() && !std::next(block)->used) absorbNext(block);
    if (block != blocks.begin() && !std::prev(block)->used) absorbNext(std::prev(block));
  }

  void grow(uint32_t bytes) {
    Block& last = blocks.back();
    total = roundUp(last.used ? total + bytes + headerBytes : total - last.payload + bytes, step);
    const uint32_t end = last.offset + headerBytes + last.payload;
    if (!last.used) {
      last.payload = total - last.offset - headerBytes;
    } else {
      blocks.push_back({end, total - end - headerBytes, false});
      freeOffsets.insert(freeOffsets.begin(), end);
    }
  }

  bool trim() {
    Block& last = blocks.back();
    if (last.used || last.payload <= 128) return false;
    total = total - last.payload + 152;
    last.payload = 128;
    return true;
  }

  uint32_t total;
  std::list<Block> blocks;
  std::vector<uint32_t> freeOffsets;  // in the order of the free list

 private:
  Position at(uint32_t offset) {
    return std::find_if(blocks.begin(), blocks.end(), [offset](const Block& block) { return block.offset == offset; });
  }

  void absorbNext(Position block) {
    const Position next = std::next(block);
    std::erase(freeOffsets, next->offset);
    block->payload += headerBytes + next->payload;
    blocks.erase(next);
  }

  void cut(Position block, uint32_t bytes) {
    if (bytes + headerBytes >= block->payload) return;
    const Block rest{block->offset + headerBytes + bytes, block->payload - bytes - headerBytes, false};
    block->payload = bytes;
    const Position placed = blocks.insert(std::next(block), rest);
    freeOffsets.insert(freeOffsets.begin(), rest.offset);
    if (std::next(placed) != blocks.end() && !std::next(placed)->used) absorbNext(placed);
  }
};

const RunHeapBlock& blockAt(RunHeap heap, uint32_t offset) {
  return *reinterpret_cast<const RunHeapBlock*>(reinterpret_cast<const uint8_t*>(heap) + offset);
}

// The heap as the model sees it; the links both ways must agree with each other.
void expectSame(RunHeap heap, const Model& model) {
  ASSERT_EQ(heap->totalBytes, model.total);
  std::list<Model::Block> blocks;
  uint32_t previous = 0;
  for (uint32_t offset = 12; offset != 0; offset = blockAt(heap, offset).next) {
    const RunHeapBlock& block = blockAt(heap, offset);
    ASSERT_EQ(block.previous, previous);
    ASSERT_LE(block.inUse, 1u);
    blocks.push_back({offset, block.payloadBytes, block.inUse == 1});
    previous = offset;
  }
  ASSERT_EQ(heap->lastBlock, previous);
  ASSERT_EQ(blocks, model.blocks);

  std::vector<uint32_t> freeOffsets;
  previous = 0;
  for (uint32_t offset = heap->firstFree; offset != 0; offset = blockAt(heap, offset).nextFree) {
    ASSERT_EQ(blockAt(heap, offset).previousFree, previous);
    freeOffsets.push_back(offset);
    previous = offset;
  }
  ASSERT_EQ(freeOffsets, model.freeOffsets);
}

TEST(RunHeap, StartsByTheSizeOfTheImage) {
  const struct {
    uint32_t imageBytes, heapBytes;
  } cases[] = {
      {0, step}, {128 * 1000, step}, {(step - 12) * 8, step}, {(step - 11) * 8, 0x400000}, {50000000, 0x400000}};
  for (const auto& c : cases) {
    RunHeap heap = createRunHeap(c.imageBytes);
    ASSERT_NE(heap, nullptr);
    expectSame(heap, Model(c.heapBytes));
    destroyRunHeap(heap);
  }
}

TEST(RunHeap, RandomUseKeepsTheLayout) {
  struct Used {
    uint32_t block, bytes;
    uint8_t content;
  };
  for (unsigned seed = 1; seed <= 8; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    RunHeap heap = createRunHeap(1000);
    Model model(step);
    std::vector<Used> used;
    for (int round = 0; round < 500; ++round) {
      // Sizes around that of a block's header, where splitting changes its mind; now and then one to grow the heap.
      const uint32_t bytes = random() % 30 == 0 ? random() % 200000 : random() % 100;
      const uint32_t choice = random() % 20;
      Used* one = used.empty() ? nullptr : &used[random() % used.size()];
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
        const uint8_t* content = runBlockPayload(heap, one->block);
        EXPECT_EQ(static_cast<uint32_t>(std::count(content, content + one->bytes, one->content)), one->bytes);
        freeRunBlock(heap, one->block);
        model.free(one->block);
        used.erase(used.begin() + (one - used.data()));
      } else if (choice < 19) {
        ASSERT_EQ(trimRunHeap(heap), model.trim());
      } else {
        ASSERT_TRUE(growRunHeap(heap, bytes));
        model.grow(bytes);
      }
      expectSame(heap, model);
      if (HasFatalFailure()) return;
    }
    destroyRunHeap(heap);
  }
}

TEST(RunHeap, RefusedGrowthChangesNothing) {
  RunHeap heap = createRunHeap(1000);
  const uint32_t block = allocateRunBlock(heap, 1000);
  Model model(step);
  model.allocate(1000);
  {
    const zavotest::Refusal refusal("GlobalReAlloc", 1, zavotest::Repeat::fromThenOn);
    EXPECT_EQ(allocateRunBlock(heap, step), 0u);
    EXPECT_EQ(reallocateRunBlock(heap, block, step), 0u);
    EXPECT_FALSE(growRunHeap(heap, step));
    EXPECT_FALSE(trimRunHeap(heap));
  }
  EXPECT_EQ(allocateRunBlock(heap, 0xFFFFFFFE), 0u) << "more than 32 bits can say once rounded up";
  EXPECT_FALSE(growRunHeap(heap, 0xFFFFFFFF));
  expectSame(heap, model);
  destroyRunHeap(heap);
}

}  // namespace
