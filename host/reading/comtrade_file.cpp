#include "reading/comtrade_file.h"

#include <algorithm>
#include <vector>

#include "base/failure.h"
#include "base/lines.h"
#include "base/text.h"

namespace rt305 {

namespace {

/// The heading of a section: "--- file type: DAT BINARY: 4214 ---".
struct Heading {
    std::string type;
    std::optional<SampleForm> form;
    std::optional<std::size_t> size;

    bool isBinary() const { return form && *form != SampleForm::ascii; }
};

std::optional<Heading> parseHeading(std::string_view line) {
    constexpr std::string_view words = "file type";
    constexpr std::size_t longestHeading = 80;
    std::string text = lowerCase(trimmed(line).substr(0, longestHeading));
    const std::size_t start = text.find(words);
    if (text.substr(0, 2) != "--" || start == std::string::npos) {
        return std::nullopt;
    }
    text.erase(0, start + words.size());
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == ':' || c == '-'; }, ' ');
    auto fields = split(text, ' ');
    fields.erase(std::remove(fields.begin(), fields.end(), std::string_view{}), fields.end());
    fields.resize(std::max<std::size_t>(fields.size(), 3));
    return Heading{std::string(fields[0]), findSampleForm(fields[1]), parseCount(fields[2])};
}

/// Begin and end of a heading in a text; both are the end of the text when there is none.
struct Place {
    std::size_t begin;
    std::size_t end;
    Heading heading;
};

/// Finds the first heading at or after `at`, the start of a line.
Place findHeading(std::string_view text, std::size_t at) {
    while (at < text.size()) {
        const std::size_t lineEnd = std::min(text.find('\n', at), text.size());
        const std::size_t next = std::min(lineEnd + 1, text.size());
        if (auto heading = parseHeading(text.substr(at, lineEnd - at))) {
            return {at, next, std::move(*heading)};
        }
        at = next;
    }
    return {text.size(), text.size(), {}};
}

}  // namespace

bool isComtradeFile(std::string_view text) {
    Lines lines(text);
    return lines.next() && parseHeading(lines.line());
}

ComtradeParts splitComtradeFile(std::string_view text, const std::string& source) {
    ComtradeParts parts{source, {}, source, {}, {}, {}};
    for (Place place = findHeading(text, 0); place.begin < text.size();) {
        const Heading& heading = place.heading;
        // binary samples may look like a heading, so they are not searched
        const std::size_t size = heading.isBinary() ? heading.size.value_or(text.size()) : 0;
        const std::size_t searchStart = place.end + std::min(size, text.size() - place.end);
        Place next = findHeading(text, searchStart);
        const std::string_view section = text.substr(place.end, heading.isBinary() ? size : next.begin - place.end);
        if (heading.type == "cfg") {
            parts.configuration = section;
        } else if (heading.type == "hdr") {
            parts.header = section;
        } else if (heading.type == "dat") {
            parts.data = section;
            parts.form = heading.form;
        }
        place = std::move(next);
    }
    for (const auto& [content, name] : {std::pair{parts.configuration, "CFG"}, std::pair{parts.data, "DAT"}}) {
        if (content.data() == nullptr) {
            failInput(source + ": there is no " + name + " section");
        }
    }
    return parts;
}

}  // namespace rt305
