// The maths of the transition spirals on plain values: the tangent azimuth from the deflection,
// points from the clothoid series laid off the straight end, and one step of the projection of a
// point onto the spiral. The classes in spiral.cpp hold the caches and the continuations beyond
// the ends; everything here takes values and returns values.
#include "geometry/spiral_math.h"

#include "core/angles.h"
#include "core/constants.h"
#include "geometry/clothoid.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace qv5::detail {

double spiral_azimuth(const SpiralShape& shape, double station) {
    const double deflection =
        clothoid_deflection(distance_from_straight(shape, station), shape.spiral_constant);
    if (deflection == GEO_NULL || shape.tangent_azimuth == GEO_NULL) {
        return GEO_NULL;
    }
    // Towards the curve from the entry straight; back from the exit straight.
    const bool clockwise = (shape.kind == SpiralKind::Entry) == shape.turns_right;
    return normalised_bearing(clockwise ? shape.tangent_azimuth + deflection
                                        : shape.tangent_azimuth - deflection);
}

namespace {

/// Azimuth of the step along the straight from its end towards the point's foot: forwards from
/// an entry spiral's start, backwards from an exit spiral's end.
double along_azimuth(const SpiralShape& shape) {
    return shape.kind == SpiralKind::Entry ? shape.tangent_azimuth
                                           : normalised_bearing(shape.tangent_azimuth + kPi);
}

} // namespace

SpiralLayout::SpiralLayout(const SpiralShape& shape)
    : m_shape(shape), m_along(along_azimuth(shape), false),
      m_across(shape.tangent_azimuth + kHalfPi, !shape.turns_right) {}

bool SpiralLayout::point(double station, double tolerance, geo_nee& out) {
    const auto station_bits = std::bit_cast<std::uint64_t>(station);
    const auto tolerance_bits = std::bit_cast<std::uint64_t>(tolerance);
    if (m_pointKnown && station_bits == m_pointStation && tolerance_bits == m_pointTolerance) {
        if (m_pointFound) {
            out = m_point;
        }
        return m_pointFound;
    }
    m_pointKnown = true;
    m_pointStation = station_bits;
    m_pointTolerance = tolerance_bits;
    m_pointFound = laid_out_point(station, tolerance, m_point);
    if (m_pointFound) {
        out = m_point;
    }
    return m_pointFound;
}

double SpiralLayout::azimuth(double station) {
    const auto station_bits = std::bit_cast<std::uint64_t>(station);
    if (!m_azimuthKnown || station_bits != m_azimuthStation) {
        m_azimuthKnown = true;
        m_azimuthStation = station_bits;
        m_azimuth = spiral_azimuth(m_shape, station);
    }
    return m_azimuth;
}

bool SpiralLayout::laid_out_point(double station, double tolerance, geo_nee& out) {
    if (!has_plan(m_shape.straight_end) || m_shape.tangent_azimuth == GEO_NULL) {
        return false;
    }
    double x = 0.0;
    double y = 0.0;
    if (!clothoid_deltas(distance_from_straight(m_shape, station), m_shape.spiral_constant,
                         tolerance, x, y)) {
        return false;
    }
    const geo_nee foot = m_along.step(m_shape.straight_end, x);
    if (!m_shape.turns_right) {
        y = -y;
    }
    out = m_across.step(foot, y);
    return true;
}

bool spiral_point(const SpiralShape& shape, double station, double tolerance, geo_nee& out) {
    SpiralLayout layout(shape);
    return layout.point(station, tolerance, out);
}

namespace {

/// True when a chord that deviates from the normal by `deviation` is square to the tangent
/// within the angle atan(ratio) that the tolerance subtends over the chord.
///
/// atan(r) <= r for r >= 0, and a faithfully rounded atan cannot round above r, which is itself
/// a double; so a deviation of at least r is never within atan(r). Only a smaller deviation needs
/// the arctangent, and the answer is the same either way. Steps that move on (all but the last)
/// are spared an arctangent.
bool square_within(double deviation, double ratio) {
    return deviation < ratio && deviation < std::atan(ratio);
}

} // namespace

ProjectionStep spiral_projection_step(SpiralLayout& layout, const geo_nee& point, double tolerance,
                                      double& station, double& offset, double& azimuth) {
    azimuth = layout.azimuth(station);
    geo_nee on_spiral;
    if (azimuth == GEO_NULL || !layout.point(station, tolerance, on_spiral)) {
        return ProjectionStep::Failed;
    }
    const double dn = point.north - on_spiral.north;
    const double de = point.east - on_spiral.east;
    const double chord = std::sqrt(dn * dn + de * de);
    if (chord < tolerance) {
        offset = 0.0;
        return ProjectionStep::Converged;
    }
    // Square to the tangent within the angle the tolerance subtends over the chord.
    const double ratio = tolerance / chord;
    const double chord_azimuth = bearing_of(dn, de);
    if (normalised_bearing(chord_azimuth - azimuth) > kPi) {
        const double normal = normalised_bearing(azimuth - kHalfPi);
        if (square_within(std::fabs(divergence(normal, chord_azimuth)), ratio)) {
            offset = -chord;
            return ProjectionStep::Converged;
        }
        // Half a step, from the left.
        station = station + std::sin(normalised_bearing(normal - chord_azimuth)) * chord * (-0.5);
    } else {
        const double normal = normalised_bearing(azimuth + kHalfPi);
        if (square_within(std::fabs(divergence(normal, chord_azimuth)), ratio)) {
            offset = chord;
            return ProjectionStep::Converged;
        }
        station = station + std::sin(normalised_bearing(normal - chord_azimuth)) * chord;
    }
    return ProjectionStep::Moved;
}

} // namespace qv5::detail
