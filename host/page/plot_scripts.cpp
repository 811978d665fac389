#include "page/plot_scripts.h"

#include "page/html.h"
#include "page/page_files.h"
#include "page/policy.h"

namespace rt305 {

std::string plotScripts(const std::string& data) {
    return page::plotLibrary.empty()
               ? ""
               : element("script", R"(type="application/json" id="data")", data) +
                     element("script", "", page::plotLibrary) + element("script", "", page::script);
}

std::string plotScriptHashes() {
    return page::plotLibrary.empty() ? "'none'" : policyHashOf(page::plotLibrary) + " " + policyHashOf(page::script);
}

}  // namespace rt305
