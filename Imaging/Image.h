#pragma once

#include "Imaging/Bounds.h"
#include "Imaging/DrawingTarget.h"
#include "Platform/Foundation/Coder.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/URL.h"
#include "Platform/Graphics/BitmapImageRep.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace Imaging {

using Platform::NSData;
using Platform::NSError;
using Platform::NSImageProperties;
using Platform::NSURL;

class CCImage;
class IMGImageFromNSImage;

/// Exported for clients; nothing posts a notification of this name. Changes reach observers through
/// `addImageDidChangeObserver`.
inline constexpr std::string_view IMGImageDidChangeNotification = "IMGImageDidChangeNotification";

/// A node of the image graph. It holds its sources in order, tells its observers when it changes, knows its
/// bounds under a transform, and draws itself by walking down to its sources or by drawing a rendered
/// picture of its own. This base class draws all its sources over one another, the first one first.
///
/// Nodes are held by std::shared_ptr: a node owns its sources, and observers are not owned. Every node
/// observes its sources, so that `changed` on any node reaches every node above it.
///
/// Nothing is locked: a graph is built, changed and drawn from one thread at a time, and observers are
/// called on the thread that sent `changed`.
///
/// Programs write nodes of their own as classes derived from this one, from SizedNode (a fixed size) or from
/// PlacedNode (a transform that is worth keeping). Such a class says its name in `archiveClassName`, makes
/// itself known to unarchivers with an NSArchivableClass, and overrides what it does otherwise than its base;
/// see also "What a class tells of itself".
///
/// Example:
/// @code
/// const auto background = std::make_shared<IMGImage>();
/// const auto layers = std::make_shared<IMGImage>(background);
/// const std::string words = layers->description() + " over " + layers->sourceAtIndex(0)->description();
/// @endcode
class IMAGING_EXPORT IMGImage : public Platform::NSCoding, public std::enable_shared_from_this<IMGImage> {
public:
    using Sources = std::vector<std::shared_ptr<IMGImage>>;

    /// A picture node, read from a file or URL; null and the reason when the picture cannot be read. Defined
    /// where that class is (see Imaging/PictureNode.h), so that this base knows none of its classes.
    static std::shared_ptr<IMGImageFromNSImage> imageWithContentsOfFile(const std::string& path,
                                                                        NSError* error = nullptr);
    static std::shared_ptr<IMGImageFromNSImage> imageWithContentsOfURL(const NSURL& url,
                                                                       NSError* error = nullptr);

    /// A node without sources.
    IMGImage();

    /// A node with these sources, which it observes. Throws an NSException (NSInvalidArgumentException) when
    /// one is null.
    explicit IMGImage(Sources sources);
    explicit IMGImage(std::shared_ptr<IMGImage> source);

    /// What an archive holds under "source-images". Without that key the node has no place for sources:
    /// there are none, and `addSource` adds none.
    explicit IMGImage(Platform::NSCoder& coder);

    ~IMGImage() override;
    IMGImage(const IMGImage&) = delete;
    IMGImage& operator=(const IMGImage&) = delete;

    // Sources

    /// The node's own list, not a copy: later changes show in it.
    const Sources& sources() const;

    /// Throws an NSException (NSRangeException) past the end, as `replaceSourceAtIndex` does.
    std::shared_ptr<IMGImage> sourceAtIndex(std::size_t index) const;

    /// Appends a source and observes it. `changed` is not sent. Throws like the constructor on null.
    virtual void addSource(std::shared_ptr<IMGImage> source);

    /// Puts another source in the place of one and sends `changed`. Nothing happens when the two are equal.
    virtual void replaceSourceAtIndex(std::size_t index, std::shared_ptr<IMGImage> source);

    /// Replaces a node wherever it stands in this graph: the first occurrence among this node's sources, or,
    /// when there is none, whatever the sources find in theirs. Replacing a node by itself announces a
    /// change too.
    virtual void replaceSource(const std::shared_ptr<IMGImage>& oldSource,
                               std::shared_ptr<IMGImage> newSource);

    /// The first node, depth first from this one, that has `source` among its sources; null when none has.
    std::shared_ptr<IMGImage> parentOfSource(const IMGImage& source);

    // Observers

    /// Calls a member function of `observer` with this node after each change. An observer has one entry,
    /// so a second registration replaces the first. The observer is not owned and must take itself off
    /// before it goes away. Observers are called in ascending order of their addresses.
    template<class Observer, class Base>
    void addImageDidChangeObserver(Observer* observer, void (Base::*selector)(IMGImage&)) {
        setObserver(identity(observer),
                    [observer, selector](IMGImage& node) { (observer->*selector)(node); });
    }

    /// Nothing happens for an observer without an entry.
    template<class Observer>
    void removeImageDidChangeObserver(const Observer* observer) {
        eraseObserver(identity(observer));
    }

    /// Tells every observer at once, on this thread. An observer that was removed by another one meanwhile is
    /// not called, one that was added is not called yet. Overrides drop what they keep and then call this.
    virtual void changed();

    /// What nodes register with their sources: sends `changed` to this node.
    virtual void sourceDidChange(IMGImage& source);

    // Bounds

    /// The node's extent. With one source it is that source's, with this node's transform prepended; with
    /// several the union of their bounding rectangles under this node's transform. Without sources the
    /// assertion handler is called with "[m_sources count] > 0", and the zero rectangle follows when it
    /// returns.
    virtual IMGBounds imageBounds() const;
    NSRect imageBoundsRect() const;
    NSSize imageSize() const;

