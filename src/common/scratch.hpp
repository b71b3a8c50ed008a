// The owner of a work buffer from the memory manager: taken on construction from the calling
// thread's cache, returned on every exit path. Drivers own their scratch and pass raw pointers
// down; kernels/ files never include this (its inline code would be shared across paths).
#pragma once

#include <tav/tav_memory.h>

#include <cstddef>
#include <type_traits>
#include <utility>

namespace tav {

template <class T>
class scratch {
  // The elements live in raw storage: they are written before they are read, never constructed.
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

 public:
  scratch() = default;

  // `count` elements aligned to `alignment` bytes (a power of two of 64 or more, else 64). A
  // count of 0, a byte count that overflows, or a failed allocation leave the owner empty.
  scratch(size_t count, int alignment) {
    size_t bytes = 0;
    if (count == 0 || __builtin_mul_overflow(count, sizeof(T), &bytes)) return;
    data_ = static_cast<T*>(tav_serv_allocate(bytes, alignment));
    if (data_ != nullptr) size_ = count;
  }

  scratch(scratch&& other) noexcept
      : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

  scratch& operator=(scratch&& other) noexcept {
    if (this != &other) {
      tav_serv_deallocate(data_);
      data_ = std::exchange(other.data_, nullptr);
      size_ = std::exchange(other.size_, 0);
    }
    return *this;
  }

  scratch(const scratch&) = delete;
  scratch& operator=(const scratch&) = delete;

  ~scratch() { tav_serv_deallocate(data_); }

  T* data() const { return data_; }
  size_t size() const { return size_; }
  T& operator[](size_t index) const { return data_[index]; }

  // True when the owner holds memory; test it after construction, as allocations can fail.
  explicit operator bool() const { return data_ != nullptr; }

 private:
  T* data_ = nullptr;
  size_t size_ = 0;
};

}  // namespace tav
