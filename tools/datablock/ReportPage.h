#pragma once

#include <travik/service/Report.h>

#include <string>

namespace Tool {

/// The page: the template with its parts in place. Nothing but its own script and style sheet may run or be loaded.
/// A document of a block is empty once the page has it: so many texts are not held twice.
std::string reportPage(Travik::ReportDocuments& documents, const std::string& generator);

} // namespace Tool
