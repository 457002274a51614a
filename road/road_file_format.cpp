// The road file's bytes. The writer lays records end to end and back-patches the previous
// record's next pointer in memory, so a file is produced by one write; the reader walks the
// chains over a byte span and trusts no offset, length or count it finds.
#include "road/road_file_format.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace qv5::detail {
namespace {

/// Bytes of a double and of a UTF-16 unit in the file.
constexpr std::size_t kDoubleBytes = 8;
constexpr std::size_t kUnitBytes = 2;
/// A template feature record: the 33-unit name, then two doubles.
constexpr std::size_t kFeatureNameBytes = kRoadNameUnits * kUnitBytes;
/// A fixed point record: three doubles, then reserved bytes carried as they are.
constexpr std::size_t kFixedPointDoubles = 3;
/// Offsets inside an application record: station after the name, side after the station.
constexpr std::size_t kApplicationStationOffset = 66;
constexpr std::size_t kApplicationSideOffset = 74;

/// Template element types (the values of geotemp_ElementType).
enum TemplateElement : int {
    kStep = 0,
    kGradeWidth = 1,
    kDeltaHV = 2,
    kFeature = 3,
    kFixedPoint = 4,
    kSideSlope = 5,
};

/// A template element record is a run of doubles, except a feature (name first) and a fixed
/// point (reserved bytes last). Converts each double and unit between host and file order;
/// reserved bytes are copied unchanged.
template <class Convert>
void convert_template_record(int element_type, const unsigned char* in, unsigned char* out,
                             Convert convert_double) {
    const std::size_t bytes = template_element_bytes(element_type);
    std::memcpy(out, in, bytes);
    if constexpr (std::endian::native == std::endian::little) {
        return; // the host's order is the file's order
    }
    std::size_t first = 0;
    std::size_t doubles = bytes / kDoubleBytes;
    if (element_type == kFeature) {
        for (std::size_t u = 0; u < kRoadNameUnits; ++u) {
            std::swap(out[2 * u], out[2 * u + 1]);
        }
        first = kFeatureNameBytes;
        doubles = 2;
    } else if (element_type == kFixedPoint) {
        doubles = kFixedPointDoubles;
    }
    for (std::size_t d = 0; d < doubles; ++d) {
        convert_double(in + first + d * kDoubleBytes, out + first + d * kDoubleBytes);
    }
}

/// Reads `count` UTF-16 units of a name field into `name` (kRoadNameUnits + 1 units), forcing the
/// last unit of the field to zero so that the name always ends inside it.
void decode_name_field(const unsigned char* in, unsigned short* name) {
    for (std::size_t u = 0; u < kRoadNameUnits; ++u) {
        name[u] = get_u16(in + kUnitBytes * u);
    }
    name[kRoadNameUnits - 1] = 0;
    name[kRoadNameUnits] = 0;
}

georoad_FileReport problem_at(georoad_FileProblem problem, std::size_t offset, std::size_t size,
                              unsigned int type = 0) {
    georoad_FileReport report{};
    report.problem = problem;
    report.offset = offset;
    report.recordType = type;
    report.fileSize = size;
    return report;
}

/// Follows one section's chain. Brent's cycle test keeps one remembered offset (`anchor`) and
/// moves it to the current record whenever the step count reaches a power of two; meeting it
/// again means the chain loops. A chain of n distinct records is followed in n steps, a looping
/// one is caught within its lead-in plus two laps, so no chain is followed for longer than about
/// twice the number of offsets the file has.
class SectionWalker {
public:
    SectionWalker(std::span<const unsigned char> file, RoadRecordVisitor& visitor,
                  georoad_FileReport& report)
        : m_file(file), m_visitor(visitor), m_report(report) {}

    bool walk(std::uint32_t first) {
        std::uint64_t offset = first;
        std::uint64_t anchor = offset;
        std::uint64_t lap = 1;
        std::uint64_t steps = 0;
        while (true) {
            if (!record(offset)) {
                return false;
            }
            const std::uint32_t next = get_u32(m_file.data() + offset + 10);
            if (next == kLastRecord) {
                if (m_building) {
                    m_building = false;
                    return finish_template(offset);
                }
                return true;
            }
            if (next == anchor) {
                return fail(georoad_FileChainLoops, offset, record_type(offset));
            }
            if (++steps == lap) {
                anchor = next;
                lap *= 2;
                steps = 0;
            }
            offset = next;
        }
    }

private:
    std::uint16_t record_type(std::uint64_t offset) const {
        return get_u16(m_file.data() + offset);
    }

    bool fail(georoad_FileProblem problem, std::uint64_t offset, unsigned int type) {
        m_report = problem_at(problem, offset, m_file.size(), type);
        return false;
    }

