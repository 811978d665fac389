#include "base/csv_field.h"

#include "base/text.h"

namespace rt305 {

std::string csvField(const std::string& text) {
    const bool isFormula = text.find_first_of("=+-@") == 0 && !parseNumber(text);
    std::string field = isFormula ? '\'' + text : text;
    if (field.find_first_of(",\"\r\n") == std::string::npos) {
        return field;
    }
    std::string quoted = "\"";
    for (const char c : field) {
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return quoted + '"';
}

}  // namespace rt305
