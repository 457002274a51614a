// The clothoid (Euler spiral) series behind the transition spirals. Internal header; never
// installed.
#ifndef QV5_GEOMETRY_CLOTHOID_H
#define QV5_GEOMETRY_CLOTHOID_H

namespace qv5::detail {

/// At most this many correction terms follow the leading term of each series; a series that
/// has not met its tolerance by then is taken as not converging.
inline constexpr int kClothoidMaxCorrections = 9;

/// Deflection of the tangent of a clothoid at distance `length` from its straight end: l^2 / C,
/// formed as (l / C) * l. A negative or zero length gives 0 (the tangent of the straight);
/// `GEO_NULL` comes back for a `GEO_NULL` argument, a zero spiral constant with a positive
/// length, or a result that is not finite.
double clothoid_deflection(double length, double spiral_constant);

/// Position of the point at distance `length` along a clothoid with spiral constant C = 2RL,
/// in the frame of its straight: `x` along the straight, `y` across it (positive for l > 0).
/// Evaluates the Fresnel-type series term by term with a running product. A length of exactly
/// 0 gives the origin whatever C is.
/// @return false when either series has not converged within kClothoidMaxCorrections terms,
///         or an argument is `GEO_NULL`; x and y are then `GEO_NULL`
bool clothoid_deltas(double length, double spiral_constant, double tolerance, double& x, double& y);

} // namespace qv5::detail

#endif // QV5_GEOMETRY_CLOTHOID_H
