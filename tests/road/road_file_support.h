// Roads written to and read from files in the tests: paths, whole-file bytes, sample and random
// roads, and an element-by-element comparison of two roads.
#ifndef QV5_TESTS_ROAD_ROAD_FILE_SUPPORT_H
#define QV5_TESTS_ROAD_ROAD_FILE_SUPPORT_H

#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/georoad.h"
#include "qv5/geospiral.h"
#include "qv5/geotemplate.h"

#include "road_file_fixture.h"
#include "support/test_numbers.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace qv5::test {

/// "T" and a number (built in steps: GCC 12 warns wrongly about "T" + std::to_string).
inline std::string numbered(const char* stem, int n) {
    std::string text(stem);
    text += std::to_string(n);
    return text;
}

/// A UTF-16 path or name, zero-terminated.
inline std::vector<unsigned short> utf16(const std::string& ascii) {
    std::vector<unsigned short> units(ascii.begin(), ascii.end());
    units.push_back(0);
    return units;
}

/// A fresh path in the test's temporary folder.
inline std::string temp_path(const std::string& stem) {
    // CTest runs each test in a process of its own, several at once: the process id keeps their
    // files apart.
    static int counter = 0;
    return ::testing::TempDir() + "qv5_road_" + stem + "_" + std::to_string(::getpid()) + "_" +
           std::to_string(++counter) + ".qv5r";
}

