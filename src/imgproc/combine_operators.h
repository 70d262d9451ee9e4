// The byte operations behind combining two pictures.
#pragma once

#include <cstdint>

namespace zavo {

// What becomes of an operand before the operator, by number.
enum class OperandChange { none, inverted, zeros, ones };

// By number.
enum class CombineOperator {
  bitAnd,
  bitOr,
  bitXor,
  source,
  addClamped,
  sourceMinusDestination,
  destinationMinusSource,
  absoluteDifference,
  multiply,
  average,
  minimum,
  maximum
};
constexpr unsigned combineOperatorCount = 12;

// Operators that treat bytes as levels, not as bits.
[[nodiscard]] constexpr bool isArithmetic(CombineOperator op) {
  return op > CombineOperator::source;
}

// An operation code taken apart.
struct CombineOperation {
  OperandChange sourceChange;
  CombineOperator op;
  OperandChange destinationChange;
  bool invertResult;
};

// The source goes to the destination as it is.
[[nodiscard]] constexpr bool isPlainCopy(const CombineOperation& operation) {
  return operation.op == CombineOperator::source && operation.sourceChange == OperandChange::none &&
         !operation.invertResult;
}

// False for a code that means nothing.
[[nodiscard]] bool parseCombineOperation(CombineOperation& operation, unsigned code);

// Carries an operation out on `bytes` bytes. The source bytes may be changed; the result replaces the destination
// bytes. Bits outside `mask` of a byte (the depth's index bits) come out as zero.
void combineBytes(uint8_t* destination, uint8_t* source, unsigned bytes, const CombineOperation& operation,
                  uint8_t mask);

}  // namespace zavo
