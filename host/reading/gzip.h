#ifndef RT305_HOST_READING_GZIP_H
#define RT305_HOST_READING_GZIP_H

#include <string>
#include <string_view>

namespace rt305 {

/// Whether the content of a file is compressed by gzip (RFC 1952).
bool isGzip(std::string_view content);

/// The content before compression, of all members. Fails when it is damaged or incomplete, and when it is larger than
/// 64 MiB and than 200 times the compressed size, which no recording is.
std::string decompressed(std::string_view content, const std::string& source);

}  // namespace rt305

#endif
