#pragma once

#include <memory>
#include <string>

namespace Imaging {
class IMGKernel;
}

namespace Imaging::Tool {

/// The kernel of a text file: whole numbers with spaces, tabs or commas between them, a line for each row,
/// all rows equally long, two numbers a row at least; empty lines and what follows a '#' do not count. Throws
/// a Failure that names the option by which the file was given, and the line.
std::shared_ptr<Imaging::IMGKernel> kernelOfFile(const std::string& path, const std::string& option);

} // namespace Imaging::Tool
