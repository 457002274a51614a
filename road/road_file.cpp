// The road file: CGeoRoad::Write, CGeoRoad::Read and georoad_GetInternalName.
//
// Writing lays the whole file out in memory (records chained as they are appended, the header
// put in front last) and hands it to the platform in one write, so a road is on disk whole or,
// after a failed write, not at all. Reading takes the file's bytes and replays them through the
// road's own edit operations, so a file can never build a road that editing could not.
#include "qv5/geoarc.h"
#include "qv5/geoline.h"
#include "qv5/georoad.h"
#include "qv5/geospiral.h"
#include "qv5/geotemplate.h"

#include "platform/files.h"
#include "platform/text_codec.h"
#include "road/road_file_format.h"

#include <new>
#include <string>

using namespace qv5::detail;

namespace {

/// The file being read: its bytes and what the reader found.
struct RoadFileInput {
    std::span<const unsigned char> bytes;
    georoad_FileReport report;
};

/// A UTF-16 path as the platform takes it; empty for a null or empty path.
std::string platform_path(unsigned short const* path) {
    if (path == nullptr) {
        return {};
    }
    std::u16string units;
    for (; *path != 0; ++path) {
        units.push_back(static_cast<char16_t>(*path));
    }
    return utf16_to_utf8(units);
}

/// A 33-unit name field: at most 32 units of `text`, zero-padded.
void put_name_field(unsigned char* out, const unsigned short* text) {
    std::size_t u = 0;
    for (; text != nullptr && u + 1 < kRoadNameUnits && text[u] != 0; ++u) {
        put_u16(out + 2 * u, text[u]);
    }
    for (; u < kRoadNameUnits; ++u) {
        put_u16(out + 2 * u, 0);
    }
}

void set_report(georoad_FileReport* out, const georoad_FileReport& report) {
    if (out != nullptr) {
        *out = report;
    }
}

georoad_FileReport cannot_open() {
    georoad_FileReport report = clean_report(0);
    report.problem = georoad_FileCannotOpen;
    return report;
}

} // namespace

