#include "Tests/Imaging/ImagingTestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace ImagingTests;

namespace {

/// Notes the nodes that it is told of, and does what it is asked to do then.
struct Watcher {
    std::vector<const IMGImage*> told;
    std::vector<const IMGImage*> toldOtherwise;
    std::vector<const Watcher*>* order = nullptr;
    std::function<void(IMGImage&)> reaction;

    void nodeChanged(IMGImage& node) {
        told.push_back(&node);
        if (order != nullptr) order->push_back(this);
        if (reaction) reaction(node);
    }
    void nodeChangedOtherwise(IMGImage& node) { toldOtherwise.push_back(&node); }
};

void watch(IMGImage& node, Watcher& watcher) {
    node.addImageDidChangeObserver(&watcher, &Watcher::nodeChanged);
}

struct SomethingElse {
    virtual ~SomethingElse() = default;
    int state = 0;
};

/// A node whose IMGImage part does not stand at its own address.
class TwofoldNode : public SomethingElse, public IMGImage {
public:
    int tellings = 0;
    void told(IMGImage&) { ++tellings; }
};

} // namespace

TEST(ImageObservers, AreToldOfEachChangeWithTheNode) {
    IMGImage node;
    Watcher watcher;
    watch(node, watcher);
    EXPECT_TRUE(watcher.told.empty());
    node.changed();
    node.changed();
    EXPECT_EQ(watcher.told, (std::vector<const IMGImage*>{&node, &node}));
}

TEST(ImageObservers, AreToldBeforeTheChangeReturns) {
    IMGImage node;
    Watcher watcher;
    bool returned = false;
    watcher.reaction = [&](IMGImage&) { EXPECT_FALSE(returned); };
    watch(node, watcher);
    node.changed();
    returned = true;
    EXPECT_EQ(watcher.told.size(), 1U);
}

TEST(ImageObservers, HaveOneEntryWithTheLatestSelector) {
    IMGImage node;
    Watcher watcher;
    watch(node, watcher);
    watch(node, watcher);
    node.changed();
    EXPECT_EQ(watcher.told.size(), 1U);
    node.addImageDidChangeObserver(&watcher, &Watcher::nodeChangedOtherwise);
    node.changed();
    EXPECT_EQ(watcher.told.size(), 1U);
    EXPECT_EQ(watcher.toldOtherwise, std::vector<const IMGImage*>{&node});
}

TEST(ImageObservers, AreNotToldAnyMoreOnceTheyAreRemoved) {
    IMGImage node;
    Watcher watcher;
    watch(node, watcher);
    watch(node, watcher);
    node.removeImageDidChangeObserver(&watcher); // one removal for however many registrations
    node.changed();
    EXPECT_TRUE(watcher.told.empty());
    node.removeImageDidChangeObserver(&watcher);
    node.changed();
    EXPECT_TRUE(watcher.told.empty());
}

TEST(ImageObservers, AreNotDisturbedByTheRemovalOfAStranger) {
    IMGImage node;
    Watcher watcher;
    const Watcher stranger;
    watch(node, watcher);
    node.removeImageDidChangeObserver(&stranger);
    node.changed();
    EXPECT_EQ(watcher.told.size(), 1U);
}

TEST(ImageObservers, AreNotOwned) {
    IMGImage node;
    const auto watcher = std::make_shared<Watcher>();
    watch(node, *watcher);
    EXPECT_EQ(watcher.use_count(), 1);
    const auto source = std::make_shared<IMGImage>();
    auto parent = std::make_shared<IMGImage>(source);
    EXPECT_EQ(parent.use_count(), 1);
    const std::weak_ptr<IMGImage> seen = parent;
    parent.reset();
    EXPECT_TRUE(seen.expired());
    source->changed(); // and is not told any more
}

TEST(ImageObservers, AreToldInAscendingOrderOfTheirAddresses) {
    IMGImage node;
    std::array<Watcher, 5> watchers;
    std::vector<const Watcher*> order;
    for (Watcher& watcher : watchers) watcher.order = &order;
    for (const std::size_t i : {3U, 0U, 4U, 1U, 2U}) watch(node, watchers[i]);
    node.changed();
    EXPECT_EQ(order, (std::vector<const Watcher*>{&watchers[0], &watchers[1], &watchers[2], &watchers[3],
                                                  &watchers[4]}));
    order.clear();
    watch(node, watchers[2]); // a second registration does not move it
    node.changed();
    EXPECT_EQ(order[2], &watchers[2]);
}

