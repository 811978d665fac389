#ifndef RT305_HOST_OUTPUT_JSON_H
#define RT305_HOST_OUTPUT_JSON_H

#include <nlohmann/json.hpp>
#include <string>

#include "output/recording_facts.h"

namespace rt305 {

/// JSON with keys in the order in which they are written. The keys of all documents are in snake_case without hyphens.
using Json = nlohmann::ordered_json;

/// The text of a document with a line end, on one line or indented. Replaces what is not UTF-8, which file names may
/// contain.
std::string dumped(const Json& document, bool indented);

/// {"name": "rt305", "version": ..., "library": ...}; without a library if none was used.
Json jsonOfTool(const std::string& libraryVersion);

/// The object `recording` of a document; what is not known is null.
Json jsonOf(const RecordingFacts& facts);

}  // namespace rt305

#endif
