#include "toolkit/large_pages.h"

#include <sys/mman.h>

#include <cstdint>

namespace coder {

void preferLargePages(void* block, std::size_t bytes) {
    constexpr std::uintptr_t largePage = std::uintptr_t{2} << 20U;
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const std::uintptr_t first = (address + largePage - 1) / largePage * largePage;
    const std::uintptr_t last = (address + bytes) / largePage * largePage;
    if (first < last) {
        // a failure leaves small pages
        static_cast<void>(madvise(static_cast<char*>(block) + (first - address), last - first, MADV_HUGEPAGE));
    }
}

}  // namespace coder
