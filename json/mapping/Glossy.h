#pragma once

#include <concepts>
#include <optional>

#include "json/Json.h"

namespace Vastel_Connect {

// The mapping layer is an interface that the web client's programs share, and has the names that it
// has in all of them. No record of this program uses it yet.

/// A record that can be built from a dictionary. It has
///   static std::optional<Record> fromJson(const JSON& json);
/// which is absent when `json` does not hold what the record needs. No base class is needed.
template <typename Record>
concept Decodable = requires(const JSON& json) {
  { Record::fromJson(json) } -> std::same_as<std::optional<Record>>;
};

/// A record that can be turned into a dictionary. It has
///   std::optional<JSON> toJson() const;
/// which is absent when the record has no JSON form.
template <typename Record>
concept Encodable = requires(const Record& record) {
  { record.toJson() } -> std::same_as<std::optional<JSON>>;
};

/// A record that can be read and written.
template <typename Record>
concept Glossy = Decodable<Record> && Encodable<Record>;

}  // namespace Vastel_Connect
