#include "proj_pipeline.h"
#include "args.h"

#include <fmt/format.h>

#include <cmath>

namespace qv5::cli {

std::string proj_pipeline(CGeoTransformation& t) {
    const double lat0 = t.OriginLat();
    const double lon0 = t.OriginLon();
    const double n0 = t.OriginNorth();
    const double e0 = t.OriginEast();
    const double s = t.HorizontalScale();
    const double theta = t.HorizontalRotation();
    const double h0 = t.VerticalHeightAdjustment();
    const double k_north = t.VerticalSlopeNorth();
    const double k_east = t.VerticalSlopeEast();
    // The similarity's shifts are not parameters the calibration reports: the centre itself
    // projects onto (n0, e0), so where the calibration puts it gives them.
    geo_nee centre{};
    t.Forward(geo_llh{lat0, lon0, 0.0}, centre);
    const double shift_north = centre.north - n0;
    const double shift_east = centre.east - e0;
    // Projected (x = east, y = north) relative to the centre, to site coordinates:
    //   E = e0 + tE + s cos(theta) x + s sin(theta) y
    //   N = n0 + tN - s sin(theta) x + s cos(theta) y
    const double c = s * std::cos(theta);
    const double sn = s * std::sin(theta);
    // The inclined plane about the centre, on site coordinates:
    //   Z = z + h0 + kN (N - n0) + kE (E - e0)
    const double z_shift = h0 - k_north * n0 - k_east * e0;
    return fmt::format(
        "+proj=pipeline +step +proj=axisswap +order=2,1 "
        "+step +proj=unitconvert +xy_in=deg +xy_out=rad "
        "+step +proj=stere +lat_0={:.17g} +lon_0={:.17g} +k_0=1 +x_0=0 +y_0=0 +ellps=WGS84 "
        "+step +proj=affine +xoff={:.17g} +yoff={:.17g} +s11={:.17g} +s12={:.17g} "
        "+s21={:.17g} +s22={:.17g} "
        "+step +proj=affine +zoff={:.17g} +s31={:.17g} +s32={:.17g} "
        "+step +proj=axisswap +order=2,1",
        lat0 * kDegreesPerRadian, lon0 * kDegreesPerRadian, e0 + shift_east, n0 + shift_north, c,
        sn, -sn, c, z_shift, k_east, k_north);
}

} // namespace qv5::cli
