#ifndef RT305_HOST_OUTPUT_JSON_H
#define RT305_HOST_OUTPUT_JSON_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "output/recording_facts.h"
#include "recording/remark.h"

namespace rt305 {

/// JSON with keys in the order in which they are written. The keys of all documents are in snake_case without hyphens.
using Json = nlohmann::ordered_json;

/// The text of a document with a line end, on one line or indented. Replaces what is not UTF-8, which file names may
/// contain.
std::string dumped(const Json& document, bool indented);

/// Sets `file` to a name and, unless it is UTF-8, `file_escaped` to the form from which nameIn() has every byte.
void setName(Json& object, const std::string& name);

/// The name that setName() has set; empty if there is none.
std::string nameIn(const Json& object);

/// What every document and every line begins with, so that its figures can be traced: the objects `tool`, with the
/// version of the library unless that is empty, `recording`, where null is not known, and `options`.
Json originOf(const RecordingFacts& facts, const GivenOptions& options, const std::string& libraryVersion = "");

/// The object `options`: {"two_currents": "b", "sqrt2": true}.
Json jsonOf(const GivenOptions& options);

/// The sentences of remarks.
Json jsonOf(const std::vector<Remark>& remarks);

}  // namespace rt305

#endif
