// small_vec.h - a vector of trivially copyable values that lives on the stack until it outgrows
// its inline capacity.
//
// The relation code unpacks coordinates and collects contact parameters on every call; most
// shapes are small, so keeping the first N values inline spares the heap on the common path.
// Past N the values move to a heap block that grows by realloc, so that a large vector grows
// without a second copy of itself (realloc of a large block remaps its pages) and without
// zeroing what it has not written yet.  Running out of memory throws std::bad_alloc (exports
// run their bodies inside xg::guarded_value).
#ifndef XGGEO_RELATE_SMALL_VEC_H
#define XGGEO_RELATE_SMALL_VEC_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

namespace xg {

template <class T, std::size_t N>
class SmallVec {
  static_assert(std::is_trivially_copyable<T>::value, "SmallVec holds plain values only");

 public:
  SmallVec() = default;
  ~SmallVec() { std::free(heap_); }
  SmallVec(const SmallVec&) = delete;
  SmallVec& operator=(const SmallVec&) = delete;

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  T* data() { return heap_ ? heap_ : inline_; }
  const T* data() const { return heap_ ? heap_ : inline_; }
  T& operator[](std::size_t i) { return data()[i]; }
  const T& operator[](std::size_t i) const { return data()[i]; }
  T* begin() { return data(); }
  T* end() { return data() + size_; }
  const T* begin() const { return data(); }
  const T* end() const { return data() + size_; }
  T& back() { return data()[size_ - 1]; }

  // Makes room for n values; pointers into the vector stay valid while size() <= n.
  void reserve(std::size_t n) {
    if (n <= capacity()) return;
    if (n > SIZE_MAX / sizeof(T)) throw std::bad_alloc();
    void* grown = heap_ ? std::realloc(heap_, n * sizeof(T)) : std::malloc(n * sizeof(T));
    if (grown == nullptr) throw std::bad_alloc();  // a failed realloc leaves heap_ as it was
    if (heap_ == nullptr && size_ > 0) std::memcpy(grown, inline_, size_ * sizeof(T));
    heap_ = static_cast<T*>(grown);
    capacity_ = n;
  }

  void push_back(T v) {  // by value: v may be one of our own elements
    if (size_ == capacity()) reserve(2 * size_);
    data()[size_++] = v;
  }

  void clear() { size_ = 0; }

  // Keeps the first n values (n <= size()).
  void truncate(std::size_t n) { size_ = n; }

 private:
  std::size_t capacity() const { return heap_ ? capacity_ : N; }

  T inline_[N];
  T* heap_ = nullptr;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;
};

}  // namespace xg

#endif  // XGGEO_RELATE_SMALL_VEC_H
