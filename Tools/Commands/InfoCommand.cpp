// Tells the facts about all inputs; one that cannot be read is named and does not keep the others from being
// listed.

#include "Tools/Command/Messages.h"
#include "Tools/Command/Progress.h"
#include "Tools/Command/StandardOutput.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Files/PictureFacts.h"

#include <algorithm>

namespace Imaging::Tool {

namespace {

const SubcommandText infoText = {
    "info", "Tell what pictures and graphs are", "[OPTION...] INPUT...",
    R"(INPUT is a picture file of any usual format, an http, https or file URL, '-'
for standard input, or a graph that 'imaging archive' made. Of a picture only
the beginning is read, so damage further on is not noticed; of a graph
everything. The orientation is told by its EXIF number and by what has to be
done to see the picture upright. An INPUT that cannot be read is named on
standard error, and the others are listed all the same.)",
    R"(  imaging info photo.jpg
  imaging info *.jpg *.tif
  imaging info --json photo.jpg layers.graph
  imaging info https://example.com/a.png)"};

class InfoCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return infoText; }

protected:
    OptionTable options() override;
    void checkOperands() const override { requireOperands("an input"); }
    ExitStatus run() override;

private:
    bool m_json = false;
};

OptionTable InfoCommand::options() {
    return {{"--json", "", "Write a JSON array, with the errors in it too", raise(m_json)}};
}

/// The facts, or why there are none: a file that is gone is one more line of the list.
PictureFacts factsAbout(const std::string& input) {
    try {
        return factsOf(readInput(input), input);
    } catch (const Failure& failure) {
        PictureFacts facts;
        facts.name = input;
        facts.error = failure.what();
        return facts;
    }
}

ExitStatus InfoCommand::run() {
    const std::vector<std::string>& inputs = operands();
    std::vector<PictureFacts> all;
    { // the line of the progress is gone before the table appears
        Progress progress(inputs.size(), quiet());
        for (const std::string& input : inputs) {
            progress.beginStep(shownName(input));
            all.push_back(factsAbout(input));
            if (!all.back().error.empty()) report(shownName(input), all.back().error);
        }
    }
    writeStandardOutput(m_json ? jsonOf(all) : tableOf(all));
    const bool isGood =
        std::all_of(all.begin(), all.end(), [](const PictureFacts& f) { return f.error.empty(); });
    return isGood ? Done : BadInputOrOutput;
}

} // namespace

std::unique_ptr<Subcommand> makeInfoCommand() { return std::make_unique<InfoCommand>(); }

} // namespace Imaging::Tool
