#include "tools/report/properties.h"

#include <string>
#include <unordered_map>

#include "tools/report/text_reading.h"

PropertyId FindPropertyId(std::string_view name) {
  static const std::unordered_map<std::string_view, std::size_t> ids = [] {
    std::unordered_map<std::string_view, std::size_t> byName;
    for (std::size_t i = 0; i < kPropertyCount; ++i) byName.emplace(kProperties[i].name, i);
    return byName;
  }();
  const auto found = ids.find(name);
  return static_cast<PropertyId>(found == ids.end() ? kPropertyCount : found->second);
}

StatedProperties ReadProperties(const SvgNode& node) {
  StatedProperties properties;
  const SvgAttribute* style = nullptr;
  for (const SvgAttribute& attribute : node.attributes) {
    if (attribute.name == "style") style = &attribute;
    const PropertyId id = FindPropertyId(attribute.name);
    // The transform attribute is read; it is the property of a style that is not.
    if (id != kPropertyCount && id != kTransform) properties[id] = {Trimmed(attribute.value), attribute.line, false};
  }
  if (style == nullptr) return properties;
  for (const Declaration& declaration : Declarations(style->value)) {
    const PropertyId id = FindPropertyId(declaration.name);
    if (id != kPropertyCount && !declaration.value.empty()) {
      properties[id] = {declaration.value, style->line, true};
    }
  }
  return properties;
}
