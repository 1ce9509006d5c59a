#pragma once

#include "common/core/RuntimeError.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kesta {

// A fixed array with the bounds Lo..Hi inclusive, as the program's lists are
// declared. Access outside the bounds raises "Subscript out of range"
// (error 9) instead of touching memory it does not own.
template <typename T, std::int64_t Lo, std::int64_t Hi>
class FixedArray {
    static_assert(Lo <= Hi);

public:
    static constexpr std::int64_t lowerBound = Lo;
    static constexpr std::int64_t upperBound = Hi;
    static constexpr std::size_t slotCount = static_cast<std::size_t>(Hi - Lo + 1);

    T& operator[](std::int64_t index) { return items_[offset(index)]; }
    const T& operator[](std::int64_t index) const { return items_[offset(index)]; }

    // Sets every slot back to its empty value.
    void erase() { items_.fill(T{}); }

    static constexpr bool inBounds(std::int64_t index) { return index >= Lo && index <= Hi; }

private:
    static std::size_t offset(std::int64_t index)
    {
        if (!inBounds(index))
            throw err::make(err::SubscriptOutOfRange);
        return static_cast<std::size_t>(index - Lo);
    }

    std::array<T, slotCount> items_{};
};

} // namespace kesta
