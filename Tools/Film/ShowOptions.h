#pragma once

#include "Tools/Command/Options.h"
#include "Tools/Film/Show.h"
#include "Tools/Film/ShowSettings.h"

#include <string>
#include <vector>

namespace Imaging::Tool {

/// The options that say what a film shows, whatever becomes of it.
class ShowOptions {
public:
    ShowOptions() = default;
    ShowOptions(const ShowOptions&) = delete;
    ShowOptions& operator=(const ShowOptions&) = delete;

    /// Their table, whose values go into this object.
    OptionTable options();

    /// The film of the inputs: pictures and folders of them, which are sorted as people count unless they are
    /// to keep their order, or one show file, whose settings give way to those of the options. Files that are
    /// one of the outputs are left out. "-" stands for a show file on standard input. Pictures are not read,
    /// but folders and show files are. Throws a UsageError, and a Failure that names the input.
    Show show(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs) const;

private:
    std::vector<ShowEntry> pictures(const std::vector<std::string>& inputs,
                                    const std::vector<std::string>& outputs) const;

    ShowSettings m_given;
    bool m_keep_order = false;
};

} // namespace Imaging::Tool
