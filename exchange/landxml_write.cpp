// Writing a road as a LandXML 1.2 document.
//
// Every element is written with its station, its dimensions, its directions and the points
// that office software draws from (Start, End, and Center and PI where they exist), so that
// a program reading either the dimensions or the coordinates builds the same alignment. The
// numbers are written with the fewest digits that read back to the same double, in the unit
// the caller chose.
#include "exchange/landxml_text.h"
#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/geopoint.h"
#include "qv5/geospiral.h"
#include "qv5/hostfw.h"

#include <cmath>
#include <ctime>
#include <string>

namespace qv5::landxml {

namespace {

/// A central angle beyond which a curve has no PI worth writing (the tangents barely meet).
constexpr double kLargestAngleWithPI = 3.14;

std::string xml_escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            if (static_cast<unsigned char>(c) >= 0x20 || c == '\t') {
                out += c;
            }
        }
    }
    return out;
}

class Writer {
public:
    explicit Writer(const WriteOptions& options)
        : m_options(options), m_scale(detail::metres_per_unit(options.linear)) {}

    std::string length(double metres) const { return detail::format_number(metres / m_scale); }

    std::string direction(double azimuth) const {
        return detail::format_number(
            detail::from_radians(detail::direction_from_azimuth(azimuth), m_options.angular));
    }

    std::string point(const char* name, double north, double east) const {
        return std::string("<") + name + ">" + length(north) + " " + length(east) + "</" + name +
               ">";
    }

    std::string point(const char* name, CGeoPoint& p) const {
        const geo_nee& g = p.Grid();
        return point(name, g.north, g.east);
    }

    /// The intersection of the tangents at both ends, when they meet ahead of the start.
    std::string pi(CGeoPoint& start, double entry, CGeoPoint& end, double exit) const {
        const geo_nee& a = start.Grid();
        const geo_nee& b = end.Grid();
        const double da_n = std::cos(entry), da_e = std::sin(entry);
        const double db_n = std::cos(exit), db_e = std::sin(exit);
        const double det = da_n * db_e - da_e * db_n;
        if (std::fabs(det) < 1e-12) {
            return "";
        }
        const double t = ((b.north - a.north) * db_e - (b.east - a.east) * db_n) / det;
        const double north = a.north + t * da_n;
        const double east = a.east + t * da_e;
        // A curve of half a turn or more has no PI ahead of its start, and one of nearly half a
        // turn has it far away: the PI is only a check on the curve, so it is left out.
        if (!(t > 0.0) || !detail::within_measure(north) || !detail::within_measure(east)) {
            return "";
        }
        return point("PI", north, east);
    }

    std::string date() const {
        if (!m_options.date.empty()) {
            return m_options.date;
        }
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        char text[16];
        std::strftime(text, sizeof text, "%Y-%m-%d", &local);
        return text;
    }

    std::string time() const {
        if (!m_options.time.empty()) {
            return m_options.time;
        }
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        char text[16];
        std::strftime(text, sizeof text, "%H:%M:%S", &local);
        return text;
    }

    std::string units() const {
        const char* system = detail::is_imperial(m_options.linear) ? "Imperial" : "Metric";
        const bool imperial = detail::is_imperial(m_options.linear);
        return std::string("  <Units>\n    <") + system + " linearUnit=\"" +
               detail::linear_unit_name(m_options.linear) + "\" areaUnit=\"" +
               (imperial ? "squareFoot" : "squareMeter") + "\" volumeUnit=\"" +
               (imperial ? "cubicYard" : "cubicMeter") + "\" angularUnit=\"" +
               detail::angular_unit_name(m_options.angular) + "\" directionUnit=\"" +
               detail::angular_unit_name(m_options.angular) + "\"/>\n  </Units>\n";
    }

    void line(CGeoLine& line, double station, std::string& out) const {
        out += "        <Line staStart=\"" + length(station) + "\" length=\"" +
               length(line.GridHDistance()) + "\" dir=\"" + direction(line.GridAzimuth()) + "\">" +
               point("Start", line.StartPt()) + point("End", line.EndPt()) + "</Line>\n";
    }

    void arc(CGeoArc& arc, double station, std::string& out) const {
        const double entry = arc.EntryAzimuth();
        const double exit = arc.GridAzimuth(arc.GridArcLength());
        CGeoPoint start = arc.CentreToStart().EndPt();
        out += "        <Curve rot=\"" +
               std::string(arc.Direction() == geodef_Right ? "cw" : "ccw") +
               "\" crvType=\"arc\" staStart=\"" + length(station) + "\" radius=\"" +
               length(arc.Radius()) + "\" length=\"" + length(arc.GridArcLength()) +
               "\" dirStart=\"" + direction(entry) + "\" dirEnd=\"" + direction(exit) + "\">" +
               point("Start", start) + point("Center", arc.CentrePt()) + point("End", arc.EndPt());
        if (arc.Angle() < kLargestAngleWithPI) {
            out += pi(start, entry, arc.EndPt(), exit);
        }
        out += "</Curve>\n";
    }

