#ifndef RT305_HOST_BASE_PAGES_H
#define RT305_HOST_BASE_PAGES_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace rt305 {

/// Gives the memory of a text back to the system while it is read from left to right, so that a long file and its
/// samples are not in memory together. Bytes behind the reader become 0.
class ReadText {
public:
    /// Without a text it does nothing.
    explicit ReadText(std::string* text = nullptr)
        : begin_(text == nullptr ? 0 : reinterpret_cast<std::uintptr_t>(text->data())),
          end_(text == nullptr ? 0 : begin_ + text->size()) {}

    /// Everything before this place, which may be in another text, has been read.
    void release(const char* place) {
        constexpr std::uintptr_t atOnce = std::uintptr_t{4} << 20;  // bytes; few calls, and little that is kept
        const auto to = reinterpret_cast<std::uintptr_t>(place);
        if (to < begin_ + atOnce || to > end_) {
            return;
        }
        const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        const std::uintptr_t first = (begin_ + page - 1) / page * page;
        const std::uintptr_t last = to / page * page;
        // a failure leaves the memory as it is
        static_cast<void>(madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED));
        begin_ = last;
    }

private:
    std::uintptr_t begin_;
    std::uintptr_t end_;
};

}  // namespace rt305

#endif