int CGeoRoad::WriteElements(void* file, qv5def_FileHeader& header,
                            unsigned short& nextDirectoryEntry) {
    auto* out = static_cast<RoadFileOutput*>(file);
    if (out == nullptr) {
        return 0;
    }
    unsigned char data[96];

    // The point of beginning goes with the first element: a road without elements stores none.
    if (m_numHorzElements > 0) {
        if (!out->begin_section(header, nextDirectoryEntry, SectionType::horizontal)) {
            return 0;
        }
        const geo_nee start = m_startPt.Grid();
        put_f64(data, start.north);
        put_f64(data + 8, start.east);
        put_f64(data + 16, start.elev);
        put_f64(data + 24, m_startAzimuth);
        put_f64(data + 32, m_startStation);
        put_f64(data + 40, m_stationInterval);
        if (!out->add_record(RecordType::point_of_beginning, data, 48)) {
            return 0;
        }
        for (int i = 0; i < m_numHorzElements; ++i) {
            const HorzElementRecord& record = m_horzElements[i];
            bool added = true;
            switch (record.type) {
            case georoad_Line: {
                auto* line = static_cast<CGeoLine*>(record.element);
                put_f64(data, line->GridAzimuth());
                put_f64(data + 8, line->GridHDistance());
                added = out->add_record(RecordType::line, data, 16);
                break;
            }
            case georoad_Arc: {
                auto* arc = static_cast<CGeoArc*>(record.element);
                put_i32(data, arc->Direction() == geodef_Right ? 1 : 0);
                put_f64(data + 4, arc->Radius());
                put_f64(data + 12, arc->GridArcLength());
                added = out->add_record(RecordType::arc, data, 20);
                break;
            }
            case georoad_EntrySpiral: {
                auto* spiral = static_cast<CGeoEntrySpiral*>(record.element);
                put_i32(data, 1);
                put_i32(data + 4, spiral->Direction() == geodef_Right ? 1 : 0);
                put_f64(data + 8, spiral->Radius());
                put_f64(data + 16, spiral->Length());
                added = out->add_record(RecordType::spiral, data, 24);
                break;
            }
            case georoad_ExitSpiral: {
                auto* spiral = static_cast<CGeoExitSpiral*>(record.element);
                put_i32(data, 0);
                put_i32(data + 4, spiral->Direction() == geodef_Right ? 1 : 0);
                put_f64(data + 8, spiral->Radius());
                put_f64(data + 16, spiral->Length());
                added = out->add_record(RecordType::spiral, data, 24);
                break;
            }
            default:
                break; // a record without an element has nothing to store
            }
            if (!added) {
                return 0;
            }
        }
    }

    if (m_numVertElements > 0) {
        if (!out->begin_section(header, nextDirectoryEntry, SectionType::vertical)) {
            return 0;
        }
        const unsigned char reserved[8] = {};
        if (!out->add_record(RecordType::vertical_reserved, reserved, sizeof reserved)) {
            return 0;
        }
        for (int i = 0; i < m_numVertElements; ++i) {
            const georoad_VertElementType type = m_vertElements[i].type;
            double station = 0;
            double elevation = 0;
            double at_pvi = 0;
            double grade_in = 0;
            double grade_out = 0;
            double curve_start = 0;
            double curve_end = 0;
            double length = 0;
            GetNthVertical(i, type, station, elevation, at_pvi, grade_in, grade_out, curve_start,
                           curve_end, length);
            put_f64(data, station);
            put_f64(data + 8, elevation);
            put_f64(data + 16, length);
            const RecordType record = type == georoad_VertPoint      ? RecordType::pvi_point
                                      : type == georoad_VertParabola ? RecordType::pvi_parabola
                                                                     : RecordType::pvi_circular;
            if (!out->add_record(record, data, record == RecordType::pvi_point ? 16 : 24)) {
                return 0;
            }
        }
    }

    if (m_numTemplates > 0) {
        if (!out->begin_section(header, nextDirectoryEntry, SectionType::templates)) {
            return 0;
        }
        for (int t = 0; t < m_numTemplates; ++t) {
            const CGeoTemplate& templ = m_templates[t];
            put_name_field(data, templ.Name().GetString());
            if (!out->add_record(RecordType::template_start, data, 2 * kRoadNameUnits)) {
                return 0;
            }
            for (int e = 0; e < templ.NumberElements(); ++e) {
                const geotemp_ElementType type = templ.NthElementType(e);
                const std::uint16_t record = record_of_template_element_type(type);
                if (record == 0) {
                    continue; // an element of unknown type carries no record to store
                }
                alignas(double) unsigned char host[96];
                double h = 0;
                double v = 0;
                double dh = 0;
                double dv = 0;
                double angle = 0;
                templ.GetNthElement(e, type, h, v, dh, dv, angle, host);
                template_record_to_file(type, host, data);
                if (!out->add_record(static_cast<RecordType>(record), data,
                                     template_element_bytes(type))) {
                    return 0;
                }
            }
        }
    }

    if (m_numTemplateApplications > 0) {
        if (!out->begin_section(header, nextDirectoryEntry, SectionType::applications)) {
            return 0;
        }
        for (int a = 0; a < m_numTemplateApplications; ++a) {
            CString name;
            double station = 0;
            geodef_RoadSide side = geodef_BothSides;
            // An application whose template was deleted names nothing a reader could find.
            if (!GetNthTemplateApplication(a, name, station, side)) {
                continue;
            }
            put_name_field(data, name.GetString());
            put_f64(data + 66, station);
            put_i32(data + 74, static_cast<std::int32_t>(side));
            if (!out->add_record(RecordType::application, data, 78)) {
                return 0;
            }
        }
    }
    return 1;
}