    template <typename Spiral>
    void spiral(Spiral& spiral, bool entry_spiral, double station, std::string& out) const {
        const std::string radius = length(spiral.Radius());
        out += "        <Spiral spiType=\"clothoid\" rot=\"" +
               std::string(spiral.Direction() == geodef_Right ? "cw" : "ccw") + "\" staStart=\"" +
               length(station) + "\" length=\"" + length(spiral.Length()) + "\" radiusStart=\"" +
               (entry_spiral ? std::string("INF") : radius) + "\" radiusEnd=\"" +
               (entry_spiral ? radius : std::string("INF")) + "\" dirStart=\"" +
               direction(spiral.EntryAzimuth()) + "\" dirEnd=\"" + direction(spiral.ExitAzimuth()) +
               "\">" + point("Start", spiral.StartPt()) +
               pi(spiral.StartPt(), spiral.EntryAzimuth(), spiral.EndPt(), spiral.ExitAzimuth()) +
               point("End", spiral.EndPt()) + "</Spiral>\n";
    }

    void geometry(CGeoRoad& road, std::string& out) const {
        out += "      <CoordGeom>\n";
        for (int n = 0; n < road.NumberHorizontalElements(); ++n) {
            const georoad_HorzElementType type = road.NthHorizontalType(n);
            double station = 0.0, azimuth = 0.0;
            CGeoPoint start;
            switch (type) {
            case georoad_Line: {
                CGeoLine element;
                if (road.GetNthHorizontal(n, type, station, start, azimuth, &element) != 0) {
                    line(element, station, out);
                }
                break;
            }
            case georoad_Arc: {
                CGeoArc element;
                if (road.GetNthHorizontal(n, type, station, start, azimuth, &element) != 0) {
                    arc(element, station, out);
                }
                break;
            }
            case georoad_EntrySpiral: {
                CGeoEntrySpiral element;
                if (road.GetNthHorizontal(n, type, station, start, azimuth, &element) != 0) {
                    spiral(element, true, station, out);
                }
                break;
            }
            case georoad_ExitSpiral: {
                CGeoExitSpiral element;
                if (road.GetNthHorizontal(n, type, station, start, azimuth, &element) != 0) {
                    spiral(element, false, station, out);
                }
                break;
            }
            default:
                break;
            }
        }
        out += "      </CoordGeom>\n";
    }

    void profile(CGeoRoad& road, const std::string& name, std::string& out) const {
        const int count = road.NumberVerticalElements();
        if (count == 0) {
            return;
        }
        out += "      <Profile name=\"" + name + "\">\n        <ProfAlign name=\"" + name + "\">\n";
        for (int n = 0; n < count; ++n) {
            const georoad_VertElementType type = road.NthVerticalType(n);
            double station = 0.0, elevation = 0.0, at_pvi = 0.0, grade_in = 0.0, grade_out = 0.0;
            double curve_start = 0.0, curve_end = 0.0, curve_length = 0.0;
            if (road.GetNthVertical(n, type, station, elevation, at_pvi, grade_in, grade_out,
                                    curve_start, curve_end, curve_length) == 0) {
                continue;
            }
            const std::string text = length(station) + " " + length(elevation);
            switch (type) {
            case georoad_VertPoint:
                out += "          <PVI>" + text + "</PVI>\n";
                break;
            case georoad_VertParabola:
                out += "          <ParaCurve length=\"" + length(curve_length) + "\">" + text +
                       "</ParaCurve>\n";
                break;
            case georoad_VertCircular:
                out += "          <CircCurve length=\"" + length(curve_length) + "\">" + text +
                       "</CircCurve>\n";
                break;
            default:
                break;
            }
        }
        out += "        </ProfAlign>\n      </Profile>\n";
    }

private:
    const WriteOptions& m_options;
    double m_scale;
};

} // namespace

std::string write_road(CGeoRoad& road, const WriteOptions& options) {
    const Writer writer(options);
    const std::string name = xml_escaped(road.Name().ToUtf8());
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<LandXML xmlns=\"http://www.landxml.org/schema/LandXML-1.2\" "
                      "version=\"1.2\" date=\"" +
                      writer.date() + "\" time=\"" + writer.time() + "\">\n";
    out += writer.units();
    out += "  <Application name=\"qv5\" manufacturer=\"QV5lib\"/>\n";
    out += "  <Alignments>\n    <Alignment name=\"" + name + "\" length=\"" +
           writer.length(road.EndStationHorizontal() - road.StartStationHorizontal()) +
           "\" staStart=\"" + writer.length(road.StartStationHorizontal()) + "\">\n";
    writer.geometry(road, out);
    writer.profile(road, name, out);
    out += "    </Alignment>\n  </Alignments>\n</LandXML>\n";
    return out;
}

} // namespace qv5::landxml
