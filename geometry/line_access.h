// The library's own way to a line's station, offset and azimuth of a point in one request.
// Internal header; never installed.
//
// A road iterator asks a line for all three for every point of a walk. Asked one by one they
// cost three calls into the line, each testing its caches; asked here they cost one, with the
// same results to the bit.
#ifndef QV5_GEOMETRY_LINE_ACCESS_H
#define QV5_GEOMETRY_LINE_ACCESS_H

#include "qv5/geoline.h"

namespace qv5::detail {

struct LineAccess {
    /// GridStation(point), GridOffset(point) and GridAzimuth(), asked in that order.
    static void deltas(CGeoLine& line, CGeoPoint& point, double& station, double& offset,
                       double& azimuth);
};

} // namespace qv5::detail

#endif // QV5_GEOMETRY_LINE_ACCESS_H
