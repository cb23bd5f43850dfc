#pragma once

/// The plain records that polygons are made of. What can be done with them is in PolygonClipper.h.
namespace Imaging::Platform {

struct gpc_vertex {
    double x;
    double y;
};

/// One contour.
struct gpc_vertex_list {
    int num_vertices;   ///< not negative
    gpc_vertex* vertex; ///< so many, from std::malloc; may be null where there are none
};

/// A polygon. Its arrays come from std::malloc and belong to it; copying the record copies no vertices. An
/// empty one is all zero, which `gpc_polygon polygon{}` makes. `gpc_free_polygon` ends it.
struct gpc_polygon {
    int num_contours;
    int* hole; ///< one for each contour, other than 0 for holes; told by results, not asked of operands
    gpc_vertex_list* contour;
};

} // namespace Imaging::Platform
