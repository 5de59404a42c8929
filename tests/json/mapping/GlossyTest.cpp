// What the layer takes for a record and for an enumeration: everything here is decided by the
// compiler.
#include "json/mapping/Glossy.h"

#include <concepts>
#include <string>

#include "json/mapping/Decoder.h"
#include "json/mapping/Encoder.h"
#include "tests/json/mapping/Records.h"

namespace Vastel_Connect {
namespace {

struct Nothing {};
struct OnlyRead {
  static std::optional<OnlyRead> fromJson(const JSON&);
};
struct OnlyWritten {
  std::optional<JSON> toJson() const;
};
struct FailsNever {
  static FailsNever fromJson(const JSON&);
  JSON toJson() const;
};
struct ReadsByMember {
  std::optional<ReadsByMember> fromJson(const JSON&);
  std::optional<JSON> toJson();
};
struct Derived : OnlyRead {};

static_assert(Glossy<Small>);
static_assert(Decodable<OnlyRead> && !Encodable<OnlyRead> && !Glossy<OnlyRead>);
static_assert(!Decodable<OnlyWritten> && Encodable<OnlyWritten> && !Glossy<OnlyWritten>);
static_assert(!Decodable<Nothing> && !Encodable<Nothing> && !Decodable<Derived>);
static_assert(!Decodable<FailsNever> && !Encodable<FailsNever>);
static_assert(!Decodable<ReadsByMember> && !Encodable<ReadsByMember>);
static_assert(!Decodable<int> && !Encodable<std::string> && !Glossy<JSON>);

// Whoever uses another type is told at the call.
constexpr auto read = []<typename T>(T*) -> decltype(Decoder::decodeRecord<T>("")) { return {}; };
constexpr auto write = []<typename T>(T*) -> decltype(Encoder::encodeRecord<T>("")) { return {}; };
static_assert(std::invocable<decltype(read), Small*> && std::invocable<decltype(write), Small*>);
static_assert(!std::invocable<decltype(read), Nothing*>);
static_assert(!std::invocable<decltype(write), Nothing*>);

static_assert(RawRepresentable<Color> && RawRepresentable<Level>);
static_assert(!RawRepresentable<int>);

}  // namespace
}  // namespace Vastel_Connect
