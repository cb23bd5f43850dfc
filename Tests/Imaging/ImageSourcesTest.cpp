#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace ImagingTests;

namespace {

std::shared_ptr<TestNode> plain(const std::string& name = {}) {
    auto node = std::make_shared<TestNode>();
    node->name = name;
    return node;
}

/// How often `node` is told of one change of `source`.
int tellingsOf(TestNode& node, IMGImage& source) {
    const int before = node.changes;
    source.changed();
    return node.changes - before;
}

template<class Function>
std::string exceptionName(const Function& function) {
    try {
        function();
    } catch (const NSException& exception) {
        return exception.name();
    }
    return {};
}

} // namespace

TEST(ImageSources, AreNoneForAPlainNode) {
    const IMGImage node;
    EXPECT_TRUE(node.sources().empty());
}

TEST(ImageSources, KeepTheirOrder) {
    const auto a = plain();
    const auto b = plain();
    const IMGImage node({b, a, b});
    ASSERT_EQ(node.sources().size(), 3U);
    EXPECT_EQ(node.sourceAtIndex(0), b);
    EXPECT_EQ(node.sourceAtIndex(1), a);
    EXPECT_EQ(node.sourceAtIndex(2), b);
}

TEST(ImageSources, AreOneForANodeOverOneSource) {
    const auto a = plain();
    const IMGImage node(a);
    ASSERT_EQ(node.sources().size(), 1U);
    EXPECT_EQ(node.sources()[0], a);
}

TEST(ImageSources, AreOwned) {
    auto a = plain();
    const std::weak_ptr<TestNode> seen = a;
    auto node = std::make_unique<IMGImage>(a);
    a.reset();
    EXPECT_FALSE(seen.expired());
    node.reset();
    EXPECT_TRUE(seen.expired());
}

TEST(ImageSources, AreAListOfTheNodesOwn) {
    const auto a = plain();
    IMGImage::Sources given = {a};
    IMGImage node(given);
    given.push_back(plain());
    EXPECT_EQ(node.sources().size(), 1U);
    const IMGImage::Sources& seen = node.sources();
    const auto b = plain();
    node.addSource(b);
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[1], b);
}

TEST(ImageSources, BeyondTheEndAreARangeError) {
    IMGImage node({plain(), plain()});
    EXPECT_EQ(exceptionName([&] { node.sourceAtIndex(2); }), "NSRangeException");
    EXPECT_EQ(exceptionName([&] { node.replaceSourceAtIndex(2, plain()); }), "NSRangeException");
    EXPECT_EQ(exceptionName([] { IMGImage().sourceAtIndex(0); }), "NSRangeException");
}

TEST(ImageSources, CannotBeNull) {
    EXPECT_EQ(exceptionName([] {
                  const IMGImage node(IMGImage::Sources{plain(), nullptr});
              }),
              "NSInvalidArgumentException");
    EXPECT_EQ(exceptionName([] { const IMGImage node(std::shared_ptr<IMGImage>{}); }),
              "NSInvalidArgumentException");
    const auto a = plain();
    const auto node = nodeOver({a});
    EXPECT_EQ(exceptionName([&] { node->addSource(nullptr); }), "NSInvalidArgumentException");
    EXPECT_EQ(exceptionName([&] { node->replaceSourceAtIndex(0, nullptr); }), "NSInvalidArgumentException");
    EXPECT_EQ(exceptionName([&] { node->replaceSource(a, nullptr); }), "NSInvalidArgumentException");
    EXPECT_EQ(node->sources(), IMGImage::Sources{a});
    EXPECT_EQ(node->changes, 0);
    EXPECT_EQ(tellingsOf(*node, *a), 1);
}