    bool apply(georoad_FileProblem problem, std::uint64_t offset, unsigned int type) {
        return problem == georoad_FileOk ? true : fail(problem, offset, type);
    }

    bool finish_template(std::uint64_t offset) {
        if (m_templates >= kMaxTemplates) {
            return fail(georoad_FileTooMany, offset, record_type(offset));
        }
        ++m_templates;
        return apply(m_visitor.template_finish(), offset, record_type(offset));
    }

    bool record(std::uint64_t offset) {
        const std::size_t size = m_file.size();
        if (offset > size || size - offset < kRecordHeaderBytes) {
            return fail(georoad_FileRecordOutside, offset, 0);
        }
        const unsigned char* head = m_file.data() + offset;
        const std::uint16_t type = get_u16(head);
        const int element_type = template_element_type_of_record(type);
        if (m_building && element_type < 0) {
            m_building = false;
            if (!finish_template(offset)) {
                return false;
            }
        }
        const std::size_t needed = record_data_bytes(type);
        if (needed == 0) {
            return true; // a reserved or unknown record: its data is not read
        }
        const std::uint32_t length = get_u32(head + 6);
        const std::uint64_t data_offset = offset + kRecordHeaderBytes;
        if (length > size - data_offset) {
            return fail(georoad_FileTruncatedRecord, offset, type);
        }
        if (length < needed) {
            return fail(georoad_FileRecordTooShort, offset, type);
        }
        const unsigned char* data = m_file.data() + data_offset;
        switch (static_cast<RecordType>(type)) {
        case RecordType::point_of_beginning: {
            double values[6];
            for (std::size_t i = 0; i < 6; ++i) {
                values[i] = get_f64(data + kDoubleBytes * i);
            }
            return apply(m_visitor.point_of_beginning(values), offset, type);
        }
        case RecordType::line:
            return apply(m_visitor.line(get_f64(data), get_f64(data + 8)), offset, type);
        case RecordType::spiral:
            return apply(m_visitor.spiral(get_i32(data) != 0, get_i32(data + 4) != 0,
                                          get_f64(data + 8), get_f64(data + 16)),
                         offset, type);
        case RecordType::arc:
            return apply(m_visitor.arc(get_i32(data) != 0, get_f64(data + 4), get_f64(data + 12)),
                         offset, type);
        case RecordType::pvi_point:
            return apply(m_visitor.pvi(0, get_f64(data), get_f64(data + 8), 0.0), offset, type);
        case RecordType::pvi_parabola:
        case RecordType::pvi_circular:
            return apply(m_visitor.pvi(type == 12 ? 1 : 2, get_f64(data), get_f64(data + 8),
                                       get_f64(data + 16)),
                         offset, type);
        case RecordType::application: {
            unsigned short name[kRoadNameUnits + 1];
            decode_name_field(data, name);
            const std::int32_t side = get_i32(data + kApplicationSideOffset);
            // geodef_RoadSide has the values 1 to 3; anything else cannot be handed on.
            if (side < 1 || side > 3) {
                return fail(georoad_FileBadValue, offset, type);
            }
            return apply(
                m_visitor.application(name, get_f64(data + kApplicationStationOffset), side),
                offset, type);
        }
        case RecordType::template_start: {
            unsigned short name[kRoadNameUnits + 1];
            decode_name_field(data, name);
            m_building = true;
            m_elements = 0;
            return apply(m_visitor.template_start(name), offset, type);
        }
        default: {
            // 22 to 27: an element of the working template.
            if (m_elements >= kMaxTemplateElements) {
                return fail(georoad_FileTooMany, offset, type);
            }
            ++m_elements;
            alignas(double) unsigned char host[96];
            template_record_from_file(element_type, data, host);
            return apply(m_visitor.template_element(element_type, host), offset, type);
        }
        }
    }

    std::span<const unsigned char> m_file;
    RoadRecordVisitor& m_visitor;
    georoad_FileReport& m_report;
    bool m_building = false;     // a template record 21 started the working template
    std::size_t m_elements = 0;  // elements of the working template
    std::size_t m_templates = 0; // templates handed to the road
};

} // namespace

std::size_t record_data_bytes(std::uint16_t type) {
    switch (static_cast<RecordType>(type)) {
    case RecordType::point_of_beginning:
        return 48;
    case RecordType::line:
        return 16;
    case RecordType::spiral:
        return 24;
    case RecordType::arc:
        return 20;
    case RecordType::pvi_point:
        return 16;
    case RecordType::pvi_parabola:
    case RecordType::pvi_circular:
        return 24;
    case RecordType::application:
        return 78;
    case RecordType::template_start:
        return 66;
    default: {
        const int element_type = template_element_type_of_record(type);
        return element_type < 0 ? 0 : template_element_bytes(element_type);
    }
    }
}

