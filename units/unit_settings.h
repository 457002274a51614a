// Reading and writing the unit choices in the settings store. Internal header.
#ifndef QV5_UNITS_UNIT_SETTINGS_H
#define QV5_UNITS_UNIT_SETTINGS_H

#include "platform/settings_store.h"
#include "units/unit_tables.h"

#include <string_view>

namespace qv5::detail {

/// Opens `key` (creating it when missing) and reads the choices in kChoiceReadOrder, each a
/// 4-byte number. A missing value leaves its choice as it is; a value not below its kind's row
/// count, compared unsigned, reads as 0. Nothing escapes: a store that fails leaves the choices
/// with what was read so far.
void load_unit_choices(SettingsStore& store, std::u16string_view key,
                       int (&choices)[kUnitKindCount]) noexcept;

/// Opens `key` if it exists and writes every choice in kChoiceWriteOrder as a 4-byte
/// REG_BINARY value (little-endian). Failures are silent.
void save_unit_choices(SettingsStore& store, std::u16string_view key,
                       const int (&choices)[kUnitKindCount]) noexcept;

} // namespace qv5::detail

#endif // QV5_UNITS_UNIT_SETTINGS_H
