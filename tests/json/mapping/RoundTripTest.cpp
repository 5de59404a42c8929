// Records of every kind of member, randomly made: what is encoded, joined and written as text must
// be read back as it was.
#include <gtest/gtest.h>

#include <chrono>
#include <iterator>
#include <limits>
#include <random>

#include "json/JsonText.h"
#include "json/mapping/Decoder.h"
#include "json/mapping/Encoder.h"
#include "json/mapping/JoinJson.h"
#include "tests/json/mapping/InZone.h"
#include "tests/json/mapping/Records.h"

namespace Vastel_Connect {
namespace {

struct Everything {
  std::optional<std::string> text;
  std::optional<bool> boolean;
  std::optional<double> real;
  std::optional<std::vector<std::string>> texts;
  std::optional<Dictionary<std::int64_t>> numbers;
  std::optional<std::int32_t> int32;
  std::optional<std::uint32_t> uint32;
  std::optional<std::int64_t> int64;
  std::optional<std::uint64_t> uint64;
  std::optional<std::vector<std::int32_t>> int32s;
  std::optional<std::vector<std::uint32_t>> uint32s;
  std::optional<std::vector<std::int64_t>> int64s;
  std::optional<std::vector<std::uint64_t>> uint64s;
  std::optional<Color> color;
  std::optional<std::vector<Level>> levels;
  std::optional<Date> date;
  std::optional<std::vector<Date>> dates;
  std::optional<Url> url;
  std::vector<Everything> inner;  // none or one
  std::optional<std::vector<Everything>> array;
  // Of a record that is whole here, as std::map wants it.
  std::optional<Dictionary<Small>> dictionary;
  std::optional<Dictionary<std::vector<Small>>> arrays;

  static std::optional<Everything> fromJson(const JSON& json);
  [[nodiscard]] std::optional<JSON> toJson() const;
  bool operator==(const Everything&) const = default;
};

// Some members share a dictionary, so that the join has something to do.
std::optional<Everything> Everything::fromJson(const JSON& json) {
  Everything record;
  record.text = Decoder::decode<std::string>("text")(json);
  record.boolean = Decoder::decode<bool>("plain.boolean")(json);
  record.real = Decoder::decode<double>("plain.real")(json);
  record.texts = Decoder::decode<std::vector<std::string>>("plain.deep.texts")(json);
  record.numbers = Decoder::decode<Dictionary<std::int64_t>>("plain.deep.numbers")(json);
  record.int32 = Decoder::decodeInt32("int.32")(json);
  record.uint32 = Decoder::decodeUInt32("uint.32")(json);
  record.int64 = Decoder::decodeInt64("int.64")(json);
  record.uint64 = Decoder::decodeUInt64("uint.64")(json);
  record.int32s = Decoder::decodeInt32Array("int.32s")(json);
  record.uint32s = Decoder::decodeUInt32Array("uint.32s")(json);
  record.int64s = Decoder::decodeInt64Array("int.64s")(json);
  record.uint64s = Decoder::decodeUInt64Array("uint.64s")(json);
  record.color = Decoder::decodeEnum<Color>("")(json);
  record.levels = Decoder::decodeEnumArray<Level>("plain.")(json);
  record.date = Decoder::decodeDate("date")(json);
  record.dates = Decoder::decodeDateArray("plain.dates")(json);
  record.url = Decoder::decodeUrl("url")(json);
  if (auto inner = Decoder::decodeRecord<Everything>("records.inner")(json))
    record.inner = {*inner};
  record.array = Decoder::decodeRecordArray<Everything>("records.array")(json);
  record.dictionary = Decoder::decodeRecordDictionary<Small>("records.dictionary")(json);
  record.arrays = Decoder::decodeRecordArrayDictionary<Small>("records.arrays")(json);
  return record;
}

std::optional<JSON> Everything::toJson() const {
  return Encoder::joinJson({
      Encoder::encode<std::string>("text")(text),
      Encoder::encode<bool>("plain.boolean")(boolean),
      Encoder::encode<double>("plain.real")(real),
      Encoder::encode<std::vector<std::string>>("plain.deep.texts")(texts),
      Encoder::encode<Dictionary<std::int64_t>>("plain.deep.numbers")(numbers),
      Encoder::encodeInt32("int.32")(int32),
      Encoder::encodeUInt32("uint.32")(uint32),
      Encoder::encodeInt64("int.64")(int64),
      Encoder::encodeUInt64("uint.64")(uint64),
      Encoder::encodeInt32Array("int.32s")(int32s),
      Encoder::encodeUInt32Array("uint.32s")(uint32s),
      Encoder::encodeInt64Array("int.64s")(int64s),
      Encoder::encodeUInt64Array("uint.64s")(uint64s),
      Encoder::encodeEnum<Color>("")(color),
      Encoder::encodeEnumArray<Level>("plain.")(levels),
      Encoder::encodeDate("date")(date),
      Encoder::encodeDateArray("plain.dates")(dates),
      Encoder::encodeUrl("url")(url),
      Encoder::encodeRecord<Everything>("records.inner")(inner.empty() ? std::nullopt
                                                                       : std::optional(inner[0])),
      Encoder::encodeRecordArray<Everything>("records.array")(array),
      Encoder::encodeRecordDictionary<Small>("records.dictionary")(dictionary),
      Encoder::encodeRecordArrayDictionary<Small>("records.arrays")(arrays),
  });
}

/// Makes records of random members, the same in each run.
class Generator {
 public:
  explicit Generator(std::uint64_t seed, bool shortReals = false)
      : random_(seed), shortReals_(shortReals) {}

 private:
  std::uint64_t below(std::uint64_t end) { return random_() % end; }

