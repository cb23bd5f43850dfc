// Operands are cut to what they have in common, laid on a grid and clipped there by libpolyclipping;
// rectangles and convex shapes are cut against each other without it. What went in comes out as it was
// wherever it can.

#include "Platform/Clipper/PolygonClipper.h"

#include "Platform/Clipper/Contours/ContourCutting.h"
#include "Platform/Clipper/Contours/ContourGrid.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Pixels/PixelBuffer.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <exception>
#include <limits>
#include <new>
#include <optional>
#include <utility>

namespace Imaging::Platform {

using Clipping::Box;
using Clipping::Contour;
using Clipping::ContourGrid;
using Clipping::Contours;

namespace {

/// Up to here areas of polygons are finite doubles.
constexpr double largestCoordinate = 1e150;

/// How much more than the common box is kept of an operand on every side, in parts of the box: so far from
/// what they have in common, the edges along which it is cut off take no part in the result.
constexpr double margin = 0.25;

template<class Item>
Item* resized(Item* items, std::size_t count) {
    const std::optional<std::uint64_t> size = checkedProduct({count, sizeof(Item)});
    if (!size.has_value() || *size > std::numeric_limits<std::size_t>::max()) throw std::bad_alloc();
    void* const memory = std::realloc(items, static_cast<std::size_t>(*size));
    if (memory == nullptr) throw std::bad_alloc();
    return static_cast<Item*>(memory);
}

int checkedCount(std::size_t count) {
    if (count > static_cast<std::size_t>(std::numeric_limits<int>::max())) throw std::bad_alloc();
    return static_cast<int>(count);
}

/// The places for one more contour; the polygon is as it was, though its arrays may have moved.
void makeRoom(gpc_polygon& polygon) {
    if (polygon.num_contours == std::numeric_limits<int>::max()) throw std::bad_alloc();
    const auto count = static_cast<std::size_t>(polygon.num_contours) + 1;
    polygon.hole = resized(polygon.hole, count);
    polygon.contour = resized(polygon.contour, count);
}

Contours contoursOf(const gpc_polygon& polygon) {
    Contours contours;
    for (int i = 0; i < polygon.num_contours; ++i) {
        const gpc_vertex_list& list = polygon.contour[i];
        if (list.num_vertices < 3) continue;
        contours.emplace_back(list.vertex, list.vertex + list.num_vertices);
    }
    return contours;
}

/// Also false where a coordinate is not a number.
bool areInRange(const Contours& contours) {
    const auto isInRange = [](const gpc_vertex& v) {
        return std::fabs(v.x) <= largestCoordinate && std::fabs(v.y) <= largestCoordinate;
    };
    return std::all_of(contours.begin(), contours.end(), [&](const Contour& contour) {
        return std::all_of(contour.begin(), contour.end(), isInRange);
    });
}

/// Leaves out vertices that repeat the one before them.
Contour withoutRepetitions(Contour contour) {
    const auto isSame = [](const gpc_vertex& a, const gpc_vertex& b) { return a.x == b.x && a.y == b.y; };
    contour.erase(std::unique(contour.begin(), contour.end(), isSame), contour.end());
    while (contour.size() > 1 && isSame(contour.front(), contour.back())) contour.pop_back();
    return contour;
}

Contours rectangle(const Box& box) {
    if (!box.hasArea()) return {};
    return {{box.low, {box.high.x, box.low.y}, box.high, {box.low.x, box.high.y}}};
}

Contours convexInBox(const Contour& convex, const Box& box) {
    Contour common = withoutRepetitions(Clipping::cutToBox(convex, box));
    const double area = Clipping::signedArea(common);
    if (area < 0) std::reverse(common.begin(), common.end());
    return area != 0 ? Contours{std::move(common)} : Contours{};
}

/// A rectangle's intersection with another or with something convex, which no rounding to a grid need touch;
/// nothing where the operands are not such a pair.
std::optional<Contours> simpleIntersection(const Contours& subject, const Contours& clip) {
    if (subject.size() != 1 || clip.size() != 1) return std::nullopt;
    const std::optional<Box> subjectBox = Clipping::asRectangle(subject.front());
    const std::optional<Box> clipBox = Clipping::asRectangle(clip.front());
    if (subjectBox.has_value() && clipBox.has_value()) return rectangle(subjectBox->common(*clipBox));
    if (clipBox.has_value() && Clipping::isConvexTriangleOrQuadrilateral(subject.front())) {
        return convexInBox(subject.front(), *clipBox);
    }
    if (subjectBox.has_value() && Clipping::isConvexTriangleOrQuadrilateral(clip.front())) {
        return convexInBox(clip.front(), *subjectBox);
    }
    return std::nullopt;
}

ClipperLib::ClipType clipType(gpc_op operation) {
    switch (operation) {
    case GPC_DIFF:
        return ClipperLib::ctDifference;
    case GPC_INT:
        return ClipperLib::ctIntersection;
    case GPC_XOR:
        return ClipperLib::ctXor;
    case GPC_UNION:
        break;
    }
    return ClipperLib::ctUnion;
}

ClipperLib::Paths clippedPaths(gpc_op operation, const ClipperLib::Paths& subject,
                               const ClipperLib::Paths& clip) {
    ClipperLib::Paths solution;
    bool succeeded = false;
    try {
        ClipperLib::Clipper clipper;
        const bool isSubjectEmpty = !clipper.AddPaths(subject, ClipperLib::ptSubject, true);
        const bool isClipEmpty = !clipper.AddPaths(clip, ClipperLib::ptClip, true);
        // The library fails where there is no edge at all.
        if (isSubjectEmpty && (isClipEmpty || operation == GPC_INT)) return solution;
        succeeded = clipper.Execute(clipType(operation), solution, ClipperLib::pftEvenOdd);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) { // it tells of integers that the caller never saw
    }
    if (!succeeded) throw NSException(NSGenericException, "the polygons could not be clipped");
    return solution;
}

Contours clippedOnGrid(gpc_op operation, const Contours& subject, const Contours& clip, const Box& extent) {
    std::optional<ContourGrid> grid = ContourGrid::over(extent);
    if (!grid.has_value()) return {};
    const ClipperLib::Paths subjectPaths = grid->toGrid(subject);
    const ClipperLib::Paths clipPaths = grid->toGrid(clip);
    grid->sortRemembered();
    Contours contours;
    for (const ClipperLib::Path& path : clippedPaths(operation, subjectPaths, clipPaths)) {
        Contour contour = grid->fromGrid(path);
        if (Clipping::signedArea(contour) != 0) contours.push_back(std::move(contour));
    }
    return contours;
}

Contours intersection(Contours subject, Contours clip) {
    if (std::optional<Contours> simple = simpleIntersection(subject, clip)) return *std::move(simple);
    const Box common = Clipping::boxOf(subject).common(Clipping::boxOf(clip));
    if (!common.hasArea()) return {};
    const Box kept = common.enlarged(margin);
    return clippedOnGrid(GPC_INT, Clipping::cutToBox(std::move(subject), kept),
                         Clipping::cutToBox(std::move(clip), kept), kept);
}

Contours combination(gpc_op operation, Contours subject, Contours clip) {
    if (operation == GPC_INT) return intersection(std::move(subject), std::move(clip));
    Box extent = Clipping::boxOf(subject);
    extent.include(Clipping::boxOf(clip));
    return clippedOnGrid(operation, subject, clip, extent);
}

} // namespace

void gpc_add_contour(gpc_polygon* polygon, const gpc_vertex_list* contour, int hole) {
    const int count = std::max(contour->num_vertices, 0);
    const auto copied = static_cast<std::size_t>(count);
    makeRoom(*polygon);
    gpc_vertex* const vertices = count > 0 ? resized<gpc_vertex>(nullptr, copied) : nullptr;
    std::copy_n(contour->vertex, copied, vertices);
    polygon->hole[polygon->num_contours] = hole;
    polygon->contour[polygon->num_contours] = {count, vertices};
    ++polygon->num_contours;
}

void gpc_free_polygon(gpc_polygon* polygon) {
    for (int i = 0; i < polygon->num_contours; ++i) std::free(polygon->contour[i].vertex);
    std::free(polygon->hole);
    std::free(polygon->contour);
    *polygon = gpc_polygon{};
}

void gpc_polygon_clip(gpc_op operation, const gpc_polygon* subject, const gpc_polygon* clip,
                      gpc_polygon* result) {
    Contours subjectContours = contoursOf(*subject);
    Contours clipContours = contoursOf(*clip);
    gpc_owned_polygon made;
    if (areInRange(subjectContours) && areInRange(clipContours)) {
        for (Contour& contour : combination(operation, std::move(subjectContours), std::move(clipContours))) {
            const gpc_vertex_list list = {checkedCount(contour.size()), contour.data()};
            gpc_add_contour(&made, &list, Clipping::signedArea(contour) < 0 ? 1 : 0);
        }
    }
    made.moveTo(result);
}

} // namespace Imaging::Platform
