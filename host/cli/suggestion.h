#ifndef RT305_HOST_CLI_SUGGESTION_H
#define RT305_HOST_CLI_SUGGESTION_H

#include <string>
#include <vector>

namespace rt305 {

/// "; did you mean NAME?" with the known name closest to a mistyped one, or nothing if none is close.
std::string suggestionFor(const std::string& word, const std::vector<std::string>& names);

}  // namespace rt305

#endif
