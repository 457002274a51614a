// The unit choices in the settings store. The read and write orders differ (bearings and
// angles, length) and the values are REG_BINARY rather than REG_DWORD: stores written by earlier
// hosts look exactly like this, so both are kept.
//
// A CQuantityUnits writes back only what it has to: the choices it changed, and those the store
// did not hold in the written form (missing, out of range, another type). Writing back a choice
// that it merely read would put a stale value over another program's change made meanwhile,
// since the store merges each value written over what it finds.
#include "units/unit_settings.h"

#include <cstdint>
#include <vector>

namespace qv5::detail {

void load_unit_choices(SettingsStore& store, std::u16string_view key,
                       int (&choices)[kUnitKindCount], StoredExactly& exactly) noexcept {
    exactly = 0;
    try {
        const std::unique_ptr<SettingsKey> opened = store.create_key(key);
        if (opened == nullptr) {
            return;
        }
        for (const StoredChoice& choice : kChoiceReadOrder) {
            // Pre-set to the current choice, so that a missing value keeps it.
            auto value = static_cast<std::uint32_t>(choices[choice.kind]);
            std::uint32_t type = 0;
            const bool found = opened->read_u32(choice.name, value, type);
            const auto rows = static_cast<std::uint32_t>(kUnitRowCount[choice.kind]);
            choices[choice.kind] = value < rows ? static_cast<int>(value) : 0;
            if (found && type == kRegistryBinary && value < rows) {
                exactly |= 1u << choice.kind;
            }
        }
        opened->close();
    } catch (...) {
        // Out of memory while reading the store: what was read so far stays in force.
    }
}

void load_unit_choices(SettingsStore& store, std::u16string_view key,
                       int (&choices)[kUnitKindCount]) noexcept {
    StoredExactly ignored = 0;
    load_unit_choices(store, key, choices, ignored);
}

void save_unit_choices(SettingsStore& store, std::u16string_view key,
                       const int (&choices)[kUnitKindCount], const int (&loaded)[kUnitKindCount],
                       StoredExactly exactly) noexcept {
    try {
        const std::unique_ptr<SettingsKey> opened = store.open_key(key);
        if (opened == nullptr) {
            return;
        }
        for (const StoredChoice& choice : kChoiceWriteOrder) {
            const bool kept =
                (exactly & (1u << choice.kind)) != 0 && choices[choice.kind] == loaded[choice.kind];
            if (kept) {
                continue;
            }
            const auto value = static_cast<std::uint32_t>(choices[choice.kind]);
            const std::vector<unsigned char> bytes = {
                static_cast<unsigned char>(value & 0xFF),
                static_cast<unsigned char>((value >> 8) & 0xFF),
                static_cast<unsigned char>((value >> 16) & 0xFF),
                static_cast<unsigned char>(value >> 24)};
            opened->write(choice.name, kRegistryBinary, bytes);
        }
        opened->close();
    } catch (...) {
        // Out of memory while writing: the store keeps what it had.
    }
}

void save_unit_choices(SettingsStore& store, std::u16string_view key,
                       const int (&choices)[kUnitKindCount]) noexcept {
    save_unit_choices(store, key, choices, choices, 0);
}

} // namespace qv5::detail
