#pragma once

#include "Tool.h"

#include <functional>
#include <ostream>

/// Many images at once, with what is written in the order of the arguments.
namespace Tool {

/// Where a command writes: standard output and standard error; within `forEachImage` of several images what is written
/// there in their turn.
std::ostream& out();
std::ostream& err();

/// Declares "--jobs": how many images are worked on at once.
void addJobsOption(CLI::App& command, unsigned int& jobs);

/// Calls the function with each image and its place in the list, several at once; it writes to `out` and `err` and
/// shares nothing. The separator stands between what two images write to standard output. The result is the worst of
/// the statuses. An image that cannot be read does not keep the others from being used. On a terminal's standard error
/// a line shows how far it is.
int forEachImage(const std::vector<std::string>& paths, unsigned int jobs,
                 const std::function<int(const Image&, std::size_t)>& function, std::string_view separator = {});

} // namespace Tool
