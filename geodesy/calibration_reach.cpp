// How far a converted point lies from the control points of its calibration. A calibration is a
// fit to its control points: inside their area it interpolates, outside it extrapolates the
// fitted scale, rotation and inclined plane, so errors in them grow with the distance. Hosts
// warn beyond a distance comparable to the area's own size; the box around the points and its
// diagonal are a measure of that size that does not depend on how the points are spread.
#include "geodesy/calibration_reach.h"

#include "qv5/geotrans.h"

#include <algorithm>
#include <cmath>

namespace qv5::detail {

double distance_to_box(const PlanBox& box, double north, double east) {
    const double dn = north < box.min_north   ? box.min_north - north
                      : north > box.max_north ? north - box.max_north
                                              : 0.0;
    const double de = east < box.min_east   ? box.min_east - east
                      : east > box.max_east ? east - box.max_east
                                            : 0.0;
    return std::hypot(dn, de);
}

double reach_limit(const PlanBox& box, double multiple, double minimum) {
    const double diagonal = std::hypot(box.max_north - box.min_north, box.max_east - box.min_east);
    return std::max(multiple * diagonal, minimum);
}

} // namespace qv5::detail

namespace qv5 {

int CalibrationReach(CGeoTransformation& calibration, const geo_nee& site, double& distance,
                     double& limit) {
    distance = GEO_NULL;
    limit = GEO_NULL;
    if (calibration.IsCalibrated() == 0 || site.north == GEO_NULL || site.east == GEO_NULL ||
        !std::isfinite(site.north) || !std::isfinite(site.east)) {
        return -1;
    }
    detail::PlanBox box{0.0, 0.0, 0.0, 0.0};
    bool any = false;
    for (int i = 0; i < calibration.NumberOfPoints(); ++i) {
        const geotrans_CalibrationPoint* p = calibration.NthPoint(i);
        if ((p->flags & (geotrans_UseHorizontal | geotrans_UseVertical)) == 0 ||
            p->nee.north == GEO_NULL || p->nee.east == GEO_NULL || !std::isfinite(p->nee.north) ||
            !std::isfinite(p->nee.east)) {
            continue;
        }
        if (!any) {
            box = detail::PlanBox{p->nee.north, p->nee.north, p->nee.east, p->nee.east};
            any = true;
            continue;
        }
        box.min_north = std::min(box.min_north, p->nee.north);
        box.max_north = std::max(box.max_north, p->nee.north);
        box.min_east = std::min(box.min_east, p->nee.east);
        box.max_east = std::max(box.max_east, p->nee.east);
    }
    if (!any) {
        return -1;
    }
    const double reach =
        detail::reach_limit(box, kCalibrationReachMultiple, kCalibrationReachMinimum);
    if (!std::isfinite(reach)) {
        return -1;
    }
    limit = reach;
    const double away = detail::distance_to_box(box, site.north, site.east);
    if (!std::isfinite(away)) {
        return 1; // farther than a double can say
    }
    distance = away;
    return distance > limit ? 1 : 0;
}

} // namespace qv5
