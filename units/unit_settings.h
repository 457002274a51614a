// Reading and writing the unit choices in the settings store. Internal header.
#ifndef QV5_UNITS_UNIT_SETTINGS_H
#define QV5_UNITS_UNIT_SETTINGS_H

#include "platform/settings_store.h"
#include "units/unit_tables.h"

#include <string_view>

namespace qv5::detail {

/// A bit per kind (1 << UnitKind): set when the store held that choice exactly as the library
/// writes it, a 4-byte REG_BINARY value within its table.
using StoredExactly = unsigned;

/// Opens `key` (creating it when missing) and reads the choices in kChoiceReadOrder, each a
/// 4-byte number. A missing value leaves its choice as it is; a value not below its kind's row
/// count, compared unsigned, reads as 0. Nothing escapes: a store that fails leaves the choices
/// with what was read so far.
/// @param[out] exactly which choices were stored exactly as they are written (0 when the key
///             could not be opened)
void load_unit_choices(SettingsStore& store, std::u16string_view key,
                       int (&choices)[kUnitKindCount], StoredExactly& exactly) noexcept;
/// As above, without telling how the choices were stored.
void load_unit_choices(SettingsStore& store, std::u16string_view key,
                       int (&choices)[kUnitKindCount]) noexcept;

/// Opens `key` if it exists and writes, in kChoiceWriteOrder, each choice that differs from
/// `loaded` or whose bit in `exactly` is clear, as a 4-byte REG_BINARY value (little-endian).
/// A choice that was read exactly as stored and has not changed since is left alone, so that
/// another program's change of it in the meantime survives. Failures are silent.
void save_unit_choices(SettingsStore& store, std::u16string_view key,
                       const int (&choices)[kUnitKindCount], const int (&loaded)[kUnitKindCount],
                       StoredExactly exactly) noexcept;
/// Writes every choice, as for a key that held none of them.
void save_unit_choices(SettingsStore& store, std::u16string_view key,
                       const int (&choices)[kUnitKindCount]) noexcept;

} // namespace qv5::detail

#endif // QV5_UNITS_UNIT_SETTINGS_H
