#ifndef RT305_HOST_PAGE_PAGE_TEXTS_H
#define RT305_HOST_PAGE_PAGE_TEXTS_H

#include <string>

namespace rt305 {

/// What the user writes on a page, below each other at its top.
struct PageTexts {
    std::string title{};  // empty: the page's own
    std::string site{};
    std::string note{};
};

/// A page: its texts in place, and HTML.
struct Page {
    PageTexts texts;               // with a title
    std::string generator;         // the programs that made it
    std::string style{};           // CSS beside that of all pages
    std::string bodyAttributes{};  // as in html
    std::string skipLink{};        // before all
    std::string facts{};           // below the texts
    std::string main;
    std::string scripts{};
    std::string scriptHashes{};  // of all of them
};

/// The page in HTML, with a policy that admits nothing but its style sheet and scripts. The title is also at the top of
/// each printed page but the first.
std::string htmlOf(const Page& page);

}  // namespace rt305

#endif
