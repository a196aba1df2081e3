#include "engine/field_types.h"

#include "engine/text.h"

namespace qv {

namespace {
constexpr std::string_view kNames[kFieldTypeCount] = {
    "Not-Used", "Text", "Integer", "Float",   "Pop-Up",     "Check-Box",    "Unique",
    "Image",    "Date", "Time",    "Link",    "Linked",     "Note",         "Heading",
    "DB Popup", "Calculated",      "Relationship", "Conditional", "External"};
}

std::string_view FieldTypeName(unsigned code) {
  return code < kFieldTypeCount ? kNames[code] : std::string_view();
}

std::optional<FieldType> FieldTypeByName(std::string_view name) {
  for (unsigned code = 0; code < kFieldTypeCount; ++code)
    if (EqualsNoCase(kNames[code], name)) return static_cast<FieldType>(code);
  return std::nullopt;
}

bool HoldsTypedValue(unsigned code) {
  switch (code) {
    case kText:
    case kInteger:
    case kFloat:
    case kPopUp:
    case kCheckBox:
    case kDate:
    case kTime:
    case kNote:
      return true;
    default:
      return false;
  }
}

}  // namespace qv
