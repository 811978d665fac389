#ifndef RT305_HOST_BASE_PAGES_H
#define RT305_HOST_BASE_PAGES_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace rt305 {

/// Reserves memory for `total` elements of a text or vector that are written soon, in large pages where the system has
/// them: a long file then needs hundreds of page faults instead of tens of thousands.
template <class Sequence>
void reserveLargePages(Sequence& sequence, std::size_t total) {
    constexpr std::uintptr_t largePage = std::uintptr_t{2} << 20;
    sequence.reserve(total);
    const auto address = reinterpret_cast<std::uintptr_t>(sequence.data());
    const std::uintptr_t first = (address + largePage - 1) / largePage * largePage;
    const std::uintptr_t last = (address + total * sizeof(*sequence.data())) / largePage * largePage;
    if (first < last) {
        // a failure leaves small pages
        static_cast<void>(
            madvise(reinterpret_cast<char*>(sequence.data()) + (first - address), last - first, MADV_HUGEPAGE));
    }
}

/// Gives the memory of a text back to the system while it is read from left to right, so that a long file and its
/// samples are not in memory together. Bytes behind the reader become 0.
class ReadText {
public:
    /// Without a text it does nothing.
    explicit ReadText(std::string* text = nullptr)
        : text_(text == nullptr ? nullptr : text->data()), size_(text == nullptr ? 0 : text->size()) {}

    /// Everything before this place, which may be in another text, has been read.
    void release(const char* place) {
        constexpr std::size_t atOnce = std::size_t{4} << 20;  // bytes; few calls, and little that is kept
        const auto address = reinterpret_cast<std::uintptr_t>(text_);
        const std::size_t read = reinterpret_cast<std::uintptr_t>(place) - address;  // huge before the text
        if (read < released_ + atOnce || read > size_) {
            return;
        }
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        const std::size_t first = (address + released_ + page - 1) / page * page - address;
        const std::size_t last = (address + read) / page * page - address;
        // a failure leaves the memory as it is
        static_cast<void>(madvise(text_ + first, last - first, MADV_DONTNEED));
        released_ = last;
    }

private:
    char* text_;
    std::size_t size_;
    std::size_t released_ = 0;  // bytes from the start of the text
};

}  // namespace rt305

#endif
