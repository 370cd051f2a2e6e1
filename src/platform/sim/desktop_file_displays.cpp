#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "foundation/uuid.h"
#include "platform/edid.h"
#include "platform/sim/desktop_file_values.h"

namespace corvetta::desktop_file {

namespace {

// "00ffffffffffff00...": two hexadecimal digits per byte, nothing else.
std::vector<std::uint8_t> hexBytes(const Json& value, const std::string& place) {
    if (!value.is_string()) {
        refuse(place, "expected a string");
    }
    const auto& text = value.get_ref<const std::string&>();
    auto digit = [&](char c) {
        if (c >= '0' && c <= '9') {
            return c - '0';
        }
        if (c >= 'a' && c <= 'f') {
            return c - 'a' + 10;
        }
        if (c >= 'A' && c <= 'F') {
            return c - 'A' + 10;
        }
        refuse(place, "expected hexadecimal bytes");
    };
    if (text.size() % 2 != 0) {
        refuse(place, "expected hexadecimal bytes");
    }
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(digit(text[i]) * 16 + digit(text[i + 1])));
    }
    return bytes;
}

// As a real display: what the file does not say is read from the EDID, where it has it.
DisplayIdentity readIdentity(const ObjectReader& reader, std::optional<std::string>& edidName) {
    DisplayIdentity identity;
    if (const auto uuid = optionalText(reader, "uuid")) {
        const auto parsed = Uuid::parse(*uuid);
        if (!parsed) {
            refuse(reader.placeOf("uuid"), "expected a UUID (8-4-4-4-12 hexadecimal digits)");
        }
        identity.persistentUUID = parsed->string();
    }
    identity.serial = optionalText(reader, "serial");
    if (const auto* edid = reader.find("edid")) {
        identity.edid = hexBytes(*edid, reader.placeOf("edid"));
        if (const auto parsed = parseEdid(identity.edid)) {
            edidName = parsed->monitorName;
            if (!identity.serial) {
                identity.serial = parsed->serial();
            }
            if (!identity.persistentUUID) {
                identity.persistentUUID = parsed->persistentUuid().string();
            }
        }
    }
    identity.physicalSize = reader.size("physicalSize");
    identity.colorSpace = optionalText(reader, "colorSpace");
    return identity;
}

}  // namespace

SimulatedDisplay readDisplay(const Json& value, const std::string& place) {
    const ObjectReader reader(value, place,
                              {"id", "name", "frame", "visibleFrame", "scale", "builtin", "uuid",
                               "serial", "edid", "physicalSize", "colorSpace"});
    SimulatedDisplay display;
    display.id = static_cast<ScreenNumber>(integer(reader.required("id"), reader.placeOf("id"), 1,
                                                   std::numeric_limits<ScreenNumber>::max()));
    std::optional<std::string> edidName;
    display.identity = readIdentity(reader, edidName);
    display.name = reader.text("name", edidName.value_or("Display " + std::to_string(display.id)));
    display.frame = rect(reader.required("frame"), reader.placeOf("frame"));
    display.visibleFrame = display.frame;
    if (const auto* visible = reader.find("visibleFrame")) {
        display.visibleFrame = rect(*visible, reader.placeOf("visibleFrame"));
        if (!display.frame.contains(display.visibleFrame)) {
            refuse(reader.placeOf("visibleFrame"), "must lie inside the frame");
        }
    }
    if (const auto* scale = reader.find("scale")) {
        display.scale = number(*scale, reader.placeOf("scale"));
        if (display.scale <= 0) {
            refuse(reader.placeOf("scale"), "must be positive");
        }
    }
    display.builtin = reader.flag("builtin", false);
    return display;
}

}  // namespace corvetta::desktop_file
