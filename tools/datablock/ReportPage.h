#pragma once

#include <travik/service/Report.h>

#include <string>

namespace Tool {

/// The page: the template with its parts in place. Nothing but its own script and style sheet may run or be loaded.
std::string reportPage(const Travik::ReportDocuments& documents, const std::string& generator);

} // namespace Tool
