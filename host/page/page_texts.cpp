#include "page/page_texts.h"

#include <string_view>

#include "base/text.h"
#include "page/html.h"
#include "page/page_files.h"

namespace rt305 {

namespace {

/// A text as a string of CSS.
std::string cssString(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const bool isSpecial = c == '"' || c == '\\' || c == '<' || c == '\n';
        quoted += isSpecial ? '\\' +
                                  std::string(c == '\n'  ? "a"
                                              : c == '<' ? "3c"
                                              : c == '"' ? "22"
                                                         : "5c") +
                                  ' '
                            : std::string(1, c);
    }
    return quoted + '"';
}

}  // namespace

std::string htmlOf(const PageTexts& texts) {
    const auto paragraph = [](std::string_view attributes, const std::string& text) {
        return text.empty() ? "" : element("p", attributes, escaped(text));
    };
    std::string paragraphs = paragraph(R"(class="site")", texts.site);
    for (const std::string_view line : split(texts.note, '\n')) {
        paragraphs += paragraph("", std::string(line));
    }
    return paragraphs;
}

std::string styleFor(const std::string& title) {
    return std::string(page::style) + "@page { @top-left { content: " + cssString(title) + "; } }\n";
}

}  // namespace rt305
