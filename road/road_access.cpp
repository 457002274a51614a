// Read-only access to a road's records for its iterators and searches. See road_access.h.
#include "road/road_access.h"

#include "qv5/georoad.h"
#include "qv5/geotemplate.h"

namespace qv5::detail {

namespace {

/// The road keeps its records in protected members. Pointers to those members, taken in the
/// scope of a class derived from the road, let the readers below use them on any road without
/// a cast of the road itself and without widening the road's interface.
struct RoadFields : CGeoRoad {
    static constexpr auto kHorz = &RoadFields::m_horzElements;
    static constexpr auto kNumHorz = &RoadFields::m_numHorzElements;
    static constexpr auto kVert = &RoadFields::m_vertElements;
    static constexpr auto kNumVert = &RoadFields::m_numVertElements;
    static constexpr auto kApps = &RoadFields::m_templateApplications;
    static constexpr auto kNumApps = &RoadFields::m_numTemplateApplications;
    static constexpr auto kTemplates = &RoadFields::m_templates;
    static constexpr auto kNumTemplates = &RoadFields::m_numTemplates;
    static constexpr auto kStartStation = &RoadFields::m_startStation;
    static constexpr auto kEndStation = &RoadFields::m_endStation;
    static constexpr auto kInterval = &RoadFields::m_stationInterval;
};

const HorzElementRecord& horizontal_record(const CGeoRoad& road, int n) {
    return (road.*RoadFields::kHorz)[n];
}

} // namespace

int RoadAccess::horizontal_count(const CGeoRoad& road) {
    return road.*RoadFields::kNumHorz;
}

int RoadAccess::horizontal_type(const CGeoRoad& road, int n) {
    return static_cast<int>(horizontal_record(road, n).type);
}

double RoadAccess::horizontal_start_station(const CGeoRoad& road, int n) {
    return horizontal_record(road, n).startStation;
}

void RoadAccess::copy_horizontal(const CGeoRoad& road, int n, HorizontalCopy& out) {
    const HorzElementRecord& r = horizontal_record(road, n);
    out.type = static_cast<int>(r.type);
    out.start_station = r.startStation;
    // Copy construction reads the source's fields and never its lazy accessors, so copying an
    // element that other threads also copy is safe.
    if (r.element == nullptr) {
        out.element = std::monostate{};
        return;
    }
    switch (r.type) {
    case georoad_Line:
        out.element = *static_cast<const CGeoLine*>(r.element);
        break;
    case georoad_Arc:
        out.element = *static_cast<const CGeoArc*>(r.element);
        break;
    case georoad_EntrySpiral:
        out.element = *static_cast<const CGeoEntrySpiral*>(r.element);
        break;
    case georoad_ExitSpiral:
        out.element = *static_cast<const CGeoExitSpiral*>(r.element);
        break;
    default:
        out.element = std::monostate{};
        break;
    }
}

double RoadAccess::start_station(const CGeoRoad& road) {
    return road.*RoadFields::kStartStation;
}

double RoadAccess::end_station(const CGeoRoad& road) {
    return road.*RoadFields::kEndStation;
}

double RoadAccess::station_interval(const CGeoRoad& road) {
    return road.*RoadFields::kInterval;
}

int RoadAccess::profile_count(const CGeoRoad& road) {
    return road.*RoadFields::kNumVert;
}

ProfileRecordView RoadAccess::profile_record(const CGeoRoad& road, int n) {
    const VertElementRecord& r = (road.*RoadFields::kVert)[n];
    return with_tangents(ProfileRecordView{
        static_cast<int>(r.type), r.station, r.elevation, r.curveStart, r.curveEnd, r.curveEndElev,
        r.gradeIn, r.gradeOut, r.curveRate, r.meanGrade, r.curveElevAtPVI, GEO_NULL, GEO_NULL});
}

int RoadAccess::application_count(const CGeoRoad& road) {
    return road.*RoadFields::kNumApps;
}

ApplicationView RoadAccess::application(const CGeoRoad& road, int n) {
    const TemplateApplicationRecord& r = (road.*RoadFields::kApps)[n];
    return ApplicationView{r.templateIndex, r.station, static_cast<int>(r.side)};
}

int RoadAccess::template_count(const CGeoRoad& road) {
    return road.*RoadFields::kNumTemplates;
}

const CGeoTemplate& RoadAccess::template_at(const CGeoRoad& road, int n) {
    return (road.*RoadFields::kTemplates)[n];
}

} // namespace qv5::detail