inline Bytes file_bytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void put_file(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

inline bool file_exists(const std::string& path) {
    return std::ifstream(path).good();
}

/// The bytes a road writes.
inline Bytes written_bytes(CGeoRoad& road) {
    const std::string path = temp_path("w");
    georoad_Error error = georoad_Error(0);
    EXPECT_EQ(road.Write(utf16(path).data(), &error), 1);
    Bytes bytes = file_bytes(path);
    std::remove(path.c_str());
    return bytes;
}

inline CGeoLine line_from_origin(double azimuth, double length) {
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    CGeoLine line;
    line.Set(origin, azimuth, length, 0.0);
    return line;
}

/// Appends an arc or spiral tangent to the road's end.
inline void add_curve(CGeoRoad& road, georoad_HorzElementType type, double radius, double length,
                      geodef_Direction direction) {
    CGeoPoint origin(geo_nee{0.0, 0.0, 0.0});
    const double azimuth = road.EndAzimuthHorizontal();
    if (type == georoad_Arc) {
        CGeoArc arc;
        arc.Set(origin, azimuth, radius, length, direction, 0.0);
        ASSERT_EQ(road.AddHorizontal(type, &arc), 1);
    } else if (type == georoad_EntrySpiral) {
        CGeoEntrySpiral spiral;
        spiral.Set(origin, azimuth, direction, radius, length);
        ASSERT_EQ(road.AddHorizontal(type, &spiral), 1);
    } else {
        CGeoExitSpiral spiral;
        spiral.Set(origin, azimuth, direction, radius, length);
        ASSERT_EQ(road.AddHorizontal(type, &spiral), 1);
    }
}

inline CGeoTemplate lane_template(const std::string& name) {
    CGeoTemplate t;
    t.SetName(CString(name.c_str()));
    const geotemp_GradeWidthData lane{-0.02, 3.5};
    t.AddElement(geotemp_GradeWidth, &lane);
    geotemp_FeatureData feature{};
    feature.Name[0] = 'E';
    feature.Name[1] = 'P';
    feature.ValueA = 1.5;
    feature.ValueB = 2.5;
    t.AddElement(geotemp_Feature, &feature);
    const geotemp_FixedPointData curb{4.0, 0.1, 0.3, {}};
    t.AddElement(geotemp_FixedPoint, &curb);
    const geotemp_SideSlopeData slope{0.5, 0.6, 1.0};
    t.AddElement(geotemp_SideSlope, &slope);
    return t;
}

/// A small road with every kind of record: the road the byte layout test spells out.
inline void build_sample_road(CGeoRoad& road) {
    road.SetName(CString("Main St"));
    road.SetPOBInfo(100.0, 1000.0, 2000.0, 20.0);
    CGeoLine line = line_from_origin(0.5, 50.0);
    ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
    add_curve(road, georoad_Arc, 300.0, 40.0, geodef_Right);
    add_curve(road, georoad_ExitSpiral, 300.0, 30.0, geodef_Left);
    georoad_Error error = georoad_Error(0);
    ASSERT_EQ(road.AddVertical(georoad_VertPoint, 100.0, 30.0, 0.0, &error), 1);
    ASSERT_EQ(road.AddVertical(georoad_VertParabola, 200.0, 32.0, 60.0, &error), 1);
    ASSERT_EQ(road.AddVertical(georoad_VertCircular, 300.0, 31.0, 40.0, &error), 1);
    CGeoTemplate lane = lane_template("Lane");
    ASSERT_EQ(road.AddTemplate(&lane), 1);
    ASSERT_EQ(road.AddTemplateApplication(CString("Lane"), 100.0, geodef_BothSides), 1);
    ASSERT_EQ(road.AddTemplateApplication(CString("Lane"), 150.0, geodef_LeftSide), 1);
}

/// A random road: tangent chains of lines, arcs and spirals, a valid profile, templates with
/// every element type, and applications of them.
inline void build_random_road(CGeoRoad& road, std::mt19937_64& rng) {
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
    road.SetName(CString(numbered("road ", pick(100000)).c_str()));
    const int elements = pick(12);
    if (elements > 0 || pick(2) == 0) {
        road.SetPOBInfo(unit(rng) * 1000.0, 5000.0 + unit(rng) * 100.0, 3000.0 + unit(rng) * 100.0,
                        pick(2) ? 20.0 : 25.0);
    }
    for (int i = 0; i < elements; ++i) {
        const int kind = i == 0 ? 0 : pick(4);
        const double length = 5.0 + unit(rng) * 200.0;
        const double radius = 50.0 + unit(rng) * 1000.0;
        const geodef_Direction dir = pick(2) ? geodef_Right : geodef_Left;
        if (kind == 0) {
            // A line keeps its own azimuth, tangent or not.
            const double az =
                i == 0 || pick(3) == 0 ? unit(rng) * 6.0 : road.EndAzimuthHorizontal();
            CGeoLine line = line_from_origin(az, length);
            ASSERT_EQ(road.AddHorizontal(georoad_Line, &line), 1);
        } else if (kind == 1) {
            add_curve(road, georoad_Arc, radius, length, dir);
        } else if (kind == 2) {
            add_curve(road, georoad_EntrySpiral, radius, length, dir);
        } else {
            add_curve(road, georoad_ExitSpiral, radius, length, dir);
        }
    }
    const int pvis = pick(6);
    double station = unit(rng) * 100.0;
    georoad_Error error = georoad_Error(0);
    for (int i = 0; i < pvis; ++i) {
        const int type = i == 0 ? 0 : pick(3);
        const double length = type == 0 ? 0.0 : 10.0 + unit(rng) * 40.0;
        station += length / 2.0 + 30.0 + unit(rng) * 100.0;
        ASSERT_EQ(road.AddVertical(static_cast<georoad_VertElementType>(type), station,
                                   100.0 + unit(rng) * 10.0, length, &error),
                  1);
        station += length / 2.0;
    }
    const int templates = pick(4);
    for (int t = 0; t < templates; ++t) {
        CGeoTemplate templ;
        templ.SetName(CString(numbered("T", t).c_str()));
        const int count = pick(6);
        for (int e = 0; e < count; ++e) {
            const int type = pick(6);
            unsigned char record[82] = {};
            double values[5];
            for (double& v : values) {
                v = unit(rng) * 4.0 - 1.0;
            }
            if (type == geotemp_Feature) {
                geotemp_FeatureData f{};
                f.Name[0] = static_cast<unsigned short>('A' + pick(26));
                f.ValueA = values[0];
                f.ValueB = values[1];
                std::memcpy(record, &f, sizeof f);
            } else {
                std::memcpy(record, values, sizeof values);
            }
            templ.AddElement(static_cast<geotemp_ElementType>(type), record);
        }
        ASSERT_EQ(road.AddTemplate(&templ), 1);
    }
    const int applications = templates > 0 ? pick(5) : 0;
    for (int a = 0; a < applications; ++a) {
        const std::string name = numbered("T", pick(templates));
        ASSERT_EQ(road.AddTemplateApplication(CString(name.c_str()), unit(rng) * 500.0,
                                              static_cast<geodef_RoadSide>(1 + pick(3))),
                  1);
    }
}

inline void expect_same_bits(double a, double b, const std::string& what) {
    EXPECT_EQ(bits_of(a), bits_of(b)) << what << ": " << a << " vs " << b;
}

inline void expect_same_point(CGeoPoint& a, CGeoPoint& b, const std::string& what) {
    const geo_nee ga = a.Grid();
    const geo_nee gb = b.Grid();
    expect_same_bits(ga.north, gb.north, what + " north");
    expect_same_bits(ga.east, gb.east, what + " east");
    expect_same_bits(ga.elev, gb.elev, what + " elevation");
}

/// Compares two roads element by element, to the bit.
inline void expect_same_road(CGeoRoad& a, CGeoRoad& b) {
    EXPECT_EQ(a.Name(), b.Name());
    ASSERT_EQ(a.NumberHorizontalElements(), b.NumberHorizontalElements());
    if (a.NumberHorizontalElements() > 0) {
        // Without elements the file keeps no point of beginning.
        expect_same_bits(a.StartStationHorizontal(), b.StartStationHorizontal(), "start station");
        expect_same_bits(a.StartAzimuthHorizontal(), b.StartAzimuthHorizontal(), "start azimuth");
        expect_same_bits(a.EndStationHorizontal(), b.EndStationHorizontal(), "end station");
        expect_same_bits(a.EndAzimuthHorizontal(), b.EndAzimuthHorizontal(), "end azimuth");
        expect_same_point(a.EndPtHorizontal(), b.EndPtHorizontal(), "end point");
        expect_same_point(a.StartPtHorizontal(), b.StartPtHorizontal(), "start point");
        expect_same_bits(a.StationInterval(), b.StationInterval(), "station interval");
    }
    for (int n = 0; n < a.NumberHorizontalElements(); ++n) {
        const std::string at = "element " + std::to_string(n);
        ASSERT_EQ(a.NthHorizontalType(n), b.NthHorizontalType(n)) << at;
        expect_same_bits(a.HorzElementStartStation(n), b.HorzElementStartStation(n), at);
        expect_same_bits(a.HorzElementStartAzimuth(n), b.HorzElementStartAzimuth(n), at);
        const geo_nee sa = a.HorzElementStartCoords(n);
        const geo_nee sb = b.HorzElementStartCoords(n);
        expect_same_bits(sa.north, sb.north, at + " start north");
        expect_same_bits(sa.east, sb.east, at + " start east");
        expect_same_bits(a.HorzElementEndStation(n), b.HorzElementEndStation(n), at);
    }
    ASSERT_EQ(a.NumberVerticalElements(), b.NumberVerticalElements());
    for (int n = 0; n < a.NumberVerticalElements(); ++n) {
        const georoad_VertElementType type = a.NthVerticalType(n);
        ASSERT_EQ(type, b.NthVerticalType(n));
        double va[8];
        double vb[8];
        ASSERT_EQ(a.GetNthVertical(n, type, va[0], va[1], va[2], va[3], va[4], va[5], va[6], va[7]),
                  1);
        ASSERT_EQ(b.GetNthVertical(n, type, vb[0], vb[1], vb[2], vb[3], vb[4], vb[5], vb[6], vb[7]),
                  1);
        for (int i = 0; i < 8; ++i) {
            expect_same_bits(va[i], vb[i],
                             "PVI " + std::to_string(n) + " value " + std::to_string(i));
        }
    }
    ASSERT_EQ(a.NumberTemplates(), b.NumberTemplates());
    for (int t = 0; t < a.NumberTemplates(); ++t) {
        CGeoTemplate ta;
        CGeoTemplate tb;
        a.GetNthTemplate(t, &ta);
        b.GetNthTemplate(t, &tb);
        EXPECT_EQ(ta.Name(), tb.Name());
        ASSERT_EQ(ta.NumberElements(), tb.NumberElements());
        for (int e = 0; e < ta.NumberElements(); ++e) {
            const geotemp_ElementType type = ta.NthElementType(e);
            ASSERT_EQ(type, tb.NthElementType(e));
            double xa[5];
            double xb[5];
            unsigned char ra[82] = {};
            unsigned char rb[82] = {};
            ASSERT_EQ(ta.GetNthElement(e, type, xa[0], xa[1], xa[2], xa[3], xa[4], ra), 1);
            ASSERT_EQ(tb.GetNthElement(e, type, xb[0], xb[1], xb[2], xb[3], xb[4], rb), 1);
            EXPECT_EQ(0, std::memcmp(ra, rb, sizeof ra));
            for (int i = 0; i < 5; ++i) {
                expect_same_bits(xa[i], xb[i], "template element value");
            }
        }
    }
    ASSERT_EQ(a.NumberTemplateApplications(), b.NumberTemplateApplications());
    for (int n = 0; n < a.NumberTemplateApplications(); ++n) {
        CString na;
        CString nb;
        double sa = 0;
        double sb = 0;
        geodef_RoadSide da = geodef_LeftSide;
        geodef_RoadSide db = geodef_RightSide;
        ASSERT_EQ(a.GetNthTemplateApplication(n, na, sa, da), 1);
        ASSERT_EQ(b.GetNthTemplateApplication(n, nb, sb, db), 1);
        EXPECT_EQ(na, nb);
        expect_same_bits(sa, sb, "application station");
        EXPECT_EQ(da, db);
    }
}

/// True when the road holds nothing.
inline bool road_is_empty(const CGeoRoad& road) {
    return road.NumberHorizontalElements() == 0 && road.NumberVerticalElements() == 0 &&
           road.NumberTemplates() == 0 && road.NumberTemplateApplications() == 0;
}

} // namespace qv5::test

#endif // QV5_TESTS_ROAD_ROAD_FILE_SUPPORT_H
