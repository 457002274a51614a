// Alignment elements given arbitrary numbers - NaN, infinities, huge and tiny values, the
// GEO_NULL marker, nonsense directions of travel - must answer without fault and in bounded
// time: the arc and both spirals are set from the input and asked everything they answer.
#include "qv5/geoarc.h"
#include "qv5/geospiral.h"
#include "qv5/geosurvey.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

/// Larger numbers (and non-finite ones) may overflow on the way: answers are then not checked.
constexpr double kSaneMagnitude = 1e12;
/// Nor are answers from numbers this close to zero (a radius of 1e-300), which overflow too.
constexpr double kSaneSmallest = 1e-9;

/// Reads the input as a sequence of doubles, the first byte choosing how some are reinterpreted.
class Numbers {
public:
    Numbers(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    double next() {
        double value = 0.0;
        if (m_at + sizeof value <= m_size) {
            std::memcpy(&value, m_data + m_at, sizeof value);
        }
        m_at += sizeof value;
        // Every fourth value from a small table: the ones the code tests for.
        static constexpr double kSpecial[] = {GEO_NULL,         0.0, -0.0, 1e-5, 100.0, 2e100,
                                              6.283185307179586};
        if (m_at % 32 == 0 && m_at / 8 < m_size) {
            value = kSpecial[m_data[m_at / 8] % (sizeof kSpecial / sizeof kSpecial[0])];
        }
        const double size = std::fabs(value);
        const bool marker = value == GEO_NULL || value == 2e100 || value == 0.0;
        if (!marker && !(size <= kSaneMagnitude && size >= kSaneSmallest)) {
            m_sane = false;
        }
        return value;
    }

    /// True while every number read was finite and of a size a survey can have (or one of the
    /// markers): then every answer must be a finite number or GEO_NULL.
    bool sane() const { return m_sane; }

    geodef_Direction direction() { return (next() > 0.0) ? geodef_Right : geodef_Left; }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
    bool m_sane = true;
};

/// From sane input, a numeric answer is a finite number or GEO_NULL, never a NaN or infinity.
void check_number(const Numbers& in, double value) {
    if (in.sane() && value != GEO_NULL && !std::isfinite(value)) {
        std::abort();
    }
}

void check_together(double station, double offset, double azimuth) {
    // Either an answer or none: the three are null together.
    if ((station == GEO_NULL) != (offset == GEO_NULL) ||
        (station == GEO_NULL) != (azimuth == GEO_NULL)) {
        std::abort();
    }
}

template <class Spiral>
void exercise_spiral(Numbers& in) {
    // Every value is read into its own variable first: the order in which a call's arguments
    // are evaluated is the compiler's choice, and a crash must reproduce whatever compiled it.
    CGeoPoint start(geo_nee{in.next(), in.next(), in.next()});
    const double azimuth_in = in.next();
    const geodef_Direction direction = in.direction();
    const double radius = in.next();
    const double length = in.next();
    Spiral spiral;
    spiral.Set(start, azimuth_in, direction, radius, length);
    spiral.ExitAzimuth();
    spiral.EndPt().Northing();
    spiral.RadiusAtStation(in.next());
    spiral.GridAzimuth(in.next());
    const double at = in.next();
    const double point_tolerance = in.next();
    CGeoPoint q;
    spiral.GridHorzPoint(at, point_tolerance, q);
    q.Northing();
    CGeoPoint p(geo_nee{in.next(), in.next(), 0.0});
    const double from = in.next();
    const double tolerance = in.next();
    double station = 0.0;
    double offset = 0.0;
    double azimuth = 0.0;
    spiral.GridDeltas(p, from, tolerance, station, offset, azimuth);
    check_together(station, offset, azimuth);
    check_number(in, station);
    check_number(in, offset);
    check_number(in, azimuth);
    check_number(in, spiral.ExitAzimuth());
    Spiral copy(spiral);
    copy.GridDeltas(q, station, 1e-5, station, offset, azimuth);
    check_together(station, offset, azimuth);
}

void exercise_arc(Numbers& in) {
    CGeoPoint start(geo_nee{in.next(), in.next(), in.next()});
    CGeoPoint end(geo_nee{in.next(), in.next(), in.next()});
    const double radius = in.next();
    const double angle = in.next();
    const geodef_Direction direction = in.direction();
    CGeoArc by_ends;
    by_ends.Set(start, end, radius, angle, direction);
    const double entry = in.next();
    const double radius2 = in.next();
    const double length = in.next();
    const geodef_Direction direction2 = in.direction();
    const double start_station = in.next();
    CGeoArc by_length;
    by_length.Set(start, entry, radius2, length, direction2, start_station);
    for (CGeoArc* arc : {&by_ends, &by_length}) {
        arc->EntryAzimuth();
        arc->GridArcLength();
        arc->Angle();
        arc->EndPt().Easting();
        arc->GridAzimuth(in.next());
        CGeoPoint q;
        arc->GridHorzPoint(in.next(), q);
        arc->GridHorzPointByAngle(in.next(), q);
        CGeoPoint p(geo_nee{in.next(), in.next(), 0.0});
        double station = 0.0;
        double offset = 0.0;
        double azimuth = 0.0;
        arc->GridDeltas(p, station, offset, azimuth);
        check_together(station, offset, azimuth);
        check_number(in, station);
        check_number(in, offset);
        check_number(in, azimuth);
        check_number(in, arc->EntryAzimuth());
        check_number(in, arc->GridArcLength());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Numbers in(data, size);
    double x = 0.0;
    double y = 0.0;
    const double l = in.next();
    const double c = in.next();
    const double tolerance = in.next();
    geo_spiral_deltas(l, c, tolerance, x, y);
    if ((x == GEO_NULL) != (y == GEO_NULL)) {
        std::abort();
    }
    check_number(in, x);
    check_number(in, y);
    const double l2 = in.next();
    geo_spiral_deflection(l2, in.next());
    exercise_arc(in);
    exercise_spiral<CGeoEntrySpiral>(in);
    exercise_spiral<CGeoExitSpiral>(in);
    return 0;
}
