#ifndef RT305_HOST_READING_COMTRADE_FILE_H
#define RT305_HOST_READING_COMTRADE_FILE_H

#include <string>
#include <string_view>

#include "reading/comtrade_reader.h"

namespace rt305 {

/// Cuts a single-file record into its sections. They begin with lines such as "--- file type: DAT BINARY: 4214 ---",
/// also without the colon, the dashes behind or the form; the last binary section of unknown length ends with the text.
/// Fails when there is no configuration or no data section.
ComtradeParts cutComtradeFile(std::string_view text, const std::string& source);

/// Whether a text begins as a single-file record does.
bool isComtradeFile(std::string_view text);

}  // namespace rt305

#endif