TEST(ImageSources, AreObservedFromTheStart) {
    const auto a = plain();
    const auto b = plain();
    const auto both = std::make_shared<TestNode>(IMGImage::Sources{a, b});
    const auto one = std::make_shared<TestNode>(a);
    EXPECT_EQ(tellingsOf(*both, *a), 1);
    EXPECT_EQ(tellingsOf(*both, *b), 1);
    EXPECT_EQ(tellingsOf(*one, *a), 1);
    EXPECT_EQ(tellingsOf(*one, *b), 0);
}

TEST(ImageSources, TellANodeOnceEvenIfItHasThemTwice) {
    const auto a = plain();
    const auto node = nodeOver({a, a});
    EXPECT_EQ(tellingsOf(*node, *a), 1);
}

TEST(AddingASource, AppendsAndObservesItWithoutAnnouncement) {
    const auto a = plain();
    const auto b = plain();
    const auto node = nodeOver({a});
    node->addSource(b);
    EXPECT_EQ(node->sources(), (IMGImage::Sources{a, b}));
    EXPECT_EQ(node->changes, 0);
    EXPECT_EQ(tellingsOf(*node, *b), 1);
    EXPECT_EQ(tellingsOf(*node, *a), 1);
}

TEST(ReplacingASourceByIndex, ExchangesItAndAnnouncesAChange) {
    const auto a = plain();
    const auto b = plain();
    const auto c = plain();
    const auto fresh = plain();
    const auto node = nodeOver({a, b, c});
    const auto parent = nodeOver({node});
    node->replaceSourceAtIndex(1, fresh);
    EXPECT_EQ(node->sources(), (IMGImage::Sources{a, fresh, c}));
    EXPECT_EQ(node->changes, 1);
    EXPECT_EQ(parent->changes, 1);
    EXPECT_EQ(fresh->changes, 0);
    EXPECT_EQ(tellingsOf(*node, *b), 0);
    EXPECT_EQ(tellingsOf(*node, *fresh), 1);
    EXPECT_EQ(tellingsOf(*node, *a), 1);
}

TEST(ReplacingASourceByIndex, HasTheNewOneInPlaceWhenTheChangeIsAnnounced) {
    struct Looking {
        IMGImage::Sources seen;
        void look(IMGImage& node) { seen = node.sources(); }
    } observer;
    const auto fresh = plain();
    const auto node = nodeOver({plain()});
    node->addImageDidChangeObserver(&observer, &Looking::look);
    node->replaceSourceAtIndex(0, fresh);
    EXPECT_EQ(observer.seen, IMGImage::Sources{fresh});
    node->removeImageDidChangeObserver(&observer);
}

TEST(ReplacingASourceByIndex, DoesNothingForTheSameNode) {
    const auto a = plain();
    const auto node = nodeOver({a});
    node->replaceSourceAtIndex(0, a);
    EXPECT_EQ(node->changes, 0);
    EXPECT_EQ(tellingsOf(*node, *a), 1);
}

TEST(ReplacingASourceByIndex, DoesNothingForAnEqualNode) {
    const auto a = plain();
    const auto twin = plain();
    a->label = twin->label = 5;
    const auto node = nodeOver({a});
    node->replaceSourceAtIndex(0, twin);
    EXPECT_EQ(node->sources()[0], a);
    EXPECT_EQ(node->changes, 0);
    EXPECT_EQ(tellingsOf(*node, *twin), 0);
    EXPECT_EQ(tellingsOf(*node, *a), 1);
}

TEST(ReplacingASourceByIndex, LetsGoOfTheOldOne) {
    auto a = plain();
    const std::weak_ptr<TestNode> seen = a;
    const auto node = nodeOver({a});
    a.reset();
    node->replaceSourceAtIndex(0, plain());
    EXPECT_TRUE(seen.expired());
}

TEST(ReplacingASourceByIndex, KeepsObservingANodeThatStaysInAnotherPlace) {
    const auto a = plain();
    const auto node = nodeOver({a, a});
    node->replaceSourceAtIndex(0, plain());
    EXPECT_EQ(tellingsOf(*node, *a), 1);
}

