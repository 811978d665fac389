#ifndef RT305_4_TOOLKIT_ARRAY_H
#define RT305_4_TOOLKIT_ARRAY_H

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <limits>
#include <new>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "toolkit/large_pages.h"

namespace coder {

/// Complex double. Arrays store re and im interleaved.
struct creal_T {
    double re;
    double im;

    friend constexpr creal_T operator+(creal_T a, creal_T b) { return {a.re + b.re, a.im + b.im}; }
    friend constexpr creal_T operator-(creal_T a) { return {-a.re, -a.im}; }
    friend bool operator==(creal_T a, creal_T b) = default;
};

inline creal_T times(creal_T a, creal_T b) {
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

/// Resizable column-major array of N dimensions with 32-bit extents, for trivially copyable elements.
/// One dimension is a column; a row is a two-dimensional array of one row. Memory grows geometrically and never
/// shrinks. An array either owns its elements or is a view of memory that it never frees. Elements that a resize adds
/// are undefined until the caller writes them.
template <class T, int N>
class array {
    static_assert(N == 1 || N == 2);
    static_assert(std::is_trivially_copyable_v<T>);

public:
    array() = default;

    /// A row that owns a copy of the values, with no spare capacity.
    explicit array(const std::vector<T>& values) requires(N == 2) {
        allocateExactly(checkedLength(values.size()));
        std::copy(values.begin(), values.end(), data_);
        size_[0] = 1;
        size_[1] = numel_;
    }

    /// A row that is a view of n elements; the caller owns them and keeps them alive.
    static array view(T* data, std::size_t n) requires(N == 2) {
        array row;
        row.numel_ = row.capacity_ = row.size_[1] = checkedLength(n);
        row.size_[0] = 1;
        row.data_ = data;
        return row;
    }

    array(const array& other) {
        allocateExactly(other.numel_);
        assignElements(other);
    }
    array(array&& other) noexcept { swap(other); }

    array& operator=(const array& other) {
        if (this != &other) {
            ensureCapacity(other.numel_);
            assignElements(other);
        }
        return *this;
    }
    array& operator=(array&& other) noexcept {
        swap(other);
        return *this;
    }
    ~array() { release(); }

    void set_size(int n) requires(N == 1) {
        ensureCapacity(n);
        size_[0] = n;
    }
    void set_size(int rows, int columns) requires(N == 2) {
        ensureCapacity(checkedLength(static_cast<std::uint64_t>(rows) * static_cast<std::uint64_t>(columns)));
        size_[0] = rows;
        size_[1] = columns;
    }

    /// Makes room for n elements and sets numel to n. The new capacity is the larger of the old one and 16, doubled
    /// until n fits; beyond 2^30 - 1 it is the largest 32-bit count. The first numel elements are kept.
    void ensureCapacity(int n) {
        assert(n >= 0);
        if (n > capacity_) {
            grow(n);
        }
        numel_ = n;
    }

    T* data() { return data_; }
    const T* data() const { return data_; }
    int numel() const { return numel_; }
    int capacity() const { return capacity_; }
    bool owner() const { return owner_; }
    int size(int dimension) const {
        assert(dimension >= 0 && dimension < N);
        return size_[dimension];
    }

    T& operator[](int i) {
        assert(i >= 0 && i < numel_);
        return data_[i];
    }
    const T& operator[](int i) const {
        assert(i >= 0 && i < numel_);
        return data_[i];
    }

    T* begin() { return data_; }
    T* end() { return data_ + numel_; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + numel_; }

private:
    static int checkedLength(std::uint64_t n) {
        if (n > static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
            throw std::bad_array_new_length();
        }
        return static_cast<int>(n);
    }

    void allocateExactly(int n) {
        assert(n >= 0);
        data_ = new T[static_cast<std::size_t>(n)];
        numel_ = capacity_ = n;
        owner_ = true;
    }

    void grow(int n) {
        constexpr int lastDoubled = 0x3FFFFFFF;
        int wanted = std::max(capacity_, 16);
        while (wanted < n) {
            wanted = wanted > lastDoubled ? std::numeric_limits<int>::max() : wanted * 2;
        }
        assert(wanted >= n && wanted > numel_);
        T* const block = new T[static_cast<std::size_t>(wanted)];
        preferLargePages(block, static_cast<std::size_t>(n) * sizeof(T));
        std::copy(data_, data_ + numel_, block);
        release();
        data_ = block;
        capacity_ = wanted;
        owner_ = true;
    }

    void assignElements(const array& other) {
        std::copy(other.begin(), other.end(), data_);
        std::copy(std::begin(other.size_), std::end(other.size_), size_);
    }

    void release() {
        if (owner_) {
            delete[] data_;
        }
    }

    void swap(array& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(numel_, other.numel_);
        std::swap(capacity_, other.capacity_);
        std::swap(owner_, other.owner_);
        std::swap(size_, other.size_);
    }

    T* data_ = nullptr;
    int numel_ = 0;
    int capacity_ = 0;
    bool owner_ = false;
    int size_[N] = {};
};

using samples = std::span<const double>;
using row = array<double, 2>;
using column = array<double, 1>;
using complex_row = array<creal_T, 2>;
using complex_column = array<creal_T, 1>;

}  // namespace coder

#endif
