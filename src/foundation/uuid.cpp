#include "foundation/uuid.h"

#include <algorithm>

#include <uuid/uuid.h>

namespace corvetta {

Uuid Uuid::random() {
    Bytes bytes;
    uuid_generate_random(bytes.data());
    return Uuid(bytes);
}

Uuid Uuid::nameBased(const Uuid& space, std::string_view name) {
    Bytes bytes;
    uuid_generate_sha1(bytes.data(), space.bytes().data(), name.data(), name.size());
    return Uuid(bytes);
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    // libuuid wants a terminated string of exactly 36 characters; check the length first so a
    // longer text with a valid prefix is refused.
    if (text.size() != 36) {
        return std::nullopt;
    }
    char buffer[37];
    std::copy(text.begin(), text.end(), buffer);
    buffer[36] = '\0';
    Bytes bytes;
    if (uuid_parse(buffer, bytes.data()) != 0) {
        return std::nullopt;
    }
    return Uuid(bytes);
}

std::string Uuid::string() const {
    char buffer[37];
    uuid_unparse_upper(bytes_.data(), buffer);
    return std::string(buffer, 36);
}

bool Uuid::isNil() const {
    return std::all_of(bytes_.begin(), bytes_.end(), [](std::uint8_t b) { return b == 0; });
}

}  // namespace corvetta

std::size_t std::hash<corvetta::Uuid>::operator()(const corvetta::Uuid& id) const noexcept {
    std::size_t h = 1469598103934665603ull;
    for (auto b : id.bytes()) {
        h = (h ^ b) * 1099511628211ull;
    }
    return h;
}
