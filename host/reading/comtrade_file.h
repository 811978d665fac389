#ifndef RT305_HOST_READING_COMTRADE_FILE_H
#define RT305_HOST_READING_COMTRADE_FILE_H

#include <string>
#include <string_view>

#include "reading/comtrade_reader.h"

namespace rt305 {

/// Splits a single-file record into its sections. A section begins with a line such as
/// "--- file type: DAT BINARY: 4214 ---"; colons, trailing dashes, form and length are optional. A binary section
/// without a length extends to the end of the file. Fails when the configuration or data section is missing.
ComtradeParts splitComtradeFile(std::string_view text, const std::string& source);

/// Whether a text begins like a single-file record.
bool isComtradeFile(std::string_view text);

}  // namespace rt305

#endif