TEST(ImageObservers, AreTheSameWhicheverOfTheirClassesRegisters) {
    IMGImage node;
    TwofoldNode observer;
    ASSERT_NE(static_cast<void*>(static_cast<IMGImage*>(&observer)), static_cast<void*>(&observer));
    node.addImageDidChangeObserver(&observer, &TwofoldNode::told);
    node.addImageDidChangeObserver(static_cast<IMGImage*>(&observer), &IMGImage::sourceDidChange);
    node.changed();
    EXPECT_EQ(observer.tellings, 0); // the later registration holds
    node.addImageDidChangeObserver(&observer, &TwofoldNode::told);
    node.changed();
    EXPECT_EQ(observer.tellings, 1);
    node.removeImageDidChangeObserver(static_cast<const IMGImage*>(&observer));
    node.changed();
    EXPECT_EQ(observer.tellings, 1);
}

TEST(ImageObservers, MayRemoveThemselvesWhileTheyAreTold) {
    IMGImage node;
    std::array<Watcher, 3> watchers;
    for (Watcher& watcher : watchers) {
        watcher.reaction = [&watcher](IMGImage& changed) { changed.removeImageDidChangeObserver(&watcher); };
        watch(node, watcher);
    }
    node.changed();
    node.changed();
    for (const Watcher& watcher : watchers) EXPECT_EQ(watcher.told.size(), 1U);
}

TEST(ImageObservers, AreNotToldWhenAnotherOneRemovedThemMeanwhile) {
    IMGImage node;
    std::array<Watcher, 4> watchers;
    watchers[1].reaction = [&](IMGImage& changed) {
        changed.removeImageDidChangeObserver(&watchers[0]);
        changed.removeImageDidChangeObserver(&watchers[2]);
    };
    for (Watcher& watcher : watchers) watch(node, watcher);
    node.changed();
    EXPECT_EQ(watchers[0].told.size(), 1U); // told before
    EXPECT_EQ(watchers[2].told.size(), 0U);
    EXPECT_EQ(watchers[3].told.size(), 1U);
}

TEST(ImageObservers, ThatAreAddedMeanwhileAreToldFromTheNextChangeOn) {
    IMGImage node;
    std::array<Watcher, 3> watchers;
    watchers[1].reaction = [&](IMGImage& changed) {
        watch(changed, watchers[0]);
        watch(changed, watchers[2]);
    };
    watch(node, watchers[1]);
    node.changed();
    EXPECT_TRUE(watchers[0].told.empty());
    EXPECT_TRUE(watchers[2].told.empty());
    node.changed();
    EXPECT_EQ(watchers[0].told.size(), 1U);
    EXPECT_EQ(watchers[2].told.size(), 1U);
}

TEST(ImageObservers, MayAllBeRemovedByTheFirst) {
    IMGImage node;
    std::array<Watcher, 9> watchers;
    watchers[0].reaction = [&](IMGImage& changed) {
        for (const Watcher& watcher : watchers) changed.removeImageDidChangeObserver(&watcher);
    };
    for (Watcher& watcher : watchers) watch(node, watcher);
    node.changed();
    EXPECT_EQ(watchers[0].told.size(), 1U);
    for (std::size_t i = 1; i < watchers.size(); ++i) EXPECT_TRUE(watchers[i].told.empty());
}

TEST(ImageObservers, MayDropTheLastOwnerOfTheNodeWhileTheyAreTold) {
    auto node = std::make_shared<IMGImage>();
    const std::weak_ptr<IMGImage> seen = node;
    std::array<Watcher, 3> watchers;
    watchers[0].reaction = [&](IMGImage&) { node.reset(); };
    for (Watcher& watcher : watchers) watch(*node, watcher);
    node->changed();
    EXPECT_TRUE(seen.expired());
    for (const Watcher& watcher : watchers) EXPECT_EQ(watcher.told.size(), 1U);
}

