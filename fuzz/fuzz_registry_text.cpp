// The registry file as outside data: any bytes must parse without fault; a usable file must
// come back unchanged through its own text, take a value and read it back, and keep every other
// key's values as they were.
#include "platform/registry_text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using qv5::detail::kRegistryBinary;
using qv5::detail::RegistryText;
using qv5::detail::RegistryValue;

constexpr const char16_t* kKey = u"SOFTWARE\\Halvik\\QV5\\Units";
constexpr const char16_t* kOtherKey = u"SOFTWARE\\Other";

struct Lookup {
    bool found;
    RegistryValue value;
};

Lookup look(const RegistryText& text, const char16_t* key, const char16_t* name) {
    Lookup result{false, {}};
    result.found = text.find_value(key, name, result.value);
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    RegistryText text = RegistryText::parse(bytes);
    (void)text.has_key(kKey);
    if (!text.usable()) {
        return 0;
    }
    const std::string once = text.text();
    if (RegistryText::parse(once).text() != once) {
        std::abort(); // the text must be stable through its own parse
    }
    const Lookup other_before = look(text, kOtherKey, u"X");
    const Lookup same_key_other_name = look(text, kKey, u"Angles");
    const RegistryValue written{kRegistryBinary, {3, 0, 0, 0}};
    if (!text.set_value(kKey, u"Bearings", written)) {
        std::abort();
    }
    const RegistryText again = RegistryText::parse(text.text());
    const Lookup back = look(again, kKey, u"Bearings");
    if (!back.found || !(back.value == written)) {
        std::abort();
    }
    const Lookup other_after = look(again, kOtherKey, u"X");
    const Lookup same_key_after = look(again, kKey, u"Angles");
    if (other_after.found != other_before.found ||
        (other_before.found && !(other_after.value == other_before.value)) ||
        same_key_after.found != same_key_other_name.found ||
        (same_key_after.found && !(same_key_after.value == same_key_other_name.value))) {
        std::abort();
    }
    return 0;
}
