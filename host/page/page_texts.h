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

/// Site and note as paragraphs.
std::string htmlOf(const PageTexts& texts);

/// The style sheet of a page, and its title at the top of each printed page but the first.
std::string styleFor(const std::string& title);

}  // namespace rt305

#endif
