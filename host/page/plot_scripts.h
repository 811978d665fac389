#ifndef RT305_HOST_PAGE_PLOT_SCRIPTS_H
#define RT305_HOST_PAGE_PLOT_SCRIPTS_H

#include <string>

namespace rt305 {

/// The elements with the data of the plots and the scripts that draw them; empty when the tool is built without plots.
std::string plotScripts(const std::string& data);

/// The sources for the page's content policy that allow these scripts alone.
std::string plotScriptHashes();

}  // namespace rt305

#endif
