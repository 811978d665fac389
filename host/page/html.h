#ifndef RT305_HOST_PAGE_HTML_H
#define RT305_HOST_PAGE_HTML_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "output/result_table.h"

namespace rt305 {

/// Text escaped for use between tags or in an attribute.
std::string escaped(std::string_view text);

/// <tag attributes>content</tag>; the content is HTML.
std::string element(std::string_view tag, std::string_view attributes, std::string_view content);

/// The template with each {{name}} replaced by its value. Names inside values are not replaced. Every name must have a
/// value.
std::string filled(std::string_view text, const std::map<std::string_view, std::string>& values);

/// A table of results with a caption.
std::string htmlTable(const std::string& caption, const ResultTable& table);

/// A table of texts; the first row is the heading.
std::string htmlTexts(const std::string& caption, const std::vector<std::vector<std::string>>& rows);

/// A table of names and texts, without heading.
std::string htmlFacts(const std::string& caption, const std::vector<std::pair<std::string, std::string>>& facts);

}  // namespace rt305

#endif
