// Text at the boundary: arbitrary bytes as UTF-8 and as UTF-16 must convert without fault, and
// well-formed text must survive the round trip unchanged.
#include "platform/text_codec.h"
#include "qv5/hostfw.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);

    const std::u16string utf16 = qv5::detail::utf8_to_utf16(bytes);
    const std::string back = qv5::detail::utf16_to_utf8(utf16);
    if (qv5::detail::is_valid_utf8(bytes) && back != bytes) {
        std::abort();
    }
    if (!qv5::detail::is_valid_utf8(back)) {
        std::abort(); // the output of a conversion is always well-formed
    }

    std::vector<unsigned short> units(size / 2 + 1, 0);
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        units[i / 2] = static_cast<unsigned short>(data[i] | (data[i + 1] << 8));
    }
    const CString text = CString::FromUtf16(units.data(), units.size());
    const CString again = CString::FromUtf8(text.ToUtf8());
    if (again.GetLength() > text.GetLength() * 2 + 1) {
        std::abort();
    }
    (void)text.CompareNoCase(again);
    return 0;
}