  template <typename Make>
  auto maybe(Make make) {
    return below(2) == 0 ? std::optional(make()) : std::nullopt;
  }

  template <typename Make>
  auto some(Make make) {
    std::vector<decltype(make())> values;
    for (auto count = below(4); count > 0; --count) values.push_back(make());
    return values;
  }

  template <typename Make>
  auto named(Make make) {
    Dictionary<decltype(make())> values;
    for (auto count = below(4); count > 0; --count) values.emplace(text(), make());
    return values;
  }

  template <typename Integer>
  Integer integer() {
    using Limits = std::numeric_limits<Integer>;
    const Integer edges[] = {0, 1, static_cast<Integer>(-1), Limits::min(), Limits::max()};
    if (below(2) == 0) return edges[below(std::size(edges))];
    return static_cast<Integer>(random_());
  }

  double real() {
    if (shortReals_) return static_cast<double>(integer<std::int16_t>()) / 4;
    const double edges[] = {0.0, 1.0, -0.5, 1e-300, 9007199254740993.0};
    if (below(2) == 0) return edges[below(std::size(edges))];
    return static_cast<double>(integer<std::int64_t>()) / 1024;
  }

  /// UTF-8 with all that JSON treats in a way of its own, and the delimiter of key paths.
  std::string text() {
    static const std::string kSigns[] = {"a",
                                         "Z",
                                         "0",
                                         ".",
                                         " ",
                                         "\"",
                                         "\\",
                                         "/",
                                         "\n",
                                         "\x7F",
                                         std::string(1, '\0'),
                                         "\x1F",
                                         "\xC3\xA9",
                                         "\xE2\x80\xA8",
                                         "\xF0\x9F\x93\x9E",
                                         "\xEF\xBF\xBF"};
    std::string made;
    for (auto count = below(8); count > 0; --count) made += kSigns[below(std::size(kSigns))];
    return made;
  }

  /// A date of a year with four digits in every zone.
  Date date() {
    return Date(std::chrono::seconds(static_cast<std::int64_t>(below(315000000000)) - 62000000000));
  }

  /// A URL that is its own encoding: "%" would be encoded once more when it is read.
  Url url() {
    static constexpr std::string_view kSigns = "abcXYZ019-._~!$&'()*+,;=:@/?";
    std::string made;
    for (auto count = below(20); count > 0; --count) made += kSigns.data()[below(kSigns.size())];
    return *Url::fromText(made);
  }

  std::mt19937_64 random_;
  bool shortReals_;

 public:
  Everything record(int depth) {
    const auto inner = [&] { return record(depth - 1); };
    const auto small = [&] { return Small{static_cast<int>(below(1000))}; };
    Everything made;
    made.text = maybe([&] { return text(); });
    made.boolean = maybe([&] { return below(2) == 1; });
    made.real = maybe([&] { return real(); });
    made.texts = maybe([&] { return some([&] { return text(); }); });
    made.numbers = maybe([&] { return named([&] { return integer<std::int64_t>(); }); });
    made.int32 = maybe([&] { return integer<std::int32_t>(); });
    made.uint32 = maybe([&] { return integer<std::uint32_t>(); });
    made.int64 = maybe([&] { return integer<std::int64_t>(); });
    made.uint64 = maybe([&] { return integer<std::uint64_t>(); });
    made.int32s = maybe([&] { return some([&] { return integer<std::int32_t>(); }); });
    made.uint32s = maybe([&] { return some([&] { return integer<std::uint32_t>(); }); });
    made.int64s = maybe([&] { return some([&] { return integer<std::int64_t>(); }); });
    made.uint64s = maybe([&] { return some([&] { return integer<std::uint64_t>(); }); });
    made.color = maybe([&] { return below(2) == 0 ? Color::Red : Color::Green; });
    made.levels =
        maybe([&] { return some([&] { return below(2) == 0 ? Level::Low : Level::High; }); });
    made.date = maybe([&] { return date(); });
    made.dates = maybe([&] { return some([&] { return date(); }); });
    made.url = maybe([&] { return url(); });
    if (depth > 0) {
      if (below(2) == 0) made.inner = {inner()};
      made.array = maybe([&] { return some(inner); });
      made.dictionary = maybe([&] { return named(small); });
      made.arrays = maybe([&] { return named([&] { return some(small); }); });
    }
    return made;
  }
};

std::string text(const std::optional<Everything>& record) {
  return record ? *writeJsonText(*record->toJson()) : "absent";
}

static_assert(Glossy<Everything>);

TEST(RoundTrip, GivesTheSameRecord) {
  constexpr std::uint64_t kSeed = 20181105;
  Generator generator(kSeed);
  for (int i = 0; i < 1000; ++i) {
    const auto record = generator.record(2);
    const auto json = record.toJson();
    ASSERT_TRUE(json);
    const auto read = Everything::fromJson(*json);
    ASSERT_TRUE(read == record) << "record " << i << " of seed " << kSeed << "\n  "
                                << *writeJsonText(*json) << "\nis read as\n  " << text(read);
  }
}

// The reader may miss the last digit of a long real, so that the reals here are short.
TEST(RoundTrip, GivesTheSameRecordThroughText) {
  constexpr std::uint64_t kSeed = 20260101;
  Generator generator(kSeed, true);
  for (int i = 0; i < 1000; ++i) {
    const auto record = generator.record(1);
    const auto written = *writeJsonText(*record.toJson());
    const auto document = parseJsonText(written);
    ASSERT_TRUE(document && document->is_object()) << written;
    const auto read = Everything::fromJson(document->get_object());
    ASSERT_TRUE(read == record) << "record " << i << " of seed " << kSeed << "\n  " << written
                                << "\nis read as\n  " << text(read);
  }
}

}  // namespace
}  // namespace Vastel_Connect
