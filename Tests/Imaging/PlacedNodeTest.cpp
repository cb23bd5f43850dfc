#include "Imaging/PlacedNode.h"

#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace ImagingTests;

namespace {

/// A program's own node, which counts how often its transform is computed.
class Shift : public Imaging::PlacedNode {
public:
    using PlacedNode::PlacedNode;

    float right = 3;
    bool fails = false;
    mutable int computations = 0;

    std::string archiveClassName() const override { return "Shift"; }
    std::shared_ptr<IMGImage> copy() const override { return std::make_shared<Shift>(sources()); }

protected:
    NSAffineTransform computedTransform() const override {
        ++computations;
        if (fails) throwSomething(Thrown::Exception);
        return moved(right, -2);
    }
};

} // namespace

TEST(PlacedNode, ComputesItsTransformOnceUntilItChanges) {
    Shift shift(leaf(NSMakeRect(0, 0, 5, 5)));
    EXPECT_EQ(shift.computations, 0);
    EXPECT_TRUE(isTransform(shift.transform(), moved(3, -2)));
    shift.right = 8;
    EXPECT_TRUE(isTransform(shift.transform(), moved(3, -2)));
    EXPECT_EQ(shift.computations, 1);
    shift.changed();
    EXPECT_TRUE(isTransform(shift.transform(), moved(8, -2)));
    EXPECT_EQ(shift.computations, 2);
}

TEST(PlacedNode, DropsItsTransformWhenASourceChangesAndTellsItsObserversAfterwards) {
    const auto source = leaf(NSMakeRect(0, 0, 5, 5));
    const auto shift = std::make_shared<Shift>(source);
    struct Asker {
        float seen = 0;
        void told(IMGImage& node) { seen = node.transform().transformStruct().tX; }
    } asker;
    shift->addImageDidChangeObserver(&asker, &Asker::told);
    EXPECT_TRUE(isTransform(shift->transform(), moved(3, -2)));
    shift->right = 9;
    source->changed();
    EXPECT_EQ(asker.seen, 9);
    shift->removeImageDidChangeObserver(&asker);
}

TEST(PlacedNode, KeepsNothingOfAComputationThatThrows) {
    Shift shift(leaf(NSMakeRect(0, 0, 5, 5)));
    shift.fails = true;
    EXPECT_THROW(shift.transform(), NSException);
    shift.fails = false;
    EXPECT_TRUE(isTransform(shift.transform(), moved(3, -2)));
}

TEST(PlacedNode, GivesItsSourcesPictureAsItsOwn) {
    const auto picture = pictureNode(distinctPicture(4, 2));
    Shift shift(picture);
    EXPECT_EQ(shift.untransformedImage(), picture->untransformedImage());
    EXPECT_THROW(Shift().untransformedImage(), NSException);
}
