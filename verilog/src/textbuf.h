// The growing text of a netlist. A netlist of a large design is tens of
// megabytes written in pieces of a few bytes: appends here are inline, and the
// storage grows with realloc, which moves a large block by remapping its pages
// instead of copying them into fresh ones.
#ifndef KALVERILOG_TEXTBUF_H
#define KALVERILOG_TEXTBUF_H

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "compiler.h"

namespace kalverilog {
namespace detail {

class textbuf {
public:
    textbuf() = default;
    textbuf(const textbuf&) = delete;
    textbuf& operator=(const textbuf&) = delete;
    ~textbuf() { std::free(first); }

    const char* data() const { return first; }
    std::size_t size() const { return static_cast<std::size_t>(end - first); }
    bool empty() const { return end == first; }

    KALVERILOG_INLINE void append(const char* s, std::size_t n) {
        if (static_cast<std::size_t>(limit - end) < n) grow(n);
        copy(end, s, n);
        end += n;
    }
    KALVERILOG_INLINE textbuf& operator+=(const std::string& s) {
        append(s.data(), s.size());
        return *this;
    }
    KALVERILOG_INLINE textbuf& operator+=(const char* s) {
        append(s, std::strlen(s));
        return *this;
    }
    KALVERILOG_INLINE textbuf& operator+=(char c) {
        if (end == limit) grow(1);
        *end++ = c;
        return *this;
    }
    textbuf& operator+=(const textbuf& t) {
        append(t.first, t.size());
        return *this;
    }

    void number(unsigned long long n) {
        if (limit - end < 24) grow(24);
        end = std::to_chars(end, end + 24, n).ptr;
    }

    // Puts text in front of what stands at offset at.
    void insert(std::size_t at, const textbuf& t) {
        const std::size_t n = t.size(), tail = size() - at;
        if (static_cast<std::size_t>(limit - end) < n) grow(n);
        std::memmove(first + at + n, first + at, tail);
        std::memcpy(first + at, t.first, n);
        end += n;
    }

    void clear() { end = first; }

    // Drops what was appended after offset at.
    void truncate(std::size_t at) {
        if (at < size()) end = first + at;
    }

    // Gives the storage back.
    void release() {
        std::free(first);
        first = end = limit = nullptr;
    }

private:
    char* first = nullptr;
    char* end = nullptr;
    char* limit = nullptr;

    // Names are mostly short: up to 16 bytes are copied as two overlapping
    // words or halves, in place of a call.
    static KALVERILOG_INLINE void copy(char* to, const char* from, std::size_t n) {
        if (n >= 8 && n <= 16) {
            std::uint64_t a, b;
            std::memcpy(&a, from, 8);
            std::memcpy(&b, from + n - 8, 8);
            std::memcpy(to, &a, 8);
            std::memcpy(to + n - 8, &b, 8);
        } else if (n >= 4 && n < 8) {
            std::uint32_t a, b;
            std::memcpy(&a, from, 4);
            std::memcpy(&b, from + n - 4, 4);
            std::memcpy(to, &a, 4);
            std::memcpy(to + n - 4, &b, 4);
        } else if (n < 4) {
            for (std::size_t i = 0; i < n; ++i)
                to[i] = from[i];
        } else {
            std::memcpy(to, from, n);
        }
    }

    KALVERILOG_NOINLINE void grow(std::size_t n) {
        const std::size_t used = size(), capacity = static_cast<std::size_t>(limit - first);
        std::size_t want = capacity ? 2 * capacity : 4096;
        while (want - used < n)
            want *= 2;
        char* moved = static_cast<char*>(std::realloc(first, want));
        if (!moved) throw std::bad_alloc();
        first = moved;
        end = moved + used;
        limit = moved + want;
    }
};

}  // namespace detail
}  // namespace kalverilog

#endif
