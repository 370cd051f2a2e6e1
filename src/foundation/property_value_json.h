// property_value_json.h: Converts stored values to and from JSON for the preferences file.
#pragma once

// Converts between stored values and JSON. Data values are kept as {"$data": "<base64>"}; every
// other kind maps to its plain JSON form, so the preferences file can be written by hand.

#include <optional>
#include <string>

#include "foundation/json.h"
#include "foundation/property_value.h"

namespace corvetta {

Json propertyValueToJson(const PropertyValue& value);
// Null has no stored form and gives no value; so does a "$data" object whose text is not base64.
std::optional<PropertyValue> propertyValueFromJson(const Json& json);

}  // namespace corvetta
