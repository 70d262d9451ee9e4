// Callers of other languages and compilers.
#include <zavo.h>

#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

#include "support/progress_log.h"
#include "support/test_bitmap.h"

extern "C" int usesHeaderFromC(void);
int usesHeaderFromCxx17();

namespace {

using namespace zavotest;

TEST(Callers, COfTheYear2011AndCxxOf2017) {
  EXPECT_EQ(usesHeaderFromC(), KSUCCESS);
  EXPECT_EQ(usesHeaderFromCxx17(), KSUCCESS);
}

using Words = std::vector<uint32_t>;

template <typename T>
uint32_t word(T* pointer) {
  return reinterpret_cast<uintptr_t>(pointer);
}

// Calls a function with the stack `offset` bytes below a multiple of 16, just before its return address is pushed.
uint32_t callWithStackAt(uint32_t offset, void* function, const Words& arguments) {
  uint32_t result = reinterpret_cast<uintptr_t>(function);
  uint32_t count = arguments.size();
  const uint32_t* first = arguments.data();
  const uint32_t padding = (0u - offset - 4 * count) % 16;
  asm volatile(
      "movl %%esp, %%esi\n\t"
      "andl $-16, %%esp\n\t"
      "subl %[padding], %%esp\n"
      "1:\n\t"
      "testl %[count], %[count]\n\t"
      "jz 2f\n\t"
      "decl %[count]\n\t"
      "pushl (%[first], %[count], 4)\n\t"
      "jmp 1b\n"
      "2:\n\t"
      "call *%%eax\n\t"
      "movl %%esi, %%esp"
      : "+a"(result), [count] "+c"(count), [first] "+d"(first)
      : [padding] "D"(padding)
      : "esi", "memory", "cc", "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "xmm7");
  return result;
}

// Where the stack was when it was called.
uint32_t WINAPI stackBefore(uint32_t, uint32_t, uint32_t) {
  return word(__builtin_frame_address(0)) + 8;  // above the saved frame and the return address
}

// Windows compilers promise 4-byte alignment of the stack, and our vector code wants 16.
TEST(Callers, AnyAlignmentOfTheStack) {
  for (const uint32_t offset : {0u, 4u, 8u, 12u}) {
    SCOPED_TRACE(offset);
    ASSERT_EQ(callWithStackAt(offset, reinterpret_cast<void*>(&stackBefore), {1, 2, 3}) % 16, offset);
    TestBitmap from(100, 20, 24);
    const ProgressLog log;
    const Words arguments = {word(static_cast<BitmapHandle*>(&from)), 0, 8, COLORRES_OPTIMISED_PALETTE, 0, 0};
    EXPECT_EQ(static_cast<int>(callWithStackAt(offset, reinterpret_cast<void*>(&Zv_ColorResBitmap), arguments)),
              KSUCCESS);
    EXPECT_FALSE(log.percents.empty()) << "it calls back on the way";
  }
}

}  // namespace
