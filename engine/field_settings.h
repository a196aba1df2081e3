#pragma once
// The per-type settings of a field definition that the field editor sets and the record code
// reads: the default value of a new record, the first number of a Unique field, the target of a
// Link field and the plug-in of an External field. docs/FORMAT.md gives the places.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/bytes.h"
#include "engine/schema.h"

namespace qv {

namespace field_settings {
inline constexpr std::size_t kDefault = 86;      // 1-byte length, then the value bytes
inline constexpr std::size_t kDefaultMax = 29;   // value bytes that fit
inline constexpr std::size_t kUniqueStart = 24;  // 32-bit, big-endian
inline constexpr std::size_t kTargetName = 24;   // Link/Linked/DB Popup: database name
inline constexpr std::size_t kTargetNameSize = 32;
inline constexpr std::size_t kPluginName = 24;  // External: plug-in name
inline constexpr std::size_t kPluginNameSize = 20;
inline constexpr std::size_t kPluginSetting = 44;  // External: 32-bit, big-endian
inline constexpr std::size_t kPluginByte = 48;     // External: one byte
inline constexpr std::size_t kPluginConfig = 86;   // External: 30 configuration bytes
inline constexpr std::size_t kPluginConfigSize = 30;
}  // namespace field_settings

// Whether a type keeps a default value (Calculated, Conditional and the settings-holding
// types keep other settings where the default would sit).
bool TypeTakesDefault(unsigned type);
// The stored default value of a field, or an empty span when none is set.
std::span<const std::uint8_t> FieldDefault(ConstFieldDefinition field);
// Stores the value bytes as the default (empty clears it); false when they do not fit.
bool SetFieldDefault(FieldDefinition field, std::span<const std::uint8_t> value);

std::uint32_t UniqueStart(ConstFieldDefinition field);
void SetUniqueStart(FieldDefinition field, std::uint32_t first);

// The other database's name of a Link, Linked or DB Popup field.
std::string LinkTarget(ConstFieldDefinition field);
void SetLinkTarget(FieldDefinition field, std::string_view name);

// The plug-in library name of an External field.
std::string PluginName(ConstFieldDefinition field);
void SetPluginName(FieldDefinition field, std::string_view name);

// What an External field's plug-in keeps in the definition: its own 32-bit and one-byte
// settings and 30 configuration bytes, all of them the plug-in's to interpret.
struct PluginSettings {
  std::uint32_t setting = 0;
  std::uint8_t byte_setting = 0;
  std::array<std::uint8_t, field_settings::kPluginConfigSize> config{};
  bool operator==(const PluginSettings&) const = default;
};
PluginSettings GetPluginSettings(ConstFieldDefinition field);
void SetPluginSettings(FieldDefinition field, const PluginSettings& settings);

}  // namespace qv
