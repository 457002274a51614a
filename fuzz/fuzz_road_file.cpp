// Any bytes given to the road file reader must give a defined result without fault, leak or
// unbounded work, and a road the reader accepts must write again. What it writes need not read
// back: a file may hold a second point of beginning in mid-chain, which moves the road's end as
// it is read, and the written file keeps only the first; an element laid from that end may then
// be refused. So the written file is read once more only for a defined result.
#include "qv5/georoad.h"

#include "road/road_file_format.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

/// A road that lays its file out in memory, as Write does before handing the bytes over.
class MemoryRoad : public CGeoRoad {
public:
    std::vector<unsigned char> bytes() {
        qv5::detail::RoadFileOutput out;
        qv5def_FileHeader header = qv5::detail::new_file_header(Name().GetString());
        unsigned short entry = 0;
        if (!WriteElements(&out, header, entry)) {
            std::abort();
        }
        out.put_header(header);
        return out.bytes();
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    MemoryRoad road;
    georoad_Error error = georoad_Error(0);
    georoad_FileReport report{};
    const int ok = road.ReadBytes(data, size, &error, &report);
    if (!ok) {
        // A refused file leaves nothing behind.
        if (road.NumberHorizontalElements() != 0 || road.NumberVerticalElements() != 0 ||
            road.NumberTemplates() != 0 || road.NumberTemplateApplications() != 0 ||
            report.problem == georoad_FileOk) {
            std::abort();
        }
        return 0;
    }
    const std::vector<unsigned char> first = road.bytes();
    MemoryRoad again;
    if (!again.ReadBytes(first.data(), first.size(), &error, &report) &&
        (again.NumberHorizontalElements() != 0 || report.problem == georoad_FileOk)) {
        std::abort();
    }
    return 0;
}