int CGeoRoad::Write(unsigned short const* path, georoad_Error* error) {
    const std::string file = platform_path(path);
    if (file.empty()) {
        if (error != nullptr) {
            *error = georoad_WriteError;
        }
        return 0;
    }
    bool laid_out = false;
    try {
        RoadFileOutput out;
        // Every record is at most a header and 82 bytes of data; a section adds one record.
        std::size_t records = static_cast<std::size_t>(m_numHorzElements) + m_numVertElements +
                              m_numTemplates + m_numTemplateApplications + 4;
        for (int t = 0; t < m_numTemplates; ++t) {
            records += static_cast<std::size_t>(m_templates[t].NumberElements());
        }
        out.reserve(kFileHeaderBytes + records * (kRecordHeaderBytes + 82));
        qv5def_FileHeader header = new_file_header(m_name.GetString());
        unsigned short next_entry = 0;
        laid_out = WriteElements(&out, header, next_entry) != 0;
        out.put_header(header);
        const std::vector<unsigned char>& bytes = out.bytes();
        const std::string_view content(reinterpret_cast<const char*>(bytes.data()),
                                       laid_out ? bytes.size() : 0);
        switch (write_new_file(file, content)) {
        case WriteStatus::cannot_create:
            if (error != nullptr) {
                *error = georoad_WriteError;
            }
            return 0;
        case WriteStatus::write_failed:
            return 0;
        case WriteStatus::written:
            break;
        }
    } catch (const std::bad_alloc&) {
        return 0; // nothing was created: the file is made only once its bytes are laid out
    }
    if (!laid_out) {
        delete_file(file);
        return 0;
    }
    m_filePath = CString(path);
    m_modified = 0;
    return 1;
}

int CGeoRoad::ReadElements(void* file, qv5def_FileHeader header) {
    auto* in = static_cast<RoadFileInput*>(file);
    if (in == nullptr) {
        return 0;
    }

    // Each record becomes the edit a user would make; a refusal ends the reading.
    class Replay : public RoadRecordVisitor {
    public:
        explicit Replay(CGeoRoad& road) : m_road(road) {}

        georoad_FileProblem point_of_beginning(const double v[6]) override {
            m_road.m_startPt.SetGrid(v[0], v[1], v[2]);
            m_road.m_startAzimuth = v[3];
            m_road.m_startStation = v[4];
            m_road.m_stationInterval = v[5];
            m_road.m_endPt = m_road.m_startPt;
            m_road.m_endStation = v[4];
            m_road.m_endAzimuth = v[3];
            return georoad_FileOk;
        }
        georoad_FileProblem line(double azimuth, double length) override {
            // Lines keep their own azimuth.
            CGeoLine element;
            element.Set(m_road.m_endPt, azimuth, length, 0.0);
            return added(m_road.AddHorizontal(georoad_Line, &element));
        }
        georoad_FileProblem spiral(bool entry, bool right, double radius, double length) override {
            // Arcs and spirals carry no azimuth: they are laid tangent to the road's end.
            const geodef_Direction direction = right ? geodef_Right : geodef_Left;
            if (entry) {
                CGeoEntrySpiral element;
                element.Set(m_road.m_endPt, m_road.m_endAzimuth, direction, radius, length);
                return added(m_road.AddHorizontal(georoad_EntrySpiral, &element));
            }
            CGeoExitSpiral element;
            element.Set(m_road.m_endPt, m_road.m_endAzimuth, direction, radius, length);
            return added(m_road.AddHorizontal(georoad_ExitSpiral, &element));
        }
        georoad_FileProblem arc(bool right, double radius, double length) override {
            CGeoArc element;
            element.Set(m_road.m_endPt, m_road.m_endAzimuth, radius, length,
                        right ? geodef_Right : geodef_Left, m_road.m_endStation);
            return added(m_road.AddHorizontal(georoad_Arc, &element));
        }
        georoad_FileProblem pvi(int type, double station, double elevation,
                                double length) override {
            georoad_Error ignored = georoad_VerticalError;
            return added(m_road.AddVertical(static_cast<georoad_VertElementType>(type), station,
                                            elevation, length, &ignored));
        }
        georoad_FileProblem application(const unsigned short* name, double station,
                                        int side) override {
            return m_road.AddTemplateApplication(CString(name), station,
                                                 static_cast<geodef_RoadSide>(side))
                       ? georoad_FileOk
                       : georoad_FileUnknownTemplate;
        }
        georoad_FileProblem template_start(const unsigned short* name) override {
            m_working.Reset();
            m_working.SetName(CString(name));
            return georoad_FileOk;
        }
        georoad_FileProblem template_element(int type, const void* record) override {
            return added(m_working.AddElement(static_cast<geotemp_ElementType>(type), record));
        }
        georoad_FileProblem template_finish() override {
            return added(m_road.AddTemplate(&m_working));
        }

    private:
        static georoad_FileProblem added(int result) {
            return result ? georoad_FileOk : georoad_FileElementRefused;
        }
        CGeoRoad& m_road;
        CGeoTemplate m_working; // the template being built
    };

    Replay replay(*this);
    return walk_road_file(in->bytes, header, replay, in->report) ? 1 : 0;
}