TEST(ReplacingASource, ExchangesOnlyTheFirstOccurrence) {
    const auto a = plain();
    const auto b = plain();
    const auto fresh = plain();
    const auto node = nodeOver({b, a, b, a});
    node->replaceSource(a, fresh);
    EXPECT_EQ(node->sources(), (IMGImage::Sources{b, fresh, b, a}));
    EXPECT_EQ(node->changes, 1);
    EXPECT_EQ(tellingsOf(*node, *fresh), 1);
    EXPECT_EQ(tellingsOf(*node, *a), 1); // still there once
}

TEST(ReplacingASource, StopsObservingTheOldOneAndLetsGoOfIt) {
    auto a = plain();
    const auto node = nodeOver({a});
    node->replaceSource(a, plain());
    EXPECT_EQ(tellingsOf(*node, *a), 0);
    EXPECT_EQ(a.use_count(), 1);
}

TEST(ReplacingASource, FindsItByEquality) {
    const auto a = plain();
    const auto twin = plain();
    a->label = twin->label = 3;
    const auto fresh = plain();
    const auto node = nodeOver({plain(), a});
    node->replaceSource(twin, fresh);
    EXPECT_EQ(node->sources()[1], fresh);
    EXPECT_EQ(tellingsOf(*node, *a), 0);
}

TEST(ReplacingASource, ByItselfAnnouncesAChange) {
    const auto a = plain();
    const auto node = nodeOver({a});
    const auto root = nodeOver({node});
    root->replaceSource(a, a);
    EXPECT_EQ(node->changes, 1);
    EXPECT_EQ(root->changes, 1);
    EXPECT_EQ(node->sources(), IMGImage::Sources{a});
    EXPECT_EQ(tellingsOf(*node, *a), 1);
}

TEST(ReplacingASource, LooksNoDeeperWhereItIsADirectSource) {
    const auto a = plain();
    const auto below = nodeOver({a});
    const auto fresh = plain();
    const auto root = nodeOver({below, a});
    root->replaceSource(a, fresh);
    EXPECT_EQ(root->sources(), (IMGImage::Sources{below, fresh}));
    EXPECT_EQ(below->sources(), IMGImage::Sources{a});
    EXPECT_EQ(below->changes, 0);
    EXPECT_EQ(root->changes, 1);
}

TEST(ReplacingASource, ReachesEverySubtreeAndIsAnnouncedThroughTheObserversAlone) {
    const auto a = plain();
    const auto fresh = plain();
    const auto left = nodeOver({plain(), a});
    const auto deeper = nodeOver({a, a});
    const auto right = nodeOver({deeper});
    const auto apart = nodeOver({plain()});
    const auto root = nodeOver({left, right, apart});
    root->replaceSource(a, fresh);
    EXPECT_EQ(left->sources()[1], fresh);
    EXPECT_EQ(deeper->sources(), (IMGImage::Sources{fresh, a}));
    EXPECT_EQ(left->changes, 1);
    EXPECT_EQ(deeper->changes, 1);
    EXPECT_EQ(right->changes, 1);
    EXPECT_EQ(apart->changes, 0);
    EXPECT_EQ(root->changes, 2); // once through each subtree, none of its own
}

TEST(ReplacingASource, ThatIsNotInTheGraphChangesNothing) {
    const auto inner = nodeOver({plain()});
    const auto root = nodeOver({inner, plain()});
    const IMGImage::Sources before = root->sources();
    root->replaceSource(plain(), plain());
    EXPECT_EQ(root->sources(), before);
    EXPECT_EQ(root->changes, 0);
    EXPECT_EQ(inner->changes, 0);
}

