#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <utility>

/// Growable array of values with 32-bit counts: capacity doubles, minimum 2. 16 bytes of its own, which is
/// why tree nodes use it instead of std::vector (24). Indices are not checked. More than 2^32 - 1 items are
/// refused with std::bad_alloc.
template <class T>
class dvect {
public:
    dvect() = default;
    dvect(std::initializer_list<T> items) {
        reserve(items.size());
        for (const T& item : items)
            push_back(item);
    }
    dvect(const dvect& other) { assign(other.begin(), other.size()); }
    dvect(dvect&& other) noexcept { swap(other); }
    ~dvect() { reset(); }
    dvect& operator=(const dvect& other) {
        if (this != &other)
            assign(other.begin(), other.size());
        return *this;
    }
    dvect& operator=(dvect&& other) noexcept {
        swap(other);
        return *this;
    }
    void swap(dvect& other) noexcept {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
        std::swap(m_capacity, other.m_capacity);
    }

    size_t size() const { return m_size; }
    size_t capacity() const { return m_capacity; }
    bool empty() const { return m_size == 0; }
    T* data() { return m_data; }
    const T* data() const { return m_data; }
    T* begin() { return m_data; }
    T* end() { return m_data + m_size; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_size; }
    T& operator[](size_t i) { return m_data[i]; }
    const T& operator[](size_t i) const { return m_data[i]; }
    T& back() { return m_data[m_size - 1]; }
    const T& back() const { return m_data[m_size - 1]; }

    void push_back(T item) {
        if (m_size == m_capacity)
            Grow();
        new (m_data + m_size) T(std::move(item));
        ++m_size;
    }
    void append(const T* items, size_t count) {
        if (m_size + count > m_capacity)
            Reallocate(std::max(m_size + count, size_t(m_capacity) * 2));
        std::uninitialized_copy_n(items, count, m_data + m_size);
        m_size += uint32_t(count);
    }
    void pop_back() { m_data[--m_size].~T(); }
    /// Removes item i; later items move up, order kept.
    void erase_at(size_t i) {
        std::move(m_data + i + 1, m_data + m_size, m_data + i);
        pop_back();
    }
    void insert_at(size_t i, T item) {
        push_back(std::move(item));
        std::rotate(m_data + i, m_data + m_size - 1, m_data + m_size);
    }
    /// `items` must not lie in this array.
    void assign(const T* items, size_t count) {
        clear();
        reserve(count);
        std::uninitialized_copy_n(items, count, m_data);
        m_size = uint32_t(count);
    }
    void reserve(size_t count) {
        if (count > m_capacity)
            Reallocate(count);
    }
    void resize(size_t count) {
        reserve(count);
        while (m_size > count)
            pop_back();
        for (; m_size < count; ++m_size)
            new (m_data + m_size) T();
    }
    void shrink_to_fit() {
        if (m_size == 0)
            reset();
        else if (m_size < m_capacity)
            Reallocate(m_size);
    }
    void clear() {
        std::destroy_n(m_data, m_size);
        m_size = 0;
    }
    /// Empties the array and gives its memory back.
    void reset() {
        clear();
        std::allocator<T>().deallocate(m_data, m_capacity);
        m_data = nullptr;
        m_capacity = 0;
    }

private:
    void Grow() {
        const size_t doubled = std::max<size_t>(2, size_t(m_capacity) * 2);
        Reallocate(m_size < UINT32_MAX ? std::min<size_t>(doubled, UINT32_MAX) : doubled);
    }
    void Reallocate(size_t capacity) {
        if (capacity > UINT32_MAX)
            throw std::bad_alloc();
        T* fresh = std::allocator<T>().allocate(capacity);
        std::uninitialized_move_n(m_data, m_size, fresh);
        std::destroy_n(m_data, m_size);
        std::allocator<T>().deallocate(m_data, m_capacity);
        m_data = fresh;
        m_capacity = uint32_t(capacity);
    }

    T* m_data = nullptr;
    uint32_t m_size = 0;
    uint32_t m_capacity = 0;
};

/// Growable array of plain data (no constructors, no destructors run).
template <class T>
using podvec = dvect<T>;

/// Growable array of pointers that it does not own. `pvect<T*>`.
template <class P>
using pvect = dvect<P>;