int CGeoRoad::ReadBytes(const unsigned char* bytes, std::size_t size, georoad_Error* error,
                        georoad_FileReport* report) {
    Reset();
    if (bytes == nullptr) {
        size = 0;
    }
    const unsigned char empty = 0;
    RoadFileInput in{std::span<const unsigned char>(bytes != nullptr ? bytes : &empty, size),
                     clean_report(size)};
    qv5def_FileHeader header;
    if (!decode_file_header(in.bytes, header, in.report)) {
        if (error != nullptr) {
            *error = georoad_ReadError;
        }
        set_report(report, in.report);
        return 0;
    }
    m_name = CString(header.name);
    int ok = 0;
    try {
        ok = ReadElements(&in, header);
    } catch (const std::bad_alloc&) {
        in.report.problem = georoad_FileTooMany;
        ok = 0;
    }
    set_report(report, in.report);
    if (!ok) {
        Reset();
        return 0;
    }
    m_modified = 0;
    return 1;
}

int CGeoRoad::Read(unsigned short const* path, georoad_Error* error, georoad_FileReport* report) {
    Reset();
    const std::string file = platform_path(path);
    std::string content;
    ReadStatus status = ReadStatus::failed;
    try {
        if (!file.empty()) {
            status = read_whole_file(file, kMaxRoadFileBytes, content);
        }
    } catch (const std::bad_alloc&) {
        status = ReadStatus::failed;
    }
    if (status != ReadStatus::read) {
        if (error != nullptr) {
            *error = georoad_ReadError;
        }
        set_report(report, cannot_open());
        return 0;
    }
    georoad_FileReport found{};
    const int ok = ReadBytes(reinterpret_cast<const unsigned char*>(content.data()), content.size(),
                             error, &found);
    set_report(report, found);
    // The path is taken once the header was found to be a road file's.
    if (ok || found.problem >= georoad_FileRecordOutside) {
        m_filePath = CString(path);
    }
    return ok;
}

int CGeoRoad::Read(unsigned short const* path, georoad_Error* error) {
    return Read(path, error, nullptr);
}

int georoad_GetInternalName(unsigned short const* path, unsigned short* name) {
    const std::string file = platform_path(path);
    std::string content;
    if (name == nullptr || file.empty() ||
        read_file_start(file, kFileHeaderBytes, content) != ReadStatus::read) {
        return 0;
    }
    qv5def_FileHeader header;
    georoad_FileReport report{};
    const auto* bytes = reinterpret_cast<const unsigned char*>(content.data());
    if (!decode_file_header(std::span<const unsigned char>(bytes, content.size()), header,
                            report)) {
        return 0;
    }
    std::size_t u = 0;
    for (; u + 1 < kRoadNameUnits && header.name[u] != 0; ++u) {
        name[u] = header.name[u];
    }
    name[u] = 0;
    return 1;
}
