#ifndef RT305_HOST_PAGE_PAGE_FILES_H
#define RT305_HOST_PAGE_PAGE_FILES_H

#include <string_view>

namespace rt305::page {

/// The files of a report, embedded by the build.
extern const std::string_view html;
extern const std::string_view index;        // the page that lists others
extern const std::string_view style;        // the style sheet of uPlot, then page.css
extern const std::string_view script;       // page.js
extern const std::string_view plotLibrary;  // the licence of uPlot, then uPlot

}  // namespace rt305::page

#endif
