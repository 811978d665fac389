#ifndef RT305_HOST_PAGE_INDEX_PAGE_H
#define RT305_HOST_PAGE_INDEX_PAGE_H

#include <optional>
#include <string>

#include "output/document.h"
#include "output/summary.h"
#include "page/page_texts.h"
#include "quality/results.h"

namespace rt305 {

/// The row of a recording in the index, with a link to its page. `remark` is the first one on the page.
std::string indexRow(const std::string& pageName, const std::string& file, const ResultDocument& document,
                     const std::vector<SummaryRow>& summary, const std::optional<QualityResults>& quality,
                     const std::string& remark);

/// The row of a file that has no page.
std::string indexRowOfFailure(const std::string& file, const std::string& reason);

/// The index of several pages, one row each.
std::string indexPage(const std::string& rows, const PageTexts& texts);

}  // namespace rt305

#endif
