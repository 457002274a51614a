#include <cstdio>
#include <qv5/qv5lib.h>

int main() {
    // The instrument: a known point with an instrument height of 1.562 m.
    CGeoPoint known(geo_nee{5000.000, 2000.000, 102.450});
    CGeoPoint instrument;
    instrument.SetStation(known, 1.562);

    // A shot: horizontal angle 45°12'30", zenith angle 91°15'10", slope distance 35.412 m.
    double hz = 0.0, vz = 0.0;
    _dmstorad(45, 12, 30.0, &hz);
    _dmstorad(91, 15, 10.0, &vz);
    CGeoPoint shot;
    shot.SetHVD(hz, vz, 35.412, instrument);

    // The straight of the road centreline, and where the shot lies against it.
    geo_nee start{4950.0, 1950.0, 101.2};
    geo_nee end{5150.0, 2100.0, 104.8};
    CGeoLine straight(start, end);
    const double station = straight.GridStation(shot);
    const double offset = straight.GridOffset(shot); // positive: right of the straight
    CGeoPoint design;
    straight.GridHorzPoint(station, design); // on the grade line at that station

    std::printf("N %.3f E %.3f  station %.3f offset %.3f  above design %.3f\n", shot.Northing(),
                shot.Easting(), station, offset, shot.Elevation() - design.Elevation());
}
