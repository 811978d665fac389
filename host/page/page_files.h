#ifndef RT305_HOST_PAGE_PAGE_FILES_H
#define RT305_HOST_PAGE_PAGE_FILES_H

#include <string_view>

namespace rt305::page {

/// The files of a report, embedded by the build. Without plots the script and uPlot are empty.
extern const std::string_view html;         // page.html
extern const std::string_view style;        // page.css, plots.css and the style sheet of uPlot
extern const std::string_view script;       // plots.js
extern const std::string_view plotLibrary;  // the licence of uPlot, then uPlot

}  // namespace rt305::page

#endif
