#ifndef RT305_4_TOOLKIT_LARGE_PAGES_H
#define RT305_4_TOOLKIT_LARGE_PAGES_H

#include <cstddef>

namespace coder {

/// Asks the system for large pages, where it has them, for a block that is written soon: one page fault then serves
/// 2 MiB instead of 4 KiB. What is before the first boundary of 2 MiB and behind the last keeps small pages.
/// Not for the texts and rows of results: on a virtual machine that returns free memory to its host, new large pages
/// made them slower.
void preferLargePages(void* block, std::size_t bytes);

/// Reserves such a block for `total` elements of a text or vector.
template <class Sequence>
void reserveLargePages(Sequence& sequence, std::size_t total) {
    sequence.reserve(total);
    preferLargePages(sequence.data(), total * sizeof(*sequence.data()));
}

}  // namespace coder

#endif
