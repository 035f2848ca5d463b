#pragma once

#include <array>
#include <cstddef>

namespace plenar {

// A list with room for N items inside itself, so that planning and parsing a frame allocate nothing.
template <class T, size_t N>
class FixedList {
public:
    bool Full() const { return count_ == N; }
    size_t size() const { return count_; }
    bool empty() const { return count_ == 0; }

    void push_back(const T& item) { items_[count_++] = item; }  // only while not Full()

    T& operator[](size_t i) { return items_[i]; }
    const T& operator[](size_t i) const { return items_[i]; }
    T& back() { return items_[count_ - 1]; }
    const T& back() const { return items_[count_ - 1]; }

    T* begin() { return items_.data(); }
    T* end() { return items_.data() + count_; }
    const T* begin() const { return items_.data(); }
    const T* end() const { return items_.data() + count_; }

private:
    std::array<T, N> items_{};
    size_t count_ = 0;
};

}  // namespace plenar
