#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "bridge/owners.h"

namespace winutil {

// An ordered list in memory from malloc, which grows with its items.
template <class T>
class List {
public:
    List() noexcept = default;
    List(const List&) = delete;
    List& operator=(const List&) = delete;
    ~List() { destroyItems(); }

    // Returns false, with the list as it was, when memory is exhausted.
    [[nodiscard]] bool append(T item) noexcept {
        if (count_ == capacity_ && !grow()) {
            return false;
        }
        new (end()) T(std::move(item));
        ++count_;
        return true;
    }

    bool empty() const noexcept { return count_ == 0; }
    T* begin() const noexcept { return items_.get(); }
    T* end() const noexcept { return items_.get() + count_; }

private:
    bool grow() noexcept {
        const std::size_t capacity = capacity_ == 0 ? firstCapacity : 2 * capacity_;
        HeapMemory<T> items = allocate<T>(capacity);
        if (!items) {
            return false;
        }
        for (std::size_t i = 0; i < count_; ++i) {
            new (items.get() + i) T(std::move(begin()[i]));
        }
        destroyItems();
        items_ = std::move(items);
        capacity_ = capacity;
        return true;
    }

    void destroyItems() noexcept {
        for (T& item : *this) {
            item.~T();
        }
    }

    static constexpr std::size_t firstCapacity = 16;

    HeapMemory<T> items_;
    std::size_t count_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace winutil
