// The road file's bytes: little-endian fields, the header, the chained records, and a walker that
// follows a file's sections over a byte span and hands each decoded record to a visitor.
// Nothing here knows the road; road_file.cpp connects the visitor to CGeoRoad's edit operations.
// Internal header.
#ifndef QV5_ROAD_ROAD_FILE_FORMAT_H
#define QV5_ROAD_ROAD_FILE_FORMAT_H

#include "qv5/georoadfile.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace qv5::detail {

/// The 8-bit magic at offset 0, with its terminating zero (11 bytes).
inline constexpr char kRoadFileMagic[] = "Halvik QV5";
/// Bytes of the magic including its terminating zero.
inline constexpr std::size_t kRoadFileMagicBytes = sizeof kRoadFileMagic;
/// The file version the writer puts at offset 16 (never checked on reading).
inline constexpr std::int32_t kRoadFileVersion = 1;
/// UTF-16 units of the name fields (header, template start, application).
inline constexpr std::size_t kRoadNameUnits = 33;
/// Entries of the header's section directory.
inline constexpr std::size_t kDirectoryEntries = 20;
/// Bytes of the header.
inline constexpr std::size_t kFileHeaderBytes = sizeof(qv5def_FileHeader);
/// Bytes of the header the reader takes first: magic to name length.
inline constexpr std::size_t kHeaderLeadBytes = 30;
/// Offset of the name field.
inline constexpr std::size_t kHeaderNameOffset = 30;
/// Offset of the directory size field.
inline constexpr std::size_t kHeaderDirectorySizeOffset = 96;
/// Offset of the directory.
inline constexpr std::size_t kHeaderDirectoryOffset = 98;
/// Bytes of one directory entry.
inline constexpr std::size_t kDirectoryEntryBytes = 6;
/// Bytes of a record header.
inline constexpr std::size_t kRecordHeaderBytes = 18;
/// The next-record value of the last record of a section (also an empty section's offset).
inline constexpr std::uint32_t kLastRecord = 0xFFFFFFFEu;
/// Files longer than this are refused: a road of ten thousand elements takes under half a
/// megabyte, and every record read becomes an object of a few hundred bytes in memory.
inline constexpr std::size_t kMaxRoadFileBytes = std::size_t{64} << 20;
/// Templates a file may hold: every addition copies the whole template library, so a file of
/// millions of tiny template records would keep the host busy for hours.
inline constexpr std::size_t kMaxTemplates = 1024;
/// Elements one template may hold: every addition recomputes the whole chain.
inline constexpr std::size_t kMaxTemplateElements = 1024;

/// Section types of the directory.
enum class SectionType : std::uint16_t {
    none = 0,
    horizontal = 1,
    vertical = 2,
    applications = 3,
    templates = 5,
};
/// The highest section type the reader follows (types 1 to 5; 4 is followed but never written).
inline constexpr std::uint16_t kHighestSectionType = 5;

/// Record types.
enum class RecordType : std::uint16_t {
    point_of_beginning = 1,
    line = 2,
    spiral = 3,
    arc = 4,
    vertical_reserved = 10,
    pvi_point = 11,
    pvi_parabola = 12,
    pvi_circular = 13,
    application = 20,
    template_start = 21,
    grade_width = 22,
    delta_hv = 23,
    side_slope = 24,
    feature = 25,
    step = 26,
    fixed_point = 27,
};

/// Data bytes of each record type the reader applies; 0 for types it skips.
std::size_t record_data_bytes(std::uint16_t type);

/// The template element type (`geotemp_ElementType` value) of a template element record type
/// (22 to 27); -1 for any other record type.
int template_element_type_of_record(std::uint16_t type);
/// The record type of a template element type (0 to 5); 0 for any other element type.
std::uint16_t record_of_template_element_type(int element_type);
/// Bytes of the in-memory record of a template element type (0 to 5); 0 otherwise.
std::size_t template_element_bytes(int element_type);

// ---- little-endian fields -------------------------------------------------------------------

inline void put_u16(unsigned char* out, std::uint16_t v) {
    out[0] = static_cast<unsigned char>(v);
    out[1] = static_cast<unsigned char>(v >> 8);
}
inline void put_u32(unsigned char* out, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) {
        out[i] = static_cast<unsigned char>(v >> (8 * i));
    }
}
inline void put_i32(unsigned char* out, std::int32_t v) {
    put_u32(out, static_cast<std::uint32_t>(v));
}
inline void put_f64(unsigned char* out, double v) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &v, sizeof bits);
    for (int i = 0; i < 8; ++i) {
        out[i] = static_cast<unsigned char>(bits >> (8 * i));
    }
}
inline std::uint16_t get_u16(const unsigned char* in) {
    return static_cast<std::uint16_t>(in[0] | (in[1] << 8));
}
inline std::uint32_t get_u32(const unsigned char* in) {
    return static_cast<std::uint32_t>(in[0]) | (static_cast<std::uint32_t>(in[1]) << 8) |
           (static_cast<std::uint32_t>(in[2]) << 16) | (static_cast<std::uint32_t>(in[3]) << 24);
}
inline std::int32_t get_i32(const unsigned char* in) {
    return static_cast<std::int32_t>(get_u32(in));
}
inline double get_f64(const unsigned char* in) {
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) {
        bits |= static_cast<std::uint64_t>(in[i]) << (8 * i);
    }
    double v = 0;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}

