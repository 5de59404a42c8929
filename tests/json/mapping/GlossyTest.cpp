// What the concepts of the layer take for a record: everything here is decided by the compiler.
#include "json/mapping/Glossy.h"

#include <string>

#include "json/RawValue.h"
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
struct ReadsAnother {
  static std::optional<Nothing> fromJson(const JSON&);
};
struct Derived : OnlyRead {};

static_assert(Decodable<Small> && Encodable<Small> && Glossy<Small>);
static_assert(Decodable<OnlyRead> && !Encodable<OnlyRead> && !Glossy<OnlyRead>);
static_assert(!Decodable<OnlyWritten> && Encodable<OnlyWritten> && !Glossy<OnlyWritten>);
static_assert(!Decodable<Nothing> && !Encodable<Nothing>);
static_assert(!Decodable<FailsNever> && !Encodable<FailsNever>);
static_assert(!Decodable<ReadsByMember> && !Encodable<ReadsByMember>);
static_assert(!Decodable<ReadsAnother> && !Decodable<Derived>);
static_assert(!Decodable<int> && !Encodable<std::string> && !Glossy<JSON>);

enum class Bare { One };
static_assert(RawRepresentable<Color> && RawRepresentable<Level>);
static_assert(!RawRepresentable<Bare> && !RawRepresentable<int>);

}  // namespace
}  // namespace Vastel_Connect
