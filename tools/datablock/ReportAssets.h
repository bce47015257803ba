#pragma once

#include <string_view>

/// The files under report/ and the plotting library, as the build put them into the binary.
namespace Tool {

extern const std::string_view reportHtml;
extern const std::string_view reportStyle;  ///< the library's style sheet and the page's
extern const std::string_view reportScript; ///< the library and the page's code

} // namespace Tool
