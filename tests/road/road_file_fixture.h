// Road files assembled byte by byte from the format's tables, independently of the library's
// writer: the tests compare the writer's output against these and feed hostile variants to the
// reader.
#ifndef QV5_TESTS_ROAD_ROAD_FILE_FIXTURE_H
#define QV5_TESTS_ROAD_ROAD_FILE_FIXTURE_H

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace qv5::test {

using Bytes = std::vector<unsigned char>;

/// Appends little-endian fields.
class ByteWriter {
public:
    Bytes bytes;

    ByteWriter& u8(unsigned v) {
        bytes.push_back(static_cast<unsigned char>(v & 0xFF));
        return *this;
    }
    ByteWriter& u16(unsigned v) { return u8(v).u8(v >> 8); }
    ByteWriter& u32(std::uint32_t v) { return u16(v & 0xFFFF).u16(v >> 16); }
    ByteWriter& i32(std::int32_t v) { return u32(static_cast<std::uint32_t>(v)); }
    ByteWriter& f64(double v) {
        std::uint64_t b = 0;
        std::memcpy(&b, &v, 8);
        u32(static_cast<std::uint32_t>(b & 0xFFFFFFFFu));
        return u32(static_cast<std::uint32_t>(b >> 32));
    }
    /// A UTF-16 name field of `units` units from ASCII text, zero-padded.
    ByteWriter& name(const std::string& ascii, std::size_t units = 33) {
        for (std::size_t i = 0; i < units; ++i) {
            u16(i < ascii.size() ? static_cast<unsigned char>(ascii[i]) : 0);
        }
        return *this;
    }
    ByteWriter& zeros(std::size_t n) {
        bytes.insert(bytes.end(), n, 0);
        return *this;
    }
};

/// A record of a section: its type and data bytes.
struct FixtureRecord {
    unsigned type;
    Bytes data;
};

/// A section: its directory type and its records.
struct FixtureSection {
    unsigned type;
    std::vector<FixtureRecord> records;
};

/// The 0xFFFFFFFE that ends a chain.
inline constexpr std::uint32_t kChainEnd = 0xFFFFFFFEu;

/// A whole file: header, then each section's records one after the other, each header's next
/// pointing at the following record of its section and its previous at the one before (the
/// first record's previous is the chain-end value, as this library writes it).
inline Bytes assemble_road_file(const std::string& name,
                                const std::vector<FixtureSection>& sections) {
    ByteWriter w;
    const char magic[] = "Halvik QV5";
    for (char c : magic) {
        w.u8(static_cast<unsigned char>(c)); // 11 bytes with the zero
    }
    w.zeros(5).i32(1).i32(0).zeros(4).u16(33).name(name).u16(20);
    // Directory placeholder; entries filled below.
    const std::size_t directory = w.bytes.size();
    w.zeros(120);
    std::size_t entry = 0;
    for (const FixtureSection& section : sections) {
        const auto first = static_cast<std::uint32_t>(w.bytes.size());
        ByteWriter e;
        e.u16(section.type).u32(first);
        std::memcpy(w.bytes.data() + directory + 6 * entry, e.bytes.data(), 6);
        ++entry;
        std::uint32_t previous = kChainEnd;
        for (std::size_t r = 0; r < section.records.size(); ++r) {
            const FixtureRecord& rec = section.records[r];
            const auto here = static_cast<std::uint32_t>(w.bytes.size());
            const std::uint32_t next = r + 1 < section.records.size()
                                           ? here + 18 + static_cast<std::uint32_t>(rec.data.size())
                                           : kChainEnd;
            w.u16(rec.type).u16(18).u16(0).u32(static_cast<std::uint32_t>(rec.data.size()));
            w.u32(next).u32(previous);
            w.bytes.insert(w.bytes.end(), rec.data.begin(), rec.data.end());
            previous = here;
        }
    }
    return std::move(w.bytes);
}

/// Overwrites a little-endian 32-bit field.
inline void poke_u32(Bytes& bytes, std::size_t offset, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) {
        bytes[offset + i] = static_cast<unsigned char>(v >> (8 * i));
    }
}
/// Overwrites a little-endian 16-bit field.
inline void poke_u16(Bytes& bytes, std::size_t offset, unsigned v) {
    bytes[offset] = static_cast<unsigned char>(v & 0xFF);
    bytes[offset + 1] = static_cast<unsigned char>((v >> 8) & 0xFF);
}

// Data of each record type, from the format's table.
inline Bytes pob_data(double n, double e, double z, double az, double station, double interval) {
    ByteWriter w;
    w.f64(n).f64(e).f64(z).f64(az).f64(station).f64(interval);
    return std::move(w.bytes);
}
inline Bytes line_data(double azimuth, double length) {
    ByteWriter w;
    w.f64(azimuth).f64(length);
    return std::move(w.bytes);
}
inline Bytes spiral_data(bool entry, bool right, double radius, double length) {
    ByteWriter w;
    w.i32(entry ? 1 : 0).i32(right ? 1 : 0).f64(radius).f64(length);
    return std::move(w.bytes);
}
inline Bytes arc_data(bool right, double radius, double length) {
    ByteWriter w;
    w.i32(right ? 1 : 0).f64(radius).f64(length);
    return std::move(w.bytes);
}
inline Bytes pvi_data(double station, double elevation) {
    ByteWriter w;
    w.f64(station).f64(elevation);
    return std::move(w.bytes);
}
inline Bytes curve_data(double station, double elevation, double length) {
    ByteWriter w;
    w.f64(station).f64(elevation).f64(length);
    return std::move(w.bytes);
}
inline Bytes application_data(const std::string& name, double station, int side) {
    ByteWriter w;
    w.name(name).f64(station).i32(side);
    return std::move(w.bytes);
}
inline Bytes template_name_data(const std::string& name) {
    ByteWriter w;
    w.name(name);
    return std::move(w.bytes);
}
inline Bytes doubles_data(std::initializer_list<double> values) {
    ByteWriter w;
    for (double v : values) {
        w.f64(v);
    }
    return std::move(w.bytes);
}
inline Bytes feature_data(const std::string& name, double a, double b) {
    ByteWriter w;
    w.name(name).f64(a).f64(b);
    return std::move(w.bytes);
}

} // namespace qv5::test

#endif // QV5_TESTS_ROAD_ROAD_FILE_FIXTURE_H
