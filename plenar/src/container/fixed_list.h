#pragma once

#include <array>
#include <cstddef>

namespace plenar {

// A list with room for N items inside itself, so that planning and parsing a frame allocate nothing.
template <class T, size_t N>
class FixedList {
public:
    bool Full() const { return count == N; }
    size_t size() const { return count; }
    bool empty() const { return count == 0; }

    void push_back(const T& item) { items[count++] = item; }  // only while not Full()

    T& operator[](size_t i) { return items[i]; }
    const T& operator[](size_t i) const { return items[i]; }
    T& back() { return items[count - 1]; }
    const T& back() const { return items[count - 1]; }

    T* begin() { return items.data(); }
    T* end() { return items.data() + count; }
    const T* begin() const { return items.data(); }
    const T* end() const { return items.data() + count; }

private:
    std::array<T, N> items{};
    size_t count = 0;
};

}  // namespace plenar
