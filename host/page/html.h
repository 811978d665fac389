#ifndef RT305_HOST_PAGE_HTML_H
#define RT305_HOST_PAGE_HTML_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "output/result_table.h"

namespace rt305 {

/// Text escaped for use between tags or in an attribute. Bytes that are not UTF-8 become U+FFFD.
std::string escaped(std::string_view text);

/// <tag attributes>content</tag>; the content is HTML.
std::string element(std::string_view tag, std::string_view attributes, std::string_view content);

/// A reference to a file in the folder of the page.
std::string linkTo(std::string_view file);

/// The template with each {{name}} replaced by its value. Names inside values are not replaced. Every name must have a
/// value.
std::string filled(std::string_view text, const std::map<std::string_view, std::string>& values);

/// An element that the reader opens: a heading, and content as HTML.
std::string folded(const std::string& heading, const std::string& content);

/// A table with a caption that scrolls sideways when it is wide, by keyboard as well. The content is HTML.
std::string scrollingTable(const std::string& caption, std::string_view attributes, const std::string& content,
                           const std::string& footer = "");

/// A table of results with a caption. V, A, W, VA and var have metric prefixes.
std::string htmlTable(const std::string& caption, const ResultTable& table);

/// A table of texts; the first row is the heading.
std::string htmlTexts(const std::string& caption, const std::vector<std::vector<std::string>>& rows);

/// A table of names and texts, without heading.
std::string htmlFacts(const std::string& caption, const std::vector<std::pair<std::string, std::string>>& facts);

}  // namespace rt305

#endif
