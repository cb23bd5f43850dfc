// Runs what the documents and the help tell people to type, in a folder with pictures of the names that they
// use. A new example is found by itself; one that needs a picture of a certain size says so in `sizeOf`.

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

using namespace TestSupport;

namespace {

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::filesystem::path> documents() {
    const std::filesystem::path source = IMAGING_SOURCE_FOLDER;
    std::vector<std::filesystem::path> all = {source / "README.md"};
    for (const auto& entry : std::filesystem::directory_iterator(source / "docs")) {
        if (entry.path().extension() == ".md") all.push_back(entry.path());
    }
    std::sort(all.begin() + 1, all.end());
    return all;
}

/// What stands between fences that name a language.
std::vector<std::string> fencedBlocks(const std::string& text, const std::string& language) {
    std::vector<std::string> blocks;
    const std::string opening = "```" + language + "\n";
    for (std::size_t at = text.find(opening); at != std::string::npos; at = text.find(opening, at)) {
        at += opening.size();
        const std::size_t end = text.find("\n```", at);
        blocks.push_back(text.substr(at, end + 1 - at));
        at = end;
    }
    return blocks;
}

/// The lines that run the command, indented or not, with those that end in a backslash continued.
std::vector<std::string> commandsIn(const std::string& text) {
    std::vector<std::string> commands;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        line.erase(0, line.find_first_not_of(' '));
        if (!line.starts_with("imaging ")) continue;
        for (std::string next; line.ends_with('\\') && std::getline(lines, next);)
            line = line.substr(0, line.size() - 1) + next;
        commands.push_back(line);
    }
    return commands;
}

/// The commands of a document: in fences for the shell, and in paragraphs that are indented.
std::vector<std::string> commandsOf(const std::string& document) {
    std::vector<std::string> commands;
    for (const std::string& block : fencedBlocks(document, "sh")) {
        for (std::string& command : commandsIn(block)) commands.push_back(std::move(command));
    }
    std::istringstream lines(document);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("    imaging ")) commands.push_back(line.substr(4));
    }
    return commands;
}

std::string examplesOf(const std::string& subcommand) {
    const std::string help = run(subcommand.empty() ? std::vector<std::string>{"--help"}
                                                    : std::vector<std::string>{subcommand, "--help"})
                                 .out;
    return help.substr(help.find("\nExamples:\n"));
}

/// The size that the examples need a picture of a name to have.
std::pair<int, int> sizeOf(const std::string& name) {
    static const std::map<std::string, std::pair<int, int>> sizes = {{"vignette.png", {800, 600}},
                                                                     {"IMG_0042.jpg", {3900, 2300}}};
    const auto found = sizes.find(std::filesystem::path(name).filename());
    return found != sizes.end() ? found->second : std::pair(96, 64);
}

bool isPictureName(const std::string& word) {
    const auto suffix = std::filesystem::path(word).extension();
    return suffix == ".jpg" || suffix == ".png" || suffix == ".tif";
}

/// A folder in which examples are run, with a home in it.
class Workshop {
public:
    Workshop() {
        // The command itself, and programs that take what is piped into them.
        std::filesystem::create_directories(m_folder.path("bin"));
        std::filesystem::create_symlink(IMAGING_COMMAND, m_folder.path("bin/imaging"));
        for (const std::string program : {"dot", "another-program"}) {
            m_folder.write("bin/" + program, "#!/bin/sh\nexec cat\n");
            std::filesystem::permissions(m_folder.path("bin/" + program), std::filesystem::perms::owner_all);
        }
        for (int i = 1; i <= 6; ++i) provide("work/Pictures/" + std::to_string(i) + ".jpg");
        provide("work/a.jpg");
        provide("work/b.tif");
    }

    /// Makes a picture, unless there is such a file.
    void provide(const std::string& name) {
        const std::filesystem::path path = m_folder.path(name);
        if (std::filesystem::exists(path)) return;
        std::filesystem::create_directories(path.parent_path());
        const auto [width, height] = sizeOf(name);
        Picture picture(width, height, Pixel{90, 140, 200});
        for (int x = 0; x < width; ++x) picture.at(x, x % height) = red;
        m_folder.write(name, path.extension() == ".jpg" ? jpegOf(picture) : pngOf(picture));
    }

