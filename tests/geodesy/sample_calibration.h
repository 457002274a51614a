// The bundled sample calibration (data/sample-calibration.csv), generated here: positions near
// 52.1 N 5.2 E projected by PROJ's stereographic about the mean of the horizontal control
// points, then given a known similarity and inclined plane (KnownSite), rounded to millimetres.
// Regenerate with build/<preset>/tests/qv5_make_sample_calibration > data/sample-calibration.csv
#ifndef QV5_TESTS_GEODESY_SAMPLE_CALIBRATION_H
#define QV5_TESTS_GEODESY_SAMPLE_CALIBRATION_H

#include "calibration_points.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace qv5::test {

struct SampleRow {
    const char* name;
    const char* latitude;  ///< as written in the file
    const char* longitude; ///< as written in the file
    double height;         ///< ellipsoidal, metres
    const char* use;
};

/// The control points; two are written in degrees, minutes and seconds, and CHK1 is a check
/// point that takes part in neither solution.
inline const std::vector<SampleRow>& sample_rows() {
    static const std::vector<SampleRow> rows = {
        {"CP1", "52.081200000", "5.163000000", 44.100, "hv"},
        {"CP2", "52.103500000", "5.221900000", 45.730, "hv"},
        {"CP3", "52 07 47.28000N", "5 10 49.44000E", 43.880, "hv"},
        {"CP4", "52.090100000", "5.248700000", 47.020, "hv"},
        {"CP5", "52.118700000", "5.265000000", 46.150, "h"},
        {"CP6", "52:04:08.04000", "5:12:37.80000", 44.670, "hv"},
        {"CHK1", "52.100000000", "5.210000000", 45.000, "-"},
    };
    return rows;
}

/// Radians of an angle as the file writes it: decimal degrees, or D M S separated by blanks or
/// colons with an optional hemisphere letter (the forms the program reads, converted by the
/// same formula as _dmstorad).
inline double sample_radians(const char* text) {
    double d = 0.0;
    double m = 0.0;
    double s = 0.0;
    char hemisphere = 0;
    if (std::sscanf(text, "%lf%*[ :]%lf%*[ :]%lf%c", &d, &m, &s, &hemisphere) >= 3) {
        const double r =
            d * 0.017453292519943295 + m * 0.0002908882086657216 + s * 4.84813681109536e-6;
        return hemisphere == 'S' || hemisphere == 'W' ? -r : r;
    }
    return std::strtod(text, nullptr) * 0.017453292519943295;
}

inline std::string sample_calibration_csv() {
    std::vector<geo_llh> horizontal;
    for (const SampleRow& row : sample_rows()) {
        if (std::string(row.use).find('h') != std::string::npos) {
            horizontal.push_back(
                geo_llh{sample_radians(row.latitude), sample_radians(row.longitude), row.height});
        }
    }
    const KnownSite site(horizontal);
    std::string text =
        "# Sample site calibration for 'qv5 calibrate' (see docs/cli.md).\n"
        "# WGS84 positions near 52.1 N 5.2 E; site coordinates made from them with PROJ's\n"
        "# stereographic projection about the mean of the horizontal points, a similarity\n"
        "# (scale 1.000045, rotation 0.0123 rad, projection centre at N 451000 E 132000) and an\n"
        "# inclined plane (height shift -43.21 m, slopes 2.5e-5 north and -1.75e-5 east),\n"
        "# rounded to millimetres.\n"
        "# CHK1 is a check point: it takes part in neither solution.\n"
        "name,latitude,longitude,height,north,east,elevation,use\n";
    for (const SampleRow& row : sample_rows()) {
        const geo_llh llh{sample_radians(row.latitude), sample_radians(row.longitude), row.height};
        const geo_nee nee = site.site(llh);
        char line[200];
        std::snprintf(line, sizeof line, "%s,%s,%s,%.3f,%.3f,%.3f,%.3f,%s\n", row.name,
                      row.latitude, row.longitude, row.height, nee.north, nee.east, nee.elev,
                      row.use);
        text += line;
    }
    return text;
}

} // namespace qv5::test

#endif
