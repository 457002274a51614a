// The plain maths of the seven-parameter transformation. Internal header; never installed.
#ifndef QV5_GEODESY_SEVEN_PARAM_H
#define QV5_GEODESY_SEVEN_PARAM_H

namespace qv5::detail {

/// The rotation-and-scale matrix s Rz(z) Ry(y) Rx(x) of coordinate-frame rotations, written
/// out element by element and stored row by row in m[0..8].
void seven_param_matrix(double x, double y, double z, double s, double m[9]);

/// w = m v for a row-major 3 x 3 matrix, each element accumulated from 0.0 in column order.
void multiply_3x3(const double m[9], const double v[3], double w[3]);

} // namespace qv5::detail

#endif // QV5_GEODESY_SEVEN_PARAM_H
