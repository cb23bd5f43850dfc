#pragma once

#include "Show/Schedule.h"

#include <string>

/// The plan of a film for people who want to see it before it is made.
namespace Imaging::Tool {

/// A line about the film, then a table with a line for each part: when it begins, its first and last frame,
/// how long it takes, and what it shows.
std::string dryRunText(const Show& show, const Schedule& schedule);

/// The same as JSON lines: an object about the film, then one for each part. Times are in seconds, exact ones
/// of the frames; frames are counted from 1.
std::string dryRunJson(const Show& show, const Schedule& schedule);

} // namespace Imaging::Tool