TEST(ImageObservers, MayDestroyAnObservingNodeThatWasToBeToldNext) {
    struct {
        Watcher first; // at the lower address, so told first
        std::optional<TestNode> second;
        Watcher third;
    } observers;
    const auto node = std::make_shared<IMGImage>();
    std::vector<std::string> log;
    observers.second.emplace(node);
    observers.second->log = &log;
    observers.first.reaction = [&](IMGImage&) { observers.second.reset(); };
    watch(*node, observers.first);
    watch(*node, observers.third);
    node->changed();
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(observers.third.told.size(), 1U);
    node->changed();
    EXPECT_EQ(observers.third.told.size(), 2U);
}

TEST(ImageObservers, MayReplaceSourcesOfTheNodeAboveWhileTheyAreTold) {
    const auto source = std::make_shared<TestNode>();
    const auto fresh = std::make_shared<TestNode>();
    const auto parent = nodeOver({source});
    Watcher watcher;
    watcher.reaction = [&](IMGImage&) { parent->replaceSource(source, fresh); };
    watch(*source, watcher);
    source->changed();
    EXPECT_EQ(parent->sources(), IMGImage::Sources{fresh});
    EXPECT_EQ(source.use_count(), 1);
}

TEST(AChange, ClimbsToEveryNodeAbove) {
    const auto bottom = std::make_shared<TestNode>();
    const auto middle = nodeOver({bottom});
    const auto top = nodeOver({middle});
    Watcher watcher;
    watch(*top, watcher);
    bottom->changed();
    EXPECT_EQ(middle->changes, 1);
    EXPECT_EQ(top->changes, 1);
    EXPECT_EQ(watcher.told, std::vector<const IMGImage*>{top.get()});
    middle->changed();
    EXPECT_EQ(bottom->changes, 1);
    EXPECT_EQ(top->changes, 2);
}

TEST(AChange, OfASourceIsAChangeOfTheNode) {
    TestNode node;
    IMGImage source;
    Watcher watcher;
    watch(node, watcher);
    node.sourceDidChange(source);
    EXPECT_EQ(node.changes, 1);
    EXPECT_EQ(watcher.told, std::vector<const IMGImage*>{&node});
}

TEST(AChange, TellsARootWithTwoPathsTwiceDepthFirst) {
    std::vector<std::string> log;
    const auto bottom = std::make_shared<TestNode>();
    std::array<std::shared_ptr<TestNode>, 2> sides = {std::make_shared<TestNode>(),
                                                      std::make_shared<TestNode>()};
    if (std::less<>()(sides[1].get(), sides[0].get())) std::swap(sides[0], sides[1]);
    // The one at the higher address registers first, which makes no difference.
    sides[1]->addSource(bottom);
    sides[0]->addSource(bottom);
    const auto root = nodeOver({sides[1], sides[0]});
    const auto above = nodeOver({root});
    const char* const names[] = {"low", "high", "root", "above"};
    const std::array<TestNode*, 4> nodes = {sides[0].get(), sides[1].get(), root.get(), above.get()};
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        nodes[i]->name = names[i];
        nodes[i]->log = &log;
    }
    bottom->changed();
    EXPECT_EQ(log, (std::vector<std::string>{"low", "root", "above", "high", "root", "above"}));
}

TEST(AChange, IsNotHeldBackBySeveralInARow) {
    const auto bottom = std::make_shared<TestNode>();
    const auto top = nodeOver({bottom});
    for (int i = 1; i <= 3; ++i) {
        bottom->changed();
        EXPECT_EQ(top->changes, i);
    }
}

TEST(AChange, DoesNotReachANodeThatIsGone) {
    const auto source = std::make_shared<TestNode>();
    const auto stays = nodeOver({source});
    std::vector<std::string> log;
    {
        const auto goes = nodeOver({source, source});
        goes->log = &log;
    }
    source->changed();
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(stays->changes, 1);
}

TEST(ImageDidChangeNotification, IsAName) {
    EXPECT_EQ(Imaging::IMGImageDidChangeNotification, "IMGImageDidChangeNotification");
}
