// Puts pictures into one graph and archives it, by their names or with their bytes, and never over one of
// them.

#include "Imaging/CachedImage.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Progress.h"
#include "Tools/Commands/AllCommands.h"
#include "Tools/Files/Input.h"
#include "Tools/Files/Output.h"
#include "Tools/Pictures/Canvas.h"

#include <filesystem>
#include <map>

namespace Imaging::Tool {

using Imaging::IMGImage;
using Imaging::IMGImageFromNSImage;
using Platform::NSData;
using Platform::NSError;
using Platform::NSImage;

namespace {

const SubcommandText archiveText = {
    "archive", "Write pictures as a graph that can be drawn later", "[OPTION...] INPUT... -o GRAPH",
    R"(One picture becomes a graph of one node. Several become a node that draws them
over one another, the first one at the back. An INPUT that is a graph already
is read and written again; nodes that it shares stay shared. INPUT is a picture
file, an http, https or file URL, '-' for standard input, or a graph.

The graph names the picture files by their whole paths and does not hold them,
unless --embed is given. Pictures from URLs and standard input are always
inside. GRAPH is a keyed archive in a property list; '-' writes it to standard
output.)",
    R"(  imaging archive photo.jpg -o photo.graph
  imaging archive back.jpg front.png -o layers.graph --embed
  imaging archive layers.graph -o layers.xml --xml
  imaging archive http://example.com/a.jpg -o a.graph)"};

/// A picture that is there as encoded bytes only, so that many of them fit into memory: it is decoded again
/// for the moment in which it is archived.
class EncodedPicture : public NSImage {
public:
    explicit EncodedPicture(NSData bytes) : NSImage(Platform::NSZeroSize), m_bytes(std::move(bytes)) {}

    void encodeWithCoder(Platform::NSCoder& coder) const override {
        NSError error;
        const auto picture = Imaging::cacheable(NSImage::imageWithData(m_bytes, &error));
        if (picture == nullptr) {
            throw Platform::NSException(Platform::NSInvalidArchiveOperationException, error.message);
        }
        picture->encodeWithCoder(coder);
    }

private:
    NSData m_bytes;
};

/// A node that is archived with the bytes themselves. They are known to be a picture.
std::shared_ptr<IMGImage> embeddedPicture(NSData bytes) {
    return Imaging::imagingImage(std::make_shared<EncodedPicture>(std::move(bytes)));
}

/// A node that is archived with the file's name. Its pixels are let go of: the archive has no use for them.
std::shared_ptr<IMGImage> namedPicture(const std::string& path, const std::string& name) {
    if (!std::filesystem::is_regular_file(path)) {
        throw Failure(name, "this is no ordinary file, so it will not be there later; add --embed");
    }
    NSError error;
    const auto node = IMGImageFromNSImage::initWithContentsOfFile(path, &error);
    if (node == nullptr) throw Failure(name, error.message);
    const std::shared_ptr<NSImage> picture = node->untransformedImage()->nsImage();
    while (!picture->representations().empty())
        picture->removeRepresentation(picture->representations().back());
    return node;
}

std::string absolutePath(const std::string& path) { return std::filesystem::absolute(path).string(); }

class ArchiveCommand : public Subcommand {
public:
    const SubcommandText& text() const override { return archiveText; }

protected:
    OptionTable options() override;
    void checkOperands() const override { requireOperands("an input"); }
    ExitStatus run() override;

private:
    std::shared_ptr<IMGImage> nodeFor(const std::string& name) const;
    std::shared_ptr<IMGImage> rearchived(const std::shared_ptr<IMGImage>& root,
                                         const std::string& name) const;
    std::shared_ptr<IMGImage> pictureForFile(const std::string& path, const std::string& name) const;
    void keepPicturesSafe(const std::shared_ptr<IMGImage>& root) const;
    NSData encoded(const IMGImage& root) const;

