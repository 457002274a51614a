// A host program built against the installed library: places a point against a straight.
#include <qv5/qv5lib.h>

#include <cmath>
#include <cstdio>

int main() {
    geo_nee start{1000.0, 2000.0, 50.0};
    geo_nee end{1100.0, 2000.0, 60.0};
    CGeoLine straight(start, end);
    CGeoPoint shot(geo_nee{1040.0, 2003.0, 0.0});
    const double station = straight.GridStation(shot);
    const double offset = straight.GridOffset(shot);
    std::printf("station %.6f offset %.6f\n", station, offset);
    const bool ok = std::fabs(station - 40.0) < 1e-9 && std::fabs(offset - 3.0) < 1e-9 &&
                    geo_normalised_bearing(-0.5) > 5.78 && GEO_NULL == 2e-308;
    return ok ? 0 : 1;
}
