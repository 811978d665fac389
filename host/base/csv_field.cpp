#include "base/csv_field.h"

#include "base/text.h"

namespace rt305 {

std::string csvField(const std::string& text) {
    const bool isFormula = std::string_view("=+-@").find(text[0]) != std::string_view::npos && !parseNumber(text);
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
