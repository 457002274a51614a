// PROJ as an independent reference for the geodesy tests: a small owner of one PROJ operation.
#ifndef QV5_TESTS_GEODESY_PROJ_REFERENCE_H
#define QV5_TESTS_GEODESY_PROJ_REFERENCE_H

#include <proj.h>

#include <cstdio>
#include <string>

namespace qv5::test {

inline constexpr double kRadiansPerDegree = 0.017453292519943295;

/// One PROJ operation built from a proj-string; angles in and out are radians.
class ProjOperation {
public:
    explicit ProjOperation(const std::string& definition)
        : m_context(proj_context_create()),
          m_operation(proj_create(m_context, definition.c_str())) {}
    ProjOperation(const ProjOperation&) = delete;
    ProjOperation& operator=(const ProjOperation&) = delete;
    ~ProjOperation() {
        proj_destroy(m_operation);
        proj_context_destroy(m_context);
    }

    bool ok() const { return m_operation != nullptr; }

    /// Forward: (lon, lat) radians -> (x east, y north) metres, or any 3-D operation.
    PJ_COORD forward(double a, double b, double c = 0.0) const {
        return proj_trans(m_operation, PJ_FWD, proj_coord(a, b, c, 0.0));
    }
    PJ_COORD inverse(double a, double b, double c = 0.0) const {
        return proj_trans(m_operation, PJ_INV, proj_coord(a, b, c, 0.0));
    }

private:
    PJ_CONTEXT* m_context;
    PJ* m_operation;
};

/// The ellipsoidal stereographic projection on WGS84 about an origin given in radians, with
/// scale 1 and no false origin: the same formulas as CGeoStereographic.
inline std::string stereographic_definition(double lat0, double lon0) {
    char text[200];
    std::snprintf(text, sizeof text,
                  "+proj=stere +lat_0=%.17g +lon_0=%.17g +k_0=1 +x_0=0 +y_0=0 +ellps=WGS84",
                  lat0 / kRadiansPerDegree, lon0 / kRadiansPerDegree);
    return text;
}

} // namespace qv5::test

#endif
