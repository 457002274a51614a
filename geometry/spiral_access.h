// The library's own way into a spiral's inversion with the spiral's layout kept by the caller.
// Internal header; never installed.
//
// A road iterator inverts the same spiral point after point. The layout (the spiral's straight
// end, azimuths and the trigonometry of its two stepping directions) depends on the spiral's
// values alone, so the iterator makes it once per spiral it holds and hands it back for every
// inversion instead of the spiral making it afresh each time.
#ifndef QV5_GEOMETRY_SPIRAL_ACCESS_H
#define QV5_GEOMETRY_SPIRAL_ACCESS_H

#include "geometry/spiral_math.h"
#include "qv5/geospiral.h"

namespace qv5::detail {

struct SpiralAccess {
    /// The layout the spiral's own inversion makes; valid until the spiral is set or assigned
    /// again.
    static SpiralLayout layout(CGeoEntrySpiral& spiral);
    static SpiralLayout layout(CGeoExitSpiral& spiral);

    /// GridDeltas with a layout from `layout(spiral)` (the spiral unchanged since) instead of one
    /// made afresh: the same results, to the bit.
    static void grid_deltas(CGeoEntrySpiral& spiral, SpiralLayout& layout, CGeoPoint& point,
                            double startStation, double tolerance, double& station, double& offset,
                            double& azimuth);
    static void grid_deltas(CGeoExitSpiral& spiral, SpiralLayout& layout, CGeoPoint& point,
                            double startStation, double tolerance, double& station, double& offset,
                            double& azimuth);
};

} // namespace qv5::detail

#endif // QV5_GEOMETRY_SPIRAL_ACCESS_H
