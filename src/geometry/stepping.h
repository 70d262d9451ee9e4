// Mapping n source items onto m destination items in whole numbers.
#pragma once

#include <cstdint>

namespace zavo {

// Walks the destination items and names the source item of each: item k takes floor(k * n / m). Quotient and
// remainder of n / m are formed once; a step is an addition or two, and nothing can overflow.
class Stepping {
 public:
  // `destinationCount` is at least 1. The walk begins at destination item `first`.
  Stepping(unsigned sourceCount, unsigned destinationCount, unsigned first = 0)
      : count_(destinationCount),
        quotient_(sourceCount / destinationCount),
        remainder_(sourceCount % destinationCount),
        position_(static_cast<unsigned>(uint64_t{first} * sourceCount / destinationCount)),
        accumulator_(static_cast<unsigned>(uint64_t{first} * sourceCount % destinationCount)) {}

  // The source item of the current destination item.
  [[nodiscard]] unsigned position() const { return position_; }

  // Goes to the next destination item; returns by how many source items that moves on.
  unsigned advance() {
    unsigned moved = quotient_;
    if (accumulator_ >= count_ - remainder_) {
      accumulator_ -= count_ - remainder_;
      ++moved;
    } else {
      accumulator_ += remainder_;
    }
    position_ += moved;
    return moved;
  }

  // Goes to the destination item before; returns by how many source items that moves back.
  unsigned retreat() {
    unsigned moved = quotient_;
    if (accumulator_ < remainder_) {
      accumulator_ += count_ - remainder_;
      ++moved;
    } else {
      accumulator_ -= remainder_;
    }
    position_ -= moved;
    return moved;
  }

 private:
  unsigned count_;
  unsigned quotient_;
  unsigned remainder_;
  unsigned position_;
  unsigned accumulator_;
};

}  // namespace zavo
