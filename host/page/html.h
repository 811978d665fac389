#ifndef RT305_HOST_PAGE_HTML_H
#define RT305_HOST_PAGE_HTML_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "output/result_table.h"

namespace rt305 {

/// Text as it stands between tags or in an attribute.
std::string escaped(std::string_view text);

/// <tag attributes>content</tag>; the content is HTML already.
std::string element(std::string_view tag, std::string_view attributes, std::string_view content);

/// A template with {{name}} replaced by the value of that name, in which nothing is replaced. Every name has a value.
std::string filled(std::string_view text, const std::map<std::string_view, std::string>& values);

/// A table of results under its caption.
std::string htmlTable(const std::string& caption, const ResultTable& table);

/// A table without heading, a name and a text in each row.
std::string htmlFacts(const std::string& caption, const std::vector<std::pair<std::string, std::string>>& facts);

}  // namespace rt305

#endif
