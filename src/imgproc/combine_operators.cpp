// One loop an operator, plain enough for the compiler to turn into vector code.
#include "imgproc/combine_operators.h"

#include <algorithm>
#include <cstring>

namespace zavo {
namespace {

void change(uint8_t* bytes, unsigned count, OperandChange how) {
  switch (how) {
    case OperandChange::none:
      return;
    case OperandChange::inverted:
      std::transform(bytes, bytes + count, bytes, [](uint8_t b) { return static_cast<uint8_t>(~b); });
      return;
    case OperandChange::zeros:
      memset(bytes, 0x00, count);
      return;
    case OperandChange::ones:
      memset(bytes, 0xFF, count);
      return;
  }
}

using ByteFunction = int (*)(int source, int destination);

template <ByteFunction function>
void forBytes(uint8_t* destination, const uint8_t* source, unsigned count) {
  for (unsigned i = 0; i < count; ++i) destination[i] = static_cast<uint8_t>(function(source[i], destination[i]));
}

constexpr int bitAnd(int s, int d) {
  return s & d;
}
constexpr int bitOr(int s, int d) {
  return s | d;
}
constexpr int bitXor(int s, int d) {
  return s ^ d;
}
constexpr int takeSource(int s, int) {
  return s;
}
constexpr int addClamped(int s, int d) {
  return std::min(s + d, 255);
}
constexpr int sourceMinus(int s, int d) {
  return std::max(s - d, 0);
}
constexpr int destinationMinus(int s, int d) {
  return std::max(d - s, 0);
}
constexpr int difference(int s, int d) {
  return s > d ? s - d : d - s;
}
constexpr int multiply(int s, int d) {
  return s * d / 255;
}
constexpr int average(int s, int d) {
  return (s + d) / 2;
}
constexpr int minimum(int s, int d) {
  return std::min(s, d);
}
constexpr int maximum(int s, int d) {
  return std::max(s, d);
}

using RowFunction = void (*)(uint8_t* destination, const uint8_t* source, unsigned count);

constexpr RowFunction rowFunctions[combineOperatorCount] = {
    forBytes<bitAnd>,     forBytes<bitOr>,       forBytes<bitXor>,           forBytes<takeSource>,
    forBytes<addClamped>, forBytes<sourceMinus>, forBytes<destinationMinus>, forBytes<difference>,
    forBytes<multiply>,   forBytes<average>,     forBytes<minimum>,          forBytes<maximum>,
};

}  // namespace

bool parseCombineOperation(CombineOperation& operation, unsigned code) {
  const unsigned source = code & 15;
  const unsigned op = code >> 4 & 15;
  const unsigned destination = code >> 8 & 15;
  const unsigned result = code >> 12;
  if (source > 3 || op >= combineOperatorCount || destination > 3 || result > 1) return false;
  operation = {.sourceChange = static_cast<OperandChange>(source),
               .op = static_cast<CombineOperator>(op),
               .destinationChange = static_cast<OperandChange>(destination),
               .invertResult = result == 1};
  return true;
}

void combineBytes(uint8_t* destination, uint8_t* source, unsigned bytes, const CombineOperation& operation,
                  uint8_t mask) {
  change(source, bytes, operation.sourceChange);
  change(destination, bytes, operation.destinationChange);
  rowFunctions[static_cast<unsigned>(operation.op)](destination, source, bytes);
  if (operation.invertResult) change(destination, bytes, OperandChange::inverted);
  if (mask != 0xFF) {
    for (unsigned i = 0; i < bytes; ++i) destination[i] = static_cast<uint8_t>(destination[i] & mask);
  }
}

}  // namespace zavo