TEST(ReplacingASource, GoesThroughTheSourcesInOrder) {
    const auto a = plain();
    std::vector<std::string> log;
    const auto first = nodeOver({a});
    const auto second = nodeOver({a});
    const auto third = nodeOver({a});
    first->name = "first";
    second->name = "second";
    third->name = "third";
    first->log = second->log = third->log = &log;
    nodeOver({second, third, first})->replaceSource(a, plain());
    EXPECT_EQ(log, (std::vector<std::string>{"second", "third", "first"}));
}

TEST(ParentOfASource, IsTheNodeThatHasIt) {
    const auto a = plain();
    const auto inner = nodeOver({plain(), a});
    const auto root = nodeOver({plain(), inner});
    EXPECT_EQ(root->parentOfSource(*inner), root);
    EXPECT_EQ(root->parentOfSource(*a), inner);
    EXPECT_EQ(inner->parentOfSource(*a), inner);
}

TEST(ParentOfASource, IsNoneForTheRootAndForStrangers) {
    const auto root = nodeOver({plain()});
    EXPECT_EQ(root->parentOfSource(*root), nullptr);
    EXPECT_EQ(root->parentOfSource(*plain()), nullptr);
}

TEST(ParentOfASource, IsSearchedDepthFirst) {
    const auto a = plain();
    const auto deep = nodeOver({a});
    const auto first = nodeOver({plain(), deep});
    const auto second = nodeOver({a});
    EXPECT_EQ(nodeOver({first, second})->parentOfSource(*a), deep);
    EXPECT_EQ(nodeOver({second, first})->parentOfSource(*a), second);
    const auto direct = nodeOver({first, a});
    EXPECT_EQ(direct->parentOfSource(*a), direct);
}

TEST(ParentOfASource, IsFoundByEquality) {
    const auto a = plain();
    const auto twin = plain();
    a->label = twin->label = 8;
    const auto inner = nodeOver({a});
    EXPECT_EQ(nodeOver({inner})->parentOfSource(*twin), inner);
}

TEST(ImageEquality, IsIdentityByDefault) {
    const IMGImage a;
    const IMGImage b;
    EXPECT_TRUE(a.isEqual(a));
    EXPECT_FALSE(a.isEqual(b));
}

TEST(CopyOfANode, SharesTheSourcesAndObservesThem) {
    const auto a = std::make_shared<TestNode>();
    const auto b = std::make_shared<TestNode>();
    const auto original = std::make_shared<IMGImage>(IMGImage::Sources{a, b});
    const std::shared_ptr<IMGImage> copy = original->copy();
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, original);
    EXPECT_FALSE(copy->isEqual(*original));
    EXPECT_EQ(copy->sources(), (IMGImage::Sources{a, b}));

    const auto overCopy = nodeOver({copy});
    const auto overOriginal = nodeOver({original});
    EXPECT_EQ(tellingsOf(*overCopy, *a), 1);
    EXPECT_EQ(tellingsOf(*overOriginal, *a), 1);
    EXPECT_EQ(tellingsOf(*overCopy, *original), 0);
}

TEST(CopyOfANode, HasASourceListOfItsOwn) {
    const auto a = plain();
    const auto original = std::make_shared<IMGImage>(a);
    const auto copy = original->copy();
    copy->addSource(plain());
    copy->replaceSourceAtIndex(0, plain());
    EXPECT_EQ(original->sources(), IMGImage::Sources{a});
}

TEST(CopyOfANode, DoesNotTakeTheObserversAlong) {
    const auto original = std::make_shared<IMGImage>();
    const auto parent = nodeOver({original});
    EXPECT_EQ(tellingsOf(*parent, *original->copy()), 0);
}

TEST(ImageProtocolDefaults, AreAnIdentityNoResultAndSourceOverInFull) {
    IMGImage node;
    EXPECT_TRUE(Imaging::isEqualToAffineTransform(node.transform(), NSAffineTransform()));
    EXPECT_EQ(node.untransformedImage(), nullptr);
    EXPECT_EQ(node.defaultCompositingOperation(), 2);
    EXPECT_EQ(node.defaultCompositingFraction(), 1.0F);
}
