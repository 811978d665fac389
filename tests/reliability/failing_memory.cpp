#include "failing_memory.h"

#include <cstdlib>
#include <new>

namespace {

constexpr long never = -1;
long countdown = never;  // allocations until the one that fails
bool lasting = false;
bool hasStruck = false;
long live = 0;

bool mayAllocate() {
    if (countdown == never) {
        return true;
    }
    if (countdown > 0) {
        --countdown;
        return true;
    }
    hasStruck = true;
    countdown = lasting ? 0 : never;
    return false;
}

void* allocated(std::size_t size, std::size_t alignment) {
    const std::size_t whole = (size + alignment - 1) / alignment * alignment;
    void* const block = mayAllocate() ? std::aligned_alloc(alignment, whole == 0 ? alignment : whole) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++live;
    return block;
}

void released(void* block) noexcept {
    live -= block != nullptr ? 1 : 0;
    std::free(block);
}

}  // namespace

FailingMemory::FailingMemory(long k, Mode mode) {
    hasStruck = false;
    lasting = mode == forGood;
    countdown = k;
}
FailingMemory::~FailingMemory() {
    countdown = never;
}
bool FailingMemory::struck() const {
    return hasStruck;
}

long liveBlocks() {
    return live;
}

// The array forms too: the runtime's own would call these, a sanitizer's would not.
void* operator new(std::size_t size) {
    return allocated(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new[](std::size_t size) {
    return allocated(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocated(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocated(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    released(block);
}
void operator delete[](void* block) noexcept {
    released(block);
}
void operator delete(void* block, std::size_t) noexcept {
    released(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    released(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    released(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    released(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    released(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    released(block);
}
