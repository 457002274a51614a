// Numbers with a fixed meaning throughout the library. Internal header; never installed.
#ifndef QV5_CORE_CONSTANTS_H
#define QV5_CORE_CONSTANTS_H

namespace qv5::detail {

/// pi, to the last bit of a double.
inline constexpr double kPi = 3.141592653589793;
/// One whole turn; bearings are brought into [0, kTwoPi).
inline constexpr double kTwoPi = 6.283185307179586;
/// A quarter turn: a right angle, and the gradient of a vertical direction.
inline constexpr double kHalfPi = 1.5707963267948966;
/// Three right angles: where a bearing turns from the south-west quadrant to the north-west.
/// The literal is the same double as 3 x kHalfPi.
inline constexpr double kThreeHalfPi = 4.71238898038469;
/// Radians per degree.
inline constexpr double kRadiansPerDegree = 0.017453292519943295;
/// Degrees per radian.
inline constexpr double kDegreesPerRadian = 57.29577951308232;
/// Radians per minute of arc.
inline constexpr double kRadiansPerMinute = 0.0002908882086657216;
/// Radians per second of arc.
inline constexpr double kRadiansPerSecond = 4.84813681109536e-6;
/// Hours (degrees) per second of time (arc): 1/3600.
inline constexpr double kDegreesPerSecondOfArc = 0.0002777777777777778;
/// Minutes per second: 1/60.
inline constexpr double kMinutesPerSecond = 0.016666666666666666;
/// Half of a hundred-thousandth of a second: keeps 29.99999999 seconds from printing as 29.
inline constexpr double kDmsRoundingGuard = 5e-6;

/// Two positions closer than this in each coordinate count as the same point.
inline constexpr double kPositionTolerance = 0.0005;
/// Plan distance below which a gradient or grade is taken as vertical (or level).
inline constexpr double kVerticalTolerance = 0.0001;
/// Radius below which an arc length has no defined angle.
inline constexpr double kMinimumRadius = 0.0005;
/// Stand-in for a zero northing difference in the polygon edge slope.
inline constexpr double kPolygonFlatEdge = 1e-8;

/// The radius of a straight: lines, and spirals at their tangent end.
inline constexpr double kInfiniteRadius = 2e100;
/// Starting value of minimum searches.
inline constexpr double kSearchStart = 1e100;

} // namespace qv5::detail

#endif // QV5_CORE_CONSTANTS_H
