#include "page/page_texts.h"

#include <string_view>

#include "base/text.h"
#include "base/text_encoding.h"
#include "page/html.h"
#include "page/page_files.h"
#include "page/policy.h"

namespace rt305 {

namespace {

/// A text as a string of CSS. Bytes that are not UTF-8 become U+FFFD.
std::string cssString(const std::string& text) {
    static constexpr std::string_view special = "\"\\<\n";
    static constexpr std::string_view escapes[] = {"\\22 ", "\\5c ", "\\3c ", "\\a "};
    std::string quoted = "\"";
    for (const char c : toUtf8(text)) {
        const std::size_t place = special.find(c);
        quoted.append(place == std::string_view::npos ? std::string_view(&c, 1) : escapes[place]);
    }
    return quoted + '"';
}

/// Site and note as paragraphs.
std::string paragraphsOf(const PageTexts& texts) {
    const auto paragraph = [](std::string_view attributes, const std::string& text) {
        return text.empty() ? "" : element("p", attributes, escaped(text));
    };
    std::string paragraphs = paragraph(R"(class="site")", texts.site);
    for (const std::string_view line : split(texts.note, '\n')) {
        paragraphs += paragraph("", std::string(line));
    }
    return paragraphs;
}

}  // namespace

std::string htmlOf(const Page& parts) {
    const std::string& title = parts.texts.title;
    const std::string style =
        std::string(page::style) + "@page { @top-left { content: " + cssString(title) + "; } }\n" + parts.style;
    return filled(page::html,
                  {{"title", escaped(title)},
                   {"texts", paragraphsOf(parts.texts)},
                   {"generator", escaped(parts.generator)},
                   {"body", parts.bodyAttributes.empty() ? "" : ' ' + parts.bodyAttributes},
                   {"skip", parts.skipLink},
                   {"facts", parts.facts},
                   {"main", parts.main},
                   {"scripts", parts.scripts},
                   {"style", style},
                   {"style-hash", policyHashOf(style)},
                   {"script-policy", parts.scriptHashes.empty() ? "" : "script-src " + parts.scriptHashes + "; "}});
}

}  // namespace rt305
