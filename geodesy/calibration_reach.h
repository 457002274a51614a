// How far a point lies from a calibration's control points. Internal header; never installed.
#ifndef QV5_GEODESY_CALIBRATION_REACH_H
#define QV5_GEODESY_CALIBRATION_REACH_H

namespace qv5::detail {

/// A north-east box.
struct PlanBox {
    double min_north;
    double max_north;
    double min_east;
    double max_east;
};

/// Distance in the plane from (north, east) to the box, 0.0 inside or on it.
double distance_to_box(const PlanBox& box, double north, double east);

/// The distance beyond which a point is far outside the box: `multiple` times its diagonal, or
/// `minimum` when that is more.
double reach_limit(const PlanBox& box, double multiple, double minimum);

} // namespace qv5::detail

#endif // QV5_GEODESY_CALIBRATION_REACH_H