    std::string m_output;
    bool m_embed = false;
    bool m_xml = false;
};

OptionTable ArchiveCommand::options() {
    return {{"-o,--output", "GRAPH", "The graph to write", intoOutputPath(m_output)},
            {"--embed", "",
             "Put the pictures' bytes into the graph, instead of\n"
             "their paths",
             raise(m_embed)},
            {"--xml", "", "Write XML instead of a binary property list", raise(m_xml)}};
}

std::shared_ptr<IMGImage> ArchiveCommand::pictureForFile(const std::string& path,
                                                         const std::string& name) const {
    return m_embed ? embeddedPicture(readFile(path)) : namedPicture(absolutePath(path), name);
}

/// The graph with its named pictures embedded or their paths made whole, whatever is asked for. A picture
/// that stands in several places is exchanged by the same new one in all of them.
std::shared_ptr<IMGImage> ArchiveCommand::rearchived(const std::shared_ptr<IMGImage>& root,
                                                     const std::string& name) const {
    std::map<const IMGImage*, std::shared_ptr<IMGImage>> exchanged;
    for (const std::shared_ptr<IMGImageFromNSImage>& picture : picturesOf(root)) {
        const std::optional<std::string>& path = picture->fileName();
        if (!path.has_value() || (!m_embed && path->starts_with('/'))) continue;
        exchanged[picture.get()] = pictureForFile(*path, name);
    }
    for (const std::shared_ptr<IMGImage>& node : nodesOf(root)) {
        for (std::size_t i = 0; i < node->sources().size(); ++i) {
            const auto found = exchanged.find(node->sources()[i].get());
            if (found != exchanged.end()) node->replaceSourceAtIndex(i, found->second);
        }
    }
    const auto found = exchanged.find(root.get());
    return found != exchanged.end() ? found->second : root;
}

std::shared_ptr<IMGImage> ArchiveCommand::nodeFor(const std::string& name) const {
    NSData bytes = readInput(name);
    const bool isGraph = Platform::looksLikePropertyList(bytes);
    const bool isFile = !isURL(name) && !isStandardInput(name);
    if (isFile && !isGraph && !m_embed) return namedPicture(absolutePath(name), name);
    const std::shared_ptr<IMGImage> node = nodeWithBytes(bytes, name); // says what is wrong, if anything
    if (!isGraph) return embeddedPicture(std::move(bytes));
    requirePictures(node, name);
    return rearchived(node, name);
}

/// An archive that takes the place of a picture that it names would destroy it.
void ArchiveCommand::keepPicturesSafe(const std::shared_ptr<IMGImage>& root) const {
    for (const std::shared_ptr<IMGImageFromNSImage>& picture : picturesOf(root)) {
        if (!picture->fileName().has_value() || !isSameFile(*picture->fileName(), m_output)) continue;
        throw Failure(m_output,
                      "this is a picture of the graph itself, which would be lost; choose another name");
    }
}

NSData ArchiveCommand::encoded(const IMGImage& root) const {
    using Format = Platform::NSPropertyListFormat;
    try {
        return Platform::archivedDataWithRootObject(root, m_xml ? Format::XML : Format::Binary);
    } catch (const Platform::NSException& exception) {
        throw Failure(shownPath(m_output), exception.reason());
    }
}

ExitStatus ArchiveCommand::run() {
    const std::vector<std::string>& inputs = operands();
    Progress progress(inputs.size(), quiet());
    IMGImage::Sources nodes;
    for (const std::string& input : inputs) {
        progress.beginStep(shownName(input));
        nodes.push_back(nodeFor(input));
    }
    const std::shared_ptr<IMGImage> root =
        nodes.size() == 1 ? nodes.front() : std::make_shared<IMGImage>(nodes);
    // After all of it is read and before anything is written.
    keepPicturesSafe(root);
    writeOutput(encoded(*root), m_output);
    return Done;
}

} // namespace

std::unique_ptr<Subcommand> makeArchiveCommand() { return std::make_unique<ArchiveCommand>(); }

} // namespace Imaging::Tool