int template_element_type_of_record(std::uint16_t type) {
    switch (static_cast<RecordType>(type)) {
    case RecordType::grade_width:
        return kGradeWidth;
    case RecordType::delta_hv:
        return kDeltaHV;
    case RecordType::side_slope:
        return kSideSlope;
    case RecordType::feature:
        return kFeature;
    case RecordType::step:
        return kStep;
    case RecordType::fixed_point:
        return kFixedPoint;
    default:
        return -1;
    }
}

std::uint16_t record_of_template_element_type(int element_type) {
    switch (element_type) {
    case kGradeWidth:
        return 22;
    case kDeltaHV:
        return 23;
    case kSideSlope:
        return 24;
    case kFeature:
        return 25;
    case kStep:
        return 26;
    case kFixedPoint:
        return 27;
    default:
        return 0;
    }
}

std::size_t template_element_bytes(int element_type) {
    switch (element_type) {
    case kStep:
    case kGradeWidth:
    case kDeltaHV:
        return 16;
    case kFeature:
        return 82;
    case kFixedPoint:
        return 40;
    case kSideSlope:
        return 24;
    default:
        return 0;
    }
}

void template_record_to_file(int element_type, const unsigned char* host, unsigned char* file) {
    convert_template_record(element_type, host, file,
                            [](const unsigned char* in, unsigned char* out) {
                                double v = 0;
                                std::memcpy(&v, in, sizeof v);
                                put_f64(out, v);
                            });
}

void template_record_from_file(int element_type, const unsigned char* file, unsigned char* host) {
    convert_template_record(element_type, file, host,
                            [](const unsigned char* in, unsigned char* out) {
                                const double v = get_f64(in);
                                std::memcpy(out, &v, sizeof v);
                            });
}

qv5def_FileHeader new_file_header(const unsigned short* name) {
    qv5def_FileHeader header;
    std::memset(&header, 0, sizeof header);
    std::memcpy(header.magic, kRoadFileMagic, kRoadFileMagicBytes);
    header.version = kRoadFileVersion;
    header.reserved2 = 0;
    header.nameLength = static_cast<unsigned short>(kRoadNameUnits);
    for (std::size_t u = 0; name != nullptr && u + 1 < kRoadNameUnits && name[u] != 0; ++u) {
        header.name[u] = name[u];
    }
    header.directorySize = static_cast<unsigned short>(kDirectoryEntries);
    return header;
}

std::array<unsigned char, kFileHeaderBytes> encode_file_header(const qv5def_FileHeader& header) {
    std::array<unsigned char, kFileHeaderBytes> out{};
    std::memcpy(out.data(), header.magic, sizeof header.magic);
    std::memcpy(out.data() + 11, header.reserved1, sizeof header.reserved1);
    put_i32(out.data() + 16, header.version);
    put_i32(out.data() + 20, header.reserved2);
    std::memcpy(out.data() + 24, header.reserved3, sizeof header.reserved3);
    put_u16(out.data() + 28, header.nameLength);
    for (std::size_t u = 0; u < kRoadNameUnits; ++u) {
        put_u16(out.data() + kHeaderNameOffset + kUnitBytes * u, header.name[u]);
    }
    put_u16(out.data() + kHeaderDirectorySizeOffset, header.directorySize);
    for (std::size_t e = 0; e < kDirectoryEntries; ++e) {
        unsigned char* entry = out.data() + kHeaderDirectoryOffset + kDirectoryEntryBytes * e;
        put_u16(entry, header.directory[e].sectionType);
        put_u32(entry + 2, header.directory[e].firstRecord);
    }
    return out;
}

