#include "engine/field_settings.h"

#include <algorithm>

#include "engine/field_types.h"

namespace qv {

namespace fs = field_settings;

bool TypeTakesDefault(unsigned type) { return HoldsTypedValue(type); }

std::span<const std::uint8_t> FieldDefault(ConstFieldDefinition field) {
  if (!TypeTakesDefault(field.type())) return {};
  const std::uint8_t* p = field.bytes() + fs::kDefault;
  std::size_t n = std::min<std::size_t>(p[0], fs::kDefaultMax);
  return {p + 1, n};
}

bool SetFieldDefault(FieldDefinition field, std::span<const std::uint8_t> value) {
  if (value.size() > fs::kDefaultMax) return false;
  std::uint8_t* p = field.bytes() + fs::kDefault;
  std::fill(p, p + 1 + fs::kDefaultMax, 0);
  p[0] = static_cast<std::uint8_t>(value.size());
  std::copy(value.begin(), value.end(), p + 1);
  return true;
}

std::uint32_t UniqueStart(ConstFieldDefinition field) {
  return field.type() == kUnique ? GetBE32(field.bytes() + fs::kUniqueStart) : 0;
}

void SetUniqueStart(FieldDefinition field, std::uint32_t first) {
  PutBE32(field.bytes() + fs::kUniqueStart, first);
}

std::string LinkTarget(ConstFieldDefinition field) {
  return std::string(CStringAt(field.bytes() + fs::kTargetName, fs::kTargetNameSize));
}

void SetLinkTarget(FieldDefinition field, std::string_view name) {
  PutCString(field.bytes() + fs::kTargetName, fs::kTargetNameSize, name);
}

std::string PluginName(ConstFieldDefinition field) {
  return std::string(CStringAt(field.bytes() + fs::kPluginName, fs::kPluginNameSize));
}

void SetPluginName(FieldDefinition field, std::string_view name) {
  PutCString(field.bytes() + fs::kPluginName, fs::kPluginNameSize, name);
}

PluginSettings GetPluginSettings(ConstFieldDefinition field) {
  PluginSettings s;
  const std::uint8_t* p = field.bytes();
  s.setting = GetBE32(p + fs::kPluginSetting);
  s.byte_setting = p[fs::kPluginByte];
  std::copy_n(p + fs::kPluginConfig, s.config.size(), s.config.begin());
  return s;
}

void SetPluginSettings(FieldDefinition field, const PluginSettings& settings) {
  std::uint8_t* p = field.bytes();
  PutBE32(p + fs::kPluginSetting, settings.setting);
  p[fs::kPluginByte] = settings.byte_setting;
  std::copy(settings.config.begin(), settings.config.end(), p + fs::kPluginConfig);
}

}  // namespace qv
