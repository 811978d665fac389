#ifndef RT305_HOST_PAGE_PAGE_FILES_H
#define RT305_HOST_PAGE_PAGE_FILES_H

#include <string_view>

namespace rt305::page {

/// The files that a report is made of, embedded by the build.
extern const std::string_view html;
extern const std::string_view style;        // page.css behind the style sheet of uPlot
extern const std::string_view script;       // page.js
extern const std::string_view plotLibrary;  // uPlot behind its licence

}  // namespace rt305::page

#endif