    void write(const std::string& name, const std::string& content) {
        m_folder.write("work/" + name, content);
    }

    /// Makes the files that a command reads.
    void provideInputs(const std::string& command) {
        std::istringstream words(command);
        std::string before;
        for (std::string word; words >> word && word != "|" && word != "#"; before = word) {
            if (before == "-o" || before == ">" || before == "--contact-sheet") continue;
            if (word.find_first_of("*:") != std::string::npos) continue;
            if (isPictureName(word)) provide("work/" + word);
            if (word.ends_with(".graph") && !std::filesystem::exists(m_folder.path("work/" + word))) {
                EXPECT_EQ(shell("imaging archive a.jpg b.tif -o " + word).err, "");
            }
        }
    }

    Result shell(const std::string& command) {
        const std::string path = m_folder.path("bin") + ":" + std::getenv("PATH");
        const Surroundings here{.program = "bash",
                                .folder = m_folder.path("work"),
                                .environment = {{"PATH", path}, {"HOME", m_folder.path("work")}}};
        return run({"-c", "set -o pipefail; " + command}, here);
    }

private:
    TemporaryFolder m_folder;
};

/// The same command for a film that is made in no time: what is said last counts, and all before it is
/// checked too. A part of a film needs a film that is long enough.
std::string hastened(std::string command) {
    if (!command.starts_with("imaging show")) return command;
    const bool isPart = command.find("--frames") != std::string::npos;
    const std::string faster = isPart ? " --size 64x36" : " --size 64x36 --hold 0.04 --duration 0.04";
    const std::size_t end = std::min({command.find(" |"), command.find(" #"), command.size()});
    return command.insert(end, faster);
}

void expectToRun(Workshop& workshop, const std::string& command) {
    SCOPED_TRACE(command);
    if (command.find("http://") != std::string::npos || command.find("https://") != std::string::npos) return;
    workshop.provideInputs(command);
    const Result result = workshop.shell(hastened(command));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
}

/// All file names in a show file.
void provideShowFile(Workshop& workshop, const std::string& text) {
    const auto show = nlohmann::json::parse(text);
    for (const auto& picture : show["pictures"])
        workshop.provide("work/" + (picture.is_string() ? picture : picture["file"]).get<std::string>());
    workshop.write("holidays.json", text);
}

/// The show files of all documents.
std::vector<std::string> showFiles() {
    std::vector<std::string> all;
    for (const auto& document : documents()) {
        for (const std::string& block : fencedBlocks(contentOf(document), "json")) {
            if (block.find("\"pictures\": [") != std::string::npos) all.push_back(block);
        }
    }
    return all;
}

} // namespace

TEST(DocumentExamples, EveryCommandOfADocumentRuns) {
    std::size_t count = 0;
    for (const auto& document : documents()) {
        SCOPED_TRACE(document.filename().string());
        Workshop workshop;
        provideShowFile(workshop, showFiles().at(0));
        for (const std::string& command : commandsOf(contentOf(document))) {
            expectToRun(workshop, command);
            ++count;
        }
    }
    EXPECT_GE(count, 13U) << "the documents are not read as they are written";
}

TEST(DocumentExamples, EveryCommandOfAHelpRuns) {
    for (const std::string subcommand :
         {"", "info", "draw", "apply", "graph", "archive", "sheet", "show", "transition", "transitions"}) {
        Workshop workshop;
        provideShowFile(workshop, showFiles().at(0));
        const std::vector<std::string> commands = commandsIn(examplesOf(subcommand));
        EXPECT_GE(commands.size(), 2U) << subcommand;
        for (const std::string& command : commands) expectToRun(workshop, command);
    }
}

TEST(DocumentExamples, EveryShowFileMakesAFilmWithAllItsOperations) {
    const std::vector<std::string> files = showFiles();
    ASSERT_FALSE(files.empty());
    for (const std::string& text : files) {
        Workshop workshop;
        provideShowFile(workshop, text);
        const Result result =
            workshop.shell("imaging show holidays.json -o - --format raw --size 64x36 | wc -c");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_GT(std::stoll(result.out), 100LL * 64 * 36 * 4) << "more than a hundred frames";
    }
}
