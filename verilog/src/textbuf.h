// The growing text of a netlist. A netlist of a large design is tens of
// megabytes written in pieces of a few bytes: appends here are inline, and the
// storage grows with realloc, which moves a large block by remapping its pages
// instead of copying them into fresh ones.
#ifndef KALVERILOG_TEXTBUF_H
#define KALVERILOG_TEXTBUF_H

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

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

    void append(const char* s, std::size_t n) {
        if (static_cast<std::size_t>(limit - end) < n) grow(n);
        if (n) std::memcpy(end, s, n);
        end += n;
    }
    textbuf& operator+=(const std::string& s) {
        append(s.data(), s.size());
        return *this;
    }
    textbuf& operator+=(const char* s) {
        append(s, std::strlen(s));
        return *this;
    }
    textbuf& operator+=(char c) {
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

    // Gives the storage back.
    void release() {
        std::free(first);
        first = end = limit = nullptr;
    }

private:
    char* first = nullptr;
    char* end = nullptr;
    char* limit = nullptr;

    void grow(std::size_t n) {
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
