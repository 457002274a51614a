// The position, azimuth and projection maths of the transition spirals, on plain values.
// Internal header; never installed.
#ifndef QV5_GEOMETRY_SPIRAL_MATH_H
#define QV5_GEOMETRY_SPIRAL_MATH_H

#include "geometry/traverse.h"
#include "qv5/geodef.h"

#include <cstdint>

namespace qv5::detail {

/// Which end of a spiral touches its straight: the start of an entry spiral, the end of an
/// exit spiral. The two kinds are mirror images of each other along the spiral.
enum class SpiralKind { Entry, Exit };

/// Most steps the projection of a point onto a spiral may take.
inline constexpr int kSpiralMaxSteps = 20;
/// Tolerance of the series for a spiral's cached end point, metres.
inline constexpr double kSpiralEndTolerance = 1e-5;

/// A spiral laid out on the ground, as its formulas use it.
struct SpiralShape {
    SpiralKind kind;
    geo_nee straight_end;   ///< entry: the start point; exit: the end point
    double tangent_azimuth; ///< azimuth of the straight in the direction of travel
    double length;          ///< L, metres
    double spiral_constant; ///< C = 2 R L
    bool turns_right;       ///< the direction is not `geodef_Left`
};

/// A spiral shape with the two directions its points are stepped along (along the straight,
/// and square off it), whose sines and cosines are worked out once for all the points asked of
/// it. It also remembers the last point and the last tangent azimuth it gave, keyed by the exact
/// bits of the station (and tolerance) asked: a projection that starts where the previous one
/// ended asks for them again first.
class SpiralLayout {
public:
    explicit SpiralLayout(const SpiralShape& shape);

    const SpiralShape& shape() const { return m_shape; }

    /// Point at a station in [0, L]: as spiral_point.
    bool point(double station, double tolerance, geo_nee& out);
    /// Tangent azimuth at a station: as spiral_azimuth.
    double azimuth(double station);

private:
    /// The point worked out afresh.
    bool laid_out_point(double station, double tolerance, geo_nee& out);

    SpiralShape m_shape;
    LevelStepper m_along;
    LevelStepper m_across;

    bool m_pointKnown = false;
    std::uint64_t m_pointStation = 0; ///< bits of the station of the point remembered
    std::uint64_t m_pointTolerance = 0;
    bool m_pointFound = false;
    geo_nee m_point{};
    bool m_azimuthKnown = false;
    std::uint64_t m_azimuthStation = 0; ///< bits of the station of the azimuth remembered
    double m_azimuth = 0.0;
};

/// Distance from the straight end of the spiral to the point at `station` from its start.
inline double distance_from_straight(const SpiralShape& shape, double station) {
    return shape.kind == SpiralKind::Entry ? station : shape.length - station;
}

/// Tangent azimuth at a station: the straight's azimuth turned by the deflection at the
/// station's distance from the straight end (towards the curve for an entry spiral, back from
/// the exit straight for an exit spiral). `GEO_NULL` when an input is.
double spiral_azimuth(const SpiralShape& shape, double station);

/// Point on the spiral at a station in [0, L], from the series to `tolerance`: from the straight
/// end, x along the straight (backwards for an exit spiral), then y square to the right for a
/// right-turning spiral, to the left otherwise.
/// @return false (and `out` untouched) when the series does not converge or the straight end
///         has no plan coordinates
bool spiral_point(const SpiralShape& shape, double station, double tolerance, geo_nee& out);

/// Outcome of one step of the projection of a point onto a spiral.
enum class ProjectionStep {
    Converged, ///< the point lies square to the tangent at `station`; `offset` is set
    Moved,     ///< `station` moved on towards the foot of the perpendicular
    Failed     ///< the spiral gave no point at `station`
};

/// One step of the projection of `point` (plan coordinates set) onto the spiral from `station`
/// in [0, L]. The chord from the spiral point to `point` is compared with the normal at the
/// spiral point; when it deviates by more than the angle `tolerance` subtends over its length,
/// the station moves by the chord's component along the tangent — by the whole component when
/// the point lies to the right, by half of it when it lies to the left. Hosts' stations follow
/// that asymmetric path to the last bit, so it is kept.
/// @param[in,out] station the station tried, and the next one on Moved
/// @param[out] offset on Converged: the chord length, negative to the left (0 when the point
///        lies within `tolerance` of the spiral point)
/// @param[out] azimuth the tangent azimuth at the station tried
ProjectionStep spiral_projection_step(SpiralLayout& layout, const geo_nee& point, double tolerance,
                                      double& station, double& offset, double& azimuth);

} // namespace qv5::detail

#endif // QV5_GEOMETRY_SPIRAL_MATH_H
