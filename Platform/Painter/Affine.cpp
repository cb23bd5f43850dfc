// Products and inverses of affine maps. The order of the operations is part of what is promised: who draws by
// way of these maps gets the same bits on every machine.

#include "Platform/Painter/Affine.h"

#include <cmath>

namespace Imaging::Platform {

Affine Affine::then(const Affine& next) const {
    return {xx * next.xx + yx * next.xy,           xx * next.yx + yx * next.yy,
            xy * next.xx + yy * next.xy,           xy * next.yx + yy * next.yy,
            x0 * next.xx + y0 * next.xy + next.x0, x0 * next.yx + y0 * next.yy + next.y0};
}

std::optional<Affine> Affine::inverse() const {
    if (xy == 0 && yx == 0) {
        // Each axis by itself, which is exact where the determinant's detour would round.
        if (xx == 0 || yy == 0) return std::nullopt;
        const double perX = 1 / xx;
        const double perY = 1 / yy;
        return Affine{perX, yx, xy, perY, -x0 * perX, -y0 * perY};
    }
    const double determinant = xx * yy - yx * xy;
    if (!std::isfinite(determinant) || determinant == 0) return std::nullopt;
    const double scale = 1 / determinant;
    return Affine{yy * scale,
                  -yx * scale,
                  -xy * scale,
                  xx * scale,
                  (xy * y0 - yy * x0) * scale,
                  (yx * x0 - xx * y0) * scale};
}

bool Affine::isFinite() const {
    return std::isfinite(xx) && std::isfinite(yx) && std::isfinite(xy) && std::isfinite(yy) &&
           std::isfinite(x0) && std::isfinite(y0);
}

} // namespace Imaging::Platform
