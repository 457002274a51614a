// The section profile: a start and end point and the break points between them.
#include "qv5/geosection.h"

#include "qv5/geosurvey.h"
#include "section/section_math.h"

#include <new>
#include <vector>

using qv5::detail::SectionBreak;

/// The break points, held jointly by a section and the sections copy-constructed from it.
struct CGeoSection::Segments {
    std::vector<SectionBreak> breaks;
};

namespace {

/// The break point at n, or null when there is none (negative indexes included).
const SectionBreak* break_at(const std::vector<SectionBreak>* breaks, int n) {
    if (breaks == nullptr || n < 0 || static_cast<std::size_t>(n) >= breaks->size()) {
        return nullptr;
    }
    return &(*breaks)[static_cast<std::size_t>(n)];
}

/// What an empty or missing name reads as.
constexpr unsigned short kEmptyName[1] = {0};

} // namespace

CGeoSection::CGeoSection()
    : m_start{GEO_NULL, GEO_NULL, GEO_NULL}, m_end{GEO_NULL, GEO_NULL, GEO_NULL},
      m_azimuth(GEO_NULL), m_length(GEO_NULL), m_segments(std::make_shared<Segments>()) {}

CGeoSection::CGeoSection(geo_nee& start, geo_nee& end) : CGeoSection() {
    Set(start, end);
}

// Shares the source's break points: both sections hold the list jointly, and whichever is
// destroyed last releases it.
CGeoSection::CGeoSection(const CGeoSection& other) = default;

CGeoSection& CGeoSection::operator=(const CGeoSection& other) {
    if (this == &other) {
        return *this;
    }
    m_start = other.m_start;
    m_end = other.m_end;
    m_azimuth = other.m_azimuth;
    m_length = other.m_length;
    m_segments = std::make_shared<Segments>(*other.m_segments);
    return *this;
}

CGeoSection::~CGeoSection() = default;

void CGeoSection::Set(geo_nee& start, geo_nee& end) {
    m_start = start;
    m_end = end;
    m_azimuth = geo_grid_bearing(start, end);
    m_length = geo_horz_dist(start, end);
    // A list shared with a copy is left to the copy; this section starts a fresh one.
    if (m_segments.use_count() > 1) {
        m_segments = std::make_shared<Segments>();
    } else {
        m_segments->breaks.clear();
    }
}

geo_nee& CGeoSection::Start() {
    return m_start;
}

geo_nee& CGeoSection::End() {
    return m_end;
}

double CGeoSection::Azimuth() const {
    return m_azimuth;
}

double CGeoSection::Length() const {
    return m_length;
}

int CGeoSection::NumberOfSegments() const {
    return static_cast<int>(m_segments->breaks.size());
}

double CGeoSection::NthStation(int n) const {
    const SectionBreak* b = break_at(&m_segments->breaks, n);
    return b != nullptr ? b->station : GEO_NULL;
}

double CGeoSection::NthElevation(int n) const {
    const SectionBreak* b = break_at(&m_segments->breaks, n);
    return b != nullptr ? b->elevation : GEO_NULL;
}

unsigned long CGeoSection::NthUserDWORD(int n) const {
    const SectionBreak* b = break_at(&m_segments->breaks, n);
    return b != nullptr ? b->user : 0UL;
}

const unsigned short* CGeoSection::NthName(int n) const {
    const SectionBreak* b = break_at(&m_segments->breaks, n);
    return b != nullptr ? b->name : kEmptyName;
}

geosect_SegmentType CGeoSection::NthSegmentType(int n) const {
    const SectionBreak* b = break_at(&m_segments->breaks, n);
    return b != nullptr ? b->type : geosect_NoSurface;
}

int CGeoSection::AddSegment(double station, double elevation, unsigned long user,
                            const unsigned short* name, geosect_SegmentType type) {
    const SectionBreak b =
        qv5::detail::make_break(station, elevation, static_cast<std::uint32_t>(user), name, type);
    // A section sharing its list with a copy takes a list of its own before changing it, so
    // that the copy keeps seeing what it was given.
    if (m_segments.use_count() > 1) {
        m_segments = std::make_shared<Segments>(*m_segments);
    }
    m_segments->breaks.push_back(b);
    return 1;
}

int CGeoSection::GetNthSegmentPoint(int n, geo_nee& point) const {
    const SectionBreak* b = break_at(&m_segments->breaks, n);
    if (b == nullptr) {
        return 0;
    }
    geo_nee p;
    geo_grid_follow(m_start, m_azimuth, b->station, 0.0, p);
    p.elev = b->elevation;
    point = p;
    return 1;
}

void CGeoSection::StationPt(double station, geo_nee& point) const {
    geo_nee p;
    geo_grid_follow(m_start, m_azimuth, station, 0.0, p);
    p.elev = Elevation(station);
    point = p;
}

double CGeoSection::Elevation(double station) const {
    const auto& breaks = m_segments->breaks;
    return qv5::detail::span_elevation(
        qv5::detail::find_span(breaks.data(), breaks.size(), m_length, m_start.elev, station),
        station);
}

double CGeoSection::Grade(double station) const {
    const auto& breaks = m_segments->breaks;
    return qv5::detail::span_grade(
        qv5::detail::find_span(breaks.data(), breaks.size(), m_length, m_start.elev, station),
        station);
}
