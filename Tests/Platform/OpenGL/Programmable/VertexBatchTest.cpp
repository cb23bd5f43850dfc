#include "Platform/OpenGL/Programmable/VertexBatch.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

using namespace Imaging::Platform;
using OpenGL::Primitive;

namespace {

BatchVertex at(float x, float y, float w = 1) {
    BatchVertex vertex;
    vertex.position = {x * w, y * w, 0, w};
    return vertex;
}

/// In the window of the style.
std::array<float, 2> place(const BatchVertex& vertex, const LineStyle& style) {
    return {(vertex.position[0] / vertex.position[3] + 1) / 2 * style.viewport[0],
            (vertex.position[1] / vertex.position[3] + 1) / 2 * style.viewport[1]};
}

void expectPlace(const BatchVertex& vertex, const LineStyle& style, float x, float y) {
    EXPECT_NEAR(place(vertex, style)[0], x, 1e-4);
    EXPECT_NEAR(place(vertex, style)[1], y, 1e-4);
}

constexpr LineStyle soft{3, true, {100, 50}};
constexpr LineStyle hard{4, false, {100, 50}};
constexpr LineStyle thin{1, false, {100, 50}};

} // namespace

TEST(VertexBatch, MakesAFanOfAPolygon) {
    std::vector<BatchVertex> triangles;
    appendPolygon({at(0, 0), at(1, 0)}, triangles);
    EXPECT_TRUE(triangles.empty());
    const std::vector<BatchVertex> corners{at(0.1f, 0), at(0.2f, 0), at(0.3f, 0), at(0.4f, 0), at(0.5f, 0)};
    appendPolygon(corners, triangles);
    std::vector<float> places;
    for (const BatchVertex& vertex : triangles) places.push_back(vertex.position[0]);
    EXPECT_EQ(places, (std::vector{0.1f, 0.2f, 0.3f, 0.1f, 0.3f, 0.4f, 0.1f, 0.4f, 0.5f}));
}

TEST(VertexBatch, LeavesThinLinesToOpenGL) {
    EXPECT_EQ(kindOfLines(thin), BatchKind::ThinLines);
    EXPECT_EQ(kindOfLines(soft), BatchKind::WideLines);
    EXPECT_EQ(kindOfLines(hard), BatchKind::WideLines);
    EXPECT_EQ(kindOfLines({1, true, {9, 9}}), BatchKind::WideLines);
    std::vector<BatchVertex> batch;
    appendLines(Primitive::Lines, {at(0, 0), at(1, 0), at(0, 1), at(1, 1), at(0.5f, 0.5f)}, thin, batch);
    EXPECT_EQ(batch.size(), 4u) << "a vertex without a partner is left out";
}

TEST(VertexBatch, ClosesLoops) {
    std::vector<BatchVertex> batch;
    appendLines(Primitive::LineLoop, {at(0, 0)}, thin, batch);
    EXPECT_TRUE(batch.empty());
    appendLines(Primitive::LineLoop, {at(0, 0), at(0.5f, 0), at(0.5f, 0.25f)}, thin, batch);
    ASSERT_EQ(batch.size(), 6u);
    EXPECT_EQ(batch[4].position, at(0.5f, 0.25f).position);
    EXPECT_EQ(batch[5].position, at(0, 0).position);
}

TEST(VertexBatch, PutsHalfAPixelMoreAroundSoftLines) {
    // From (20, 10) to (60, 40) in the window: 50 long, 3 wide, along (0.8, 0.6).
    std::vector<BatchVertex> batch;
    appendLines(Primitive::Lines, {at(-0.6f, -0.6f), at(0.2f, 0.6f)}, soft, batch);
    ASSERT_EQ(batch.size(), 6u);
    expectPlace(batch[0], soft, 20 - 0.4f + 0.6f * 2, 10 - 0.3f - 0.8f * 2);
    expectPlace(batch[1], soft, 60 + 0.4f + 0.6f * 2, 40 + 0.3f - 0.8f * 2);
    expectPlace(batch[2], soft, 60 + 0.4f - 0.6f * 2, 40 + 0.3f + 0.8f * 2);
    expectPlace(batch[5], soft, 20 - 0.4f - 0.6f * 2, 10 - 0.3f + 0.8f * 2);
    EXPECT_NEAR(batch[0].edge[0], -2, 1e-5);
    EXPECT_NEAR(batch[0].edge[1], -25.5f, 1e-4);
    EXPECT_NEAR(batch[2].edge[0], 2, 1e-5);
    EXPECT_NEAR(batch[2].edge[1], 25.5f, 1e-4);
    EXPECT_NEAR(batch[2].edge[2], 2, 1e-5);
    EXPECT_NEAR(batch[2].edge[3], 25.5f, 1e-4);
    batch.clear();
    appendLines(Primitive::Lines, {at(0.3f, 0.3f), at(0.3f, 0.3f)}, soft, batch);
    EXPECT_TRUE(batch.empty()) << "a line of no length has no direction";
}

TEST(VertexBatch, WidensHardLinesUprightOrLevel) {
    std::vector<BatchVertex> batch;
    appendLines(Primitive::Lines, {at(-0.6f, -0.6f), at(0.2f, 0.6f)}, hard, batch); // 40 across, 30 up
    expectPlace(batch[0], hard, 20, 8);
    expectPlace(batch[2], hard, 60, 42);
    batch.clear();
    appendLines(Primitive::Lines, {at(-0.6f, -0.6f), at(-0.4f, 0.6f)}, hard, batch); // 10 across, 30 up
    expectPlace(batch[0], hard, 18, 10);
    expectPlace(batch[2], hard, 32, 40);
    EXPECT_EQ(batch[0].edge, BatchVertex{}.edge) << "no soft edges";
}

TEST(VertexBatch, CutsAwayWhatIsBehindTheEye) {
    std::vector<BatchVertex> batch;
    appendLines(Primitive::Lines, {at(0, 0, -1), at(0.5f, 0.5f, -2)}, soft, batch);
    EXPECT_TRUE(batch.empty());
    appendLines(Primitive::Lines, {at(0.2f, 0.2f, 1), at(0.5f, 0.5f, -1)}, soft, batch);
    ASSERT_EQ(batch.size(), 6u);
    for (const BatchVertex& vertex : batch) EXPECT_EQ(vertex.position[3], 1);
}
