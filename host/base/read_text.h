#ifndef RT305_HOST_BASE_READ_TEXT_H
#define RT305_HOST_BASE_READ_TEXT_H

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
