#include "TQPlatform/UUID.hpp"

#include <cstring>
#include <uuid/uuid.h>

namespace tq {

namespace {

constexpr std::size_t textLength = 36;

}  // namespace

UUID UUID::random() {
  UUID result;
  uuid_generate_random(result.bytes_.data());
  return result;
}

std::optional<UUID> UUID::parse(std::string_view text) {
  if (text.size() != textLength) return std::nullopt;
  UUID result;
  if (uuid_parse(std::string(text).c_str(), result.bytes_.data()) != 0) return std::nullopt;
  return result;
}

std::string UUID::text() const {
  std::array<char, textLength + 1> buffer{};
  uuid_unparse_upper(bytes_.data(), buffer.data());
  return {buffer.data(), textLength};
}

}  // namespace tq

std::size_t std::hash<tq::UUID>::operator()(const tq::UUID& id) const noexcept {
  // Eight bytes of a random identifier are as good a hash as all sixteen.
  std::size_t value = 0;
  std::memcpy(&value, id.bytes_.data(), sizeof value);
  return value;
}
