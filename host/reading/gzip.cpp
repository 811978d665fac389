#include "reading/gzip.h"

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <new>
#include <vector>

#include "base/failure.h"
#include "base/limits.h"

namespace rt305 {

namespace {

constexpr std::size_t alwaysAllowed = std::size_t{64} << 20;
constexpr std::size_t largestRatio = 200;
constexpr std::size_t blockSize = std::size_t{1} << 16;

class Inflater {
public:
    Inflater() {
        constexpr int gzipWindow = 15 + 16;  // the largest window, and the header of gzip
        if (inflateInit2(&stream_, gzipWindow) != Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Inflater() { inflateEnd(&stream_); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Decompresses one member from the start of the content, which it removes; at most `limit` bytes and a block.
    void takeMember(std::string_view& content, std::string& text, std::size_t limit, const std::string& source) {
        inflateReset(&stream_);
        std::vector<char> block(blockSize);
        int state = Z_OK;
        while (state == Z_OK && text.size() <= limit) {
            const std::size_t given = std::min<std::size_t>(content.size(), std::numeric_limits<uInt>::max());
            stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));  // zlib does not write to it
            stream_.avail_in = static_cast<uInt>(given);
            stream_.next_out = reinterpret_cast<Bytef*>(block.data());
            stream_.avail_out = static_cast<uInt>(block.size());
            state = inflate(&stream_, Z_NO_FLUSH);
            content.remove_prefix(given - stream_.avail_in);
            text.append(block.data(), block.size() - stream_.avail_out);
        }
        if (state == Z_BUF_ERROR) {
            failInput(source + ": the compressed data is incomplete");
        }
        if (state != Z_OK && state != Z_STREAM_END) {
            failInput(source + ": the compressed data is damaged");
        }
    }

private:
    z_stream stream_{};
};

}  // namespace

bool isGzip(std::string_view content) {
    return content.substr(0, 2) == "\x1F\x8B";
}

std::string decompressed(std::string_view content, const std::string& source) {
    const std::size_t limit = std::min(std::max(alwaysAllowed, largestRatio * content.size()), largestFile);
    Inflater inflater;
    std::string text;
    while (isGzip(content)) {
        inflater.takeMember(content, text, limit, source);
        if (text.size() > limit) {
            failInput(source + ": holds more than " + std::to_string(limit >> 20) + " MiB in " +
                      std::to_string(content.size()) + " compressed bytes, which no recording does");
        }
    }
    return text;
}

}  // namespace rt305
