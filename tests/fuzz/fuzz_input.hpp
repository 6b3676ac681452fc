#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// Reads the fuzz bytes front to back; once they run out every read is zero,
// so any input, even an empty one, gives a complete set of arguments.
class FuzzInput {
public:
    FuzzInput(const uint8_t *data, size_t size) : data_(data), size_(size) {}

    template <class T>
    T raw()
    {
        T value{};
        const size_t n = std::min(sizeof value, size_ - pos_);
        std::memcpy(&value, data_ + pos_, n);
        pos_ += n;
        return value;
    }

    // A value in low .. high, both included, from as few bytes as the span needs.
    int32_t range(int32_t low, int32_t high)
    {
        const uint64_t span = uint64_t(int64_t(high) - low) + 1;
        const uint64_t draw = span <= 256 ? raw<uint8_t>() : span <= 65536 ? raw<uint16_t>() : raw<uint32_t>();
        return int32_t(low + int64_t(draw % span));
    }

    bool flag() { return raw<uint8_t>() & 1; }

    // A finite value in -limit .. limit in steps of limit / 32768.
    double real(double limit) { return double(raw<int16_t>()) * (limit / 32768.0); }

    template <class T>
    std::vector<T> reals(size_t count, double limit)
    {
        std::vector<T> values(count);
        for (T &v : values)
            v = T(real(limit));
        return values;
    }

    size_t left() const { return size_ - pos_; }

private:
    const uint8_t *data_;
    size_t size_;
    size_t pos_ = 0;
};