/// A template element record between its in-memory form (the host's doubles and UTF-16 units,
/// as CGeoTemplate holds them) and its file form (little-endian). Both have the record's size.
void template_record_to_file(int element_type, const unsigned char* host, unsigned char* file);
void template_record_from_file(int element_type, const unsigned char* file, unsigned char* host);

// ---- the header -----------------------------------------------------------------------------

/// A header as the writer starts it: magic, version 1, reserved 0, name length 33, `name` cut to
/// 32 units and zero-padded, directory size 20, every directory entry unused.
qv5def_FileHeader new_file_header(const unsigned short* name);
/// The header's 218 bytes.
std::array<unsigned char, kFileHeaderBytes> encode_file_header(const qv5def_FileHeader& header);

/// Checks and decodes the header at the start of `file`, as a reader takes it: the 30 bytes up to
/// the name length, the name length + 1 units from offset 30 (the unit at index name length - 1
/// forced to zero), and the directory size entries from offset 98. Fields not read are zero.
/// @return false with `report` saying why (truncated, not a road file, a length field larger
///         than its field)
bool decode_file_header(std::span<const unsigned char> file, qv5def_FileHeader& header,
                        georoad_FileReport& report);

// ---- writing --------------------------------------------------------------------------------

/// The bytes of a file being written, with the writer's chaining: each record is appended with
/// next = last, and the section's previous record is patched to point at it.
class RoadFileOutput {
public:
    RoadFileOutput();
    /// Starts a section at the current end: takes directory entry `next_entry` of `header` (and
    /// advances it). @return false when the directory is full
    bool begin_section(qv5def_FileHeader& header, unsigned short& next_entry, SectionType type);
    /// Appends a record of the current section. @return false when it would not fit an offset
    bool add_record(RecordType type, const unsigned char* data, std::size_t bytes);
    /// Makes room for a file of about `bytes` bytes, so that laying it out moves nothing.
    void reserve(std::size_t bytes) { m_bytes.reserve(bytes); }
    /// Puts the header at offset 0.
    void put_header(const qv5def_FileHeader& header);
    const std::vector<unsigned char>& bytes() const { return m_bytes; }

private:
    std::vector<unsigned char> m_bytes;
    std::uint32_t m_previous = kLastRecord; // header offset of the section's last record
};

// ---- reading --------------------------------------------------------------------------------

/// What the walker hands over, record by record. Each call returns georoad_FileOk, or the
/// problem that ends reading.
class RoadRecordVisitor {
public:
    virtual ~RoadRecordVisitor() = default;
    /// Record 1: start northing, easting, elevation, azimuth, station, station interval.
    virtual georoad_FileProblem point_of_beginning(const double values[6]) = 0;
    virtual georoad_FileProblem line(double azimuth, double length) = 0;
    virtual georoad_FileProblem spiral(bool entry, bool right, double radius, double length) = 0;
    virtual georoad_FileProblem arc(bool right, double radius, double length) = 0;
    /// Records 11 to 13: vertical element type 0, 1 or 2 (length 0 for a point).
    virtual georoad_FileProblem pvi(int type, double station, double elevation, double length) = 0;
    /// Record 20: `name` is zero-terminated; `side` is 1, 2 or 3.
    virtual georoad_FileProblem application(const unsigned short* name, double station,
                                            int side) = 0;
    /// Record 21: reset the working template and give it `name` (zero-terminated).
    virtual georoad_FileProblem template_start(const unsigned short* name) = 0;
    /// Records 22 to 27: add an element of `element_type` with its in-memory record.
    virtual georoad_FileProblem template_element(int element_type, const void* record) = 0;
    /// Add the working template to the road.
    virtual georoad_FileProblem template_finish() = 0;
};

/// Follows every section of the directory through `file` and hands each record to `visitor`.
/// Every read is bounds-checked against the span; a chain that comes back on itself is caught
/// (Brent's cycle test: no memory beyond two offsets, found within a few laps).
/// @return true when every section was read; false with `report` filled
bool walk_road_file(std::span<const unsigned char> file, const qv5def_FileHeader& header,
                    RoadRecordVisitor& visitor, georoad_FileReport& report);

/// A report of nothing wrong in a file of `size` bytes.
georoad_FileReport clean_report(std::size_t size);

} // namespace qv5::detail

#endif // QV5_ROAD_ROAD_FILE_FORMAT_H
