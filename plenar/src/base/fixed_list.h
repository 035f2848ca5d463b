#pragma once

#include <array>
#include <cstddef>
#include <type_traits>

namespace plenar {

// A list with room for N items inside itself, so that planning and parsing a frame allocate nothing.
template <class T, size_t N>
class FixedList {
public:
    // A constant has to be whole; otherwise only items that are counted are initialised.
    constexpr FixedList() {
        if (std::is_constant_evaluated()) {
            items_ = {};
        }
    }

    constexpr bool Full() const { return count_ == N; }
    constexpr size_t size() const { return count_; }
    constexpr bool empty() const { return count_ == 0; }

    constexpr void push_back(const T& item) { items_[count_++] = item; }  // only while not Full()

    constexpr T& operator[](size_t i) { return items_[i]; }
    constexpr const T& operator[](size_t i) const { return items_[i]; }
    constexpr T& back() { return items_[count_ - 1]; }
    constexpr const T& back() const { return items_[count_ - 1]; }

    constexpr T* begin() { return items_.data(); }
    constexpr T* end() { return items_.data() + count_; }
    constexpr const T* begin() const { return items_.data(); }
    constexpr const T* end() const { return items_.data() + count_; }

private:
    std::array<T, N> items_;
    size_t count_ = 0;
};

}  // namespace plenar
