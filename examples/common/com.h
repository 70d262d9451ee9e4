// The little of COM that reading and writing pictures needs.
#pragma once

#include <objbase.h>
#include <string>
#include <utility>

#include "common/errors.h"

namespace zv {

/// A failed COM call, to be told with the name of the file.
struct ComError {
  HRESULT code;
};

inline void require(HRESULT result) {
  if (FAILED(result)) throw ComError{result};
}

/// Owns one reference.
template <typename Interface>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    std::swap(pointer_, other.pointer_);
    return *this;
  }
  ~ComPtr() {
    if (pointer_ != nullptr) pointer_->Release();
  }

  Interface* operator->() const { return pointer_; }
  [[nodiscard]] Interface* get() const { return pointer_; }
  /// Where a call stores the reference it makes.
  Interface** out() { return &pointer_; }

 private:
  Interface* pointer_ = nullptr;
};

}  // namespace zv
