#include <cmath>
#include <cstdio>
#include <qv5/qv5lib.h>

int main() {
    // A straight of 200 m due east, then a 300 m radius arc of 150 m turning left.
    CGeoRoad road;
    road.SetPOBInfo(1000.0, 5000.0, 2000.0, 20.0); // station, north, east, even-station interval
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});      // elements are moved to the road's end
    CGeoLine straight;
    straight.Set(origin, 1.5707963267948966, 200.0, 0.0); // azimuth, length, grade
    road.AddHorizontal(georoad_Line, &straight);
    CGeoArc arc;
    arc.Set(origin, 1.5707963267948966, 300.0, 150.0, geodef_Left, 0.0);
    road.AddHorizontal(georoad_Arc, &arc);

    // A profile: 2 % up to a crest (parabola, 80 m long) at 1150, then down.
    georoad_Error error{}; // set only when an element is refused
    road.AddVertical(georoad_VertPoint, 1000.0, 100.0, 0.0, &error);
    road.AddVertical(georoad_VertParabola, 1150.0, 103.0, 80.0, &error);
    road.AddVertical(georoad_VertPoint, 1350.0, 101.0, 0.0, &error);

    // One template both sides: a 3.5 m lane falling 2 %.
    CGeoTemplate lane;
    lane.SetName(CString("Lane"));
    const geotemp_GradeWidthData width{std::atan(-0.02), 3.5}; // slope angle (radians), width
    lane.AddElement(geotemp_GradeWidth, &width);
    road.AddTemplate(&lane);
    road.AddTemplateApplication(CString("Lane"), 1000.0, geodef_BothSides);

    // A measured point: where is it against the road, and how far above the finished surface?
    CGeoRoadIterator it;
    it.Set(&road);
    CGeoPoint shot(geo_nee{5001.8, 2120.0, 102.9});
    double station, offset, aboveGrade, azimuth, grade;
    it.CenterlineDeltas(shot, station, offset, aboveGrade, azimuth, grade, nullptr);
    CGeoPoint surface;
    double along, across;
    it.Intersection(shot, azimuth, surface, along, across);
    std::printf("station %.3f  offset %.3f  cut %.3f\n", station, offset,
                shot.Elevation() - surface.Elevation());

    // The point to stake at station 1250, 3 m right of the centreline.
    CGeoPoint stake;
    it.CenterlinePoint(1250.0, 3.0, 0.0, stake, azimuth, nullptr, nullptr);
    std::printf("stake N %.3f E %.3f Z %.3f\n", stake.Northing(), stake.Easting(),
                stake.Elevation());
}