bool decode_file_header(std::span<const unsigned char> file, qv5def_FileHeader& header,
                        georoad_FileReport& report) {
    const std::size_t size = file.size();
    std::memset(&header, 0, sizeof header);
    if (size < kHeaderLeadBytes) {
        report = problem_at(georoad_FileTruncatedHeader, size, size);
        return false;
    }
    const unsigned char* in = file.data();
    if (std::memcmp(in, kRoadFileMagic, kRoadFileMagicBytes) != 0) {
        report = problem_at(georoad_FileNotARoadFile, 0, size);
        return false;
    }
    std::memcpy(header.magic, in, sizeof header.magic);
    std::memcpy(header.reserved1, in + 11, sizeof header.reserved1);
    header.version = get_i32(in + 16);
    header.reserved2 = get_i32(in + 20);
    std::memcpy(header.reserved3, in + 24, sizeof header.reserved3);
    header.nameLength = get_u16(in + 28);
    // The name read takes name length + 1 units from offset 30; a field claiming more units
    // than it has would run into the directory and past the header.
    if (header.nameLength > kRoadNameUnits) {
        report = problem_at(georoad_FileBadNameLength, 28, size);
        return false;
    }
    const std::size_t name_read = (std::size_t{header.nameLength} + 1) * kUnitBytes;
    // The directory size lies at 96 whatever the name length, so the header reaches it always.
    const std::size_t lead_end = std::max(kHeaderNameOffset + name_read, kHeaderDirectoryOffset);
    if (size < lead_end) {
        report = problem_at(georoad_FileTruncatedHeader, size, size);
        return false;
    }
    const std::size_t units = std::min<std::size_t>(header.nameLength + 1, kRoadNameUnits);
    for (std::size_t u = 0; u < units; ++u) {
        header.name[u] = get_u16(in + kHeaderNameOffset + kUnitBytes * u);
    }
    // The last unit of the stated length is forced to zero so the name ends inside it; a zero
    // length leaves no unit to force and means an empty name.
    header.name[header.nameLength == 0 ? 0 : header.nameLength - 1] = 0;
    header.directorySize = get_u16(in + kHeaderDirectorySizeOffset);
    if (header.directorySize > kDirectoryEntries) {
        report = problem_at(georoad_FileBadDirectorySize, kHeaderDirectorySizeOffset, size);
        return false;
    }
    const std::size_t directory_end =
        kHeaderDirectoryOffset + kDirectoryEntryBytes * header.directorySize;
    if (size < directory_end) {
        report = problem_at(georoad_FileTruncatedHeader, size, size);
        return false;
    }
    for (std::size_t e = 0; e < header.directorySize; ++e) {
        const unsigned char* entry = in + kHeaderDirectoryOffset + kDirectoryEntryBytes * e;
        header.directory[e].sectionType = get_u16(entry);
        header.directory[e].firstRecord = get_u32(entry + 2);
    }
    report = clean_report(size);
    return true;
}

RoadFileOutput::RoadFileOutput() : m_bytes(kFileHeaderBytes, 0) {}

bool RoadFileOutput::begin_section(qv5def_FileHeader& header, unsigned short& next_entry,
                                   SectionType type) {
    if (next_entry >= kDirectoryEntries ||
        m_bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    header.directory[next_entry].sectionType = static_cast<unsigned short>(type);
    header.directory[next_entry].firstRecord = static_cast<std::uint32_t>(m_bytes.size());
    ++next_entry;
    m_previous = kLastRecord;
    return true;
}

bool RoadFileOutput::add_record(RecordType type, const unsigned char* data, std::size_t bytes) {
    const std::size_t here = m_bytes.size();
    // Offsets are 32-bit, and kLastRecord must never be a real offset.
    if (here + kRecordHeaderBytes + bytes >= kLastRecord) {
        return false;
    }
    const auto offset = static_cast<std::uint32_t>(here);
    if (m_previous != kLastRecord) {
        put_u32(m_bytes.data() + m_previous + 10, offset);
    }
    m_bytes.resize(here + kRecordHeaderBytes + bytes);
    unsigned char* head = m_bytes.data() + here;
    put_u16(head, static_cast<std::uint16_t>(type));
    put_u16(head + 2, static_cast<std::uint16_t>(kRecordHeaderBytes));
    put_u16(head + 4, 0);
    put_u32(head + 6, static_cast<std::uint32_t>(bytes));
    put_u32(head + 10, kLastRecord);
    // A section's first record has no predecessor; it points at nothing, like the last's next.
    put_u32(head + 14, m_previous);
    if (bytes != 0) {
        std::memcpy(head + kRecordHeaderBytes, data, bytes);
    }
    m_previous = offset;
    return true;
}

void RoadFileOutput::put_header(const qv5def_FileHeader& header) {
    const auto encoded = encode_file_header(header);
    std::copy(encoded.begin(), encoded.end(), m_bytes.begin());
}

bool walk_road_file(std::span<const unsigned char> file, const qv5def_FileHeader& header,
                    RoadRecordVisitor& visitor, georoad_FileReport& report) {
    report = clean_report(file.size());
    SectionWalker walker(file, visitor, report);
    const std::size_t entries = std::min<std::size_t>(header.directorySize, kDirectoryEntries);
    for (std::size_t e = 0; e < entries; ++e) {
        const qv5def_DirectoryEntry& entry = header.directory[e];
        if (entry.sectionType < 1 || entry.sectionType > kHighestSectionType ||
            entry.firstRecord == kLastRecord) {
            continue;
        }
        if (!walker.walk(entry.firstRecord)) {
            return false;
        }
    }
    return true;
}

georoad_FileReport clean_report(std::size_t size) {
    return problem_at(georoad_FileOk, 0, size);
}

} // namespace qv5::detail
