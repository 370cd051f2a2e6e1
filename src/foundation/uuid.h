// uuid.h: Random identifiers for stored records, in their canonical upper-case text form.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace corvetta {

// A 128-bit identifier. Its text form is the canonical upper-case one
// ("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"), as stored records carry it.
class Uuid {
public:
    using Bytes = std::array<std::uint8_t, 16>;

    // The nil identifier, all zeros.
    Uuid() = default;
    explicit Uuid(const Bytes& bytes) : bytes_(bytes) {}

    // A fresh random (version 4) identifier.
    static Uuid random();
    // The name-based (version 5, SHA-1) identifier of `name` within `space`: the same on every
    // run and machine, so a record can be recognised by what it names.
    static Uuid nameBased(const Uuid& space, std::string_view name);
    // Accepts the 8-4-4-4-12 form in either case; anything else has no value.
    static std::optional<Uuid> parse(std::string_view text);

    std::string string() const;
    const Bytes& bytes() const { return bytes_; }
    bool isNil() const;

    auto operator<=>(const Uuid&) const = default;

private:
    Bytes bytes_{};
};

}  // namespace corvetta

template <>
struct std::hash<corvetta::Uuid> {
    std::size_t operator()(const corvetta::Uuid& id) const noexcept;
};