    /// Where `image` (this node or one below it) lies when this node is drawn fitted into a rectangle;
    /// nullopt when it is not in this graph.
    std::optional<IMGBounds> boundsForImage(const IMGImage& image, NSRect drawRect) const;

    /// The same under a transform, which already holds this node's own. An exception from a source is
    /// swallowed and the search goes on.
    virtual std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                                    const NSAffineTransform& transform) const;

    // Drawing. Everything draws into the calling thread's current NSGraphicsContext, or with the help of a
    // drawing target where one is given. An exception from one source is swallowed and the next is drawn.

    /// Draws the node's rendered result (see `untransformedImage`) so that the bounding rectangle of its
    /// bounds lands on `rect`, stretched in each direction by itself, with the default operation and
    /// fraction. A node that renders no result of its own draws nothing this way: use the forms with
    /// `retained` false to draw a graph by walking it.
    void drawInRect(NSRect rect);
    void drawInRect(NSRect rect, bool retained);
    void drawInRect(NSRect rect, CompositingOperation operation, float fraction, bool retained,
                    IMGDrawingTarget* imageContext = nullptr);

    /// Draws by walking the graph, under a transform that acts after the node's own.
    void drawWithTransform(const NSAffineTransform& transform, CompositingOperation operation, float fraction,
                           IMGDrawingTarget* imageContext = nullptr);

    // Rendering

    /// The node as a picture: its `untransformedImage` when its transform is exactly the identity, otherwise
    /// the graph drawn into a new picture of its size. Null when that is null or when drawing fails.
    virtual std::shared_ptr<CCImage> image();

    /// The graph drawn at its size, encoded as a file of a type (Platform::NSBitmapImageFileType) with
    /// the encoder's properties. nullopt and the reason when it cannot be drawn or encoded.
    std::optional<NSData> representationUsingType(int type, const NSImageProperties& properties,
                                                  NSError* error = nullptr);

    // Identity, copies and archives

    /// Equality as the searches and replacements mean it: the same object, unless overridden.
    virtual bool isEqual(const IMGImage& other) const;

    /// The node in words, for logs: its class and address unless a class has more to tell.
    virtual std::string description() const;

    /// A node of the same class that shares this node's sources.
    virtual std::shared_ptr<IMGImage> copy() const;

    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    // What a class tells of itself, for programs that check or show graphs of whatever nodes.

    /// Whether drawing throws when there are no sources, as only nodes from archives and those that were made
    /// without any may have: such a node has to be refused before it is drawn. False here, since a node
    /// without sources draws nothing. What has to ask its source for something first overrides it.
    virtual bool needsSource() const;

    /// Whether the node's result is pixels of its own, read or computed, one point each from (0, 0), which
    /// pixel operations may take as they are: this node places, cuts and layers nothing, though one below
    /// a pixel operation may. Pictures and pixel operations say so; false here.
    virtual bool hasOwnPixels() const;

    /// What tells this node from others of its class, in words for people and in one line
    /// ("30 degrees about 50,25"; see Imaging/Words.h). Empty here: a class with values of its own that an
    /// archive keeps says them.
    virtual std::string parameterDescription() const;

    // The protocol that nodes override. `list` holds the records of the draw so far, with this node's
    // transform already in it.

    /// Maps the node's untransformed picture into the node's own space. The identity here.
    virtual NSAffineTransform transform() const;

    /// The node's rendered result without its transform; null for nodes that render none, as here.
    virtual std::shared_ptr<CCImage> untransformedImage();

    virtual Platform::NSCompositingOperation defaultCompositingOperation() const;
    virtual float defaultCompositingFraction() const;

    /// Draws every source in order, each with its own transform appended to the list.
    virtual void drawImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                           CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext);

    /// Draws one rendered picture: `image`, or else this node by the drawing target, or without a target
    /// this node's `untransformedImage`. An exception ends the call silently.
    virtual void drawRetainedImage(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                                   CompositingOperation operation, float fraction,
                                   IMGDrawingTarget* imageContext);

protected:
    /// Draws every source in order, each with its own transform appended to the list. What one of them throws
    /// ends that source alone. The first is drawn with the fraction; `nextFraction` makes that of each
    /// further one of the last, and is not asked after a source that threw. Without it all have the same.
    void drawSources(const std::shared_ptr<CCImage>& image, const TransformAndClipList& list,
                     CompositingOperation operation, float fraction, IMGDrawingTarget* imageContext,
                     const std::function<float(float)>& nextFraction = nullptr);

    /// Where a source equal to `source` first stands in this node's list; nullopt when it does not.
    std::optional<std::size_t> indexOfSource(const IMGImage& source) const;

private:
    using Callback = std::function<void(IMGImage&)>;

    /// Nodes are known by their IMGImage part, so that it does not matter through which class's pointer they
    /// register; other observers by the address that they register with.
    template<class Observer>
    static const void* identity(const Observer* observer) {
        if constexpr (std::is_base_of_v<IMGImage, Observer>) {
            return static_cast<const IMGImage*>(observer);
        } else {
            return observer;
        }
    }

    void setObserver(const void* observer, Callback callback);
    void eraseObserver(const void* observer);
    void observe(IMGImage& source);
    void exchangeSource(std::size_t index, std::shared_ptr<IMGImage> source);
    NSAffineTransform fitTransform(NSRect rect) const;

    std::unique_ptr<Sources> m_sources;
    std::map<const void*, std::shared_ptr<const Callback>, std::less<>> m_observers;
};

} // namespace Imaging
