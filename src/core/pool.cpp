// SPDX-License-Identifier: Apache-2.0
// Slabs for ports and nets, the model's most numerous objects: a W1 design at
// N = 100,000 holds 4.8 M ports and 4 M nets, and a slab spares each of them
// the allocator's header and its bookkeeping on the way in and out. Objects
// are carved in allocation order, so neighbours stay neighbours, and freed
// ones are reused last-freed first.
//
// Models may live on separate threads, so each thread keeps its own free
// lists; an object freed on another thread joins that thread's list. Slabs are
// kept for reuse and never handed back, as the allocator keeps small chunks.
// Sanitizer builds use the global allocator, so that AddressSanitizer still
// sees every use after free.
#include <cstddef>
#include <mutex>
#include <new>
#include <vector>

#include "kalnet.h"
#include "kalport.h"

#if defined(__SANITIZE_ADDRESS__)
#define KALDATA_SLABS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KALDATA_SLABS 0
#endif
#endif
#ifndef KALDATA_SLABS
#define KALDATA_SLABS 1
#endif

namespace {

#if KALDATA_SLABS

struct freed {
    freed* next;
};

struct shelf {
    freed* free;
    char* cursor;
    char* end;
};

enum kind { ports, nets, kinds };

// Initial-exec: read at a fixed offset from the thread pointer instead of
// through __tls_get_addr on every allocation. It needs a few bytes of the
// static TLS reserve, which a library loaded with the program has.
thread_local shelf shelves[kinds] __attribute__((tls_model("initial-exec")));

// Every slab stays listed, so that leak checkers see it reachable.
std::vector<void*>& slabs() {
    static auto* all = new std::vector<void*>();
    return *all;
}

void restock(shelf& s, std::size_t size) {
    constexpr std::size_t bytes = (std::size_t(1) << 20) - 64;  // 1 MiB with the allocator's header
    char* slab = static_cast<char*>(::operator new(bytes));
    {
        static std::mutex lock;  // slabs are rare; the list is shared by all threads
        std::lock_guard<std::mutex> hold(lock);
        slabs().push_back(slab);
    }
    s.cursor = slab;
    s.end = slab + (bytes - bytes % size);
}

inline void* take(kind k, std::size_t size, std::size_t pooled) {
    if (size != pooled) return ::operator new(size);  // a derived class
    shelf& s = shelves[k];
    if (freed* f = s.free) {
        s.free = f->next;
        return f;
    }
    if (static_cast<std::size_t>(s.end - s.cursor) < size) restock(s, size);
    void* object = s.cursor;
    s.cursor += size;
    return object;
}

inline void give(kind k, void* object, std::size_t size, std::size_t pooled) {
    if (!object) return;
    if (size != pooled) return ::operator delete(object);
    auto* f = static_cast<freed*>(object);
    f->next = shelves[k].free;
    shelves[k].free = f;
}

#else

enum kind { ports, nets };

inline void* take(kind, std::size_t size, std::size_t) {
    return ::operator new(size);
}
inline void give(kind, void* object, std::size_t, std::size_t) {
    ::operator delete(object);
}

#endif

}  // namespace

void* kalport::operator new(std::size_t size) {
    return take(ports, size, sizeof(kalport));
}
void kalport::operator delete(void* object, std::size_t size) {
    give(ports, object, size, sizeof(kalport));
}
void* kalnet::operator new(std::size_t size) {
    return take(nets, size, sizeof(kalnet));
}
void kalnet::operator delete(void* object, std::size_t size) {
    give(nets, object, size, sizeof(kalnet));
}
