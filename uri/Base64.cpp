#include "uri/Base64.h"

#include <array>
#include <cstdint>

namespace Vastel_Connect {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Six bits for each character of the alphabet. Any other has a bit above the 24 of a whole group,
/// so that one test of a group tells of all its characters.
constexpr std::uint32_t kInvalid = 1U << 24;

constexpr std::array<std::uint32_t, 256> kSixBits = [] {
  std::array<std::uint32_t, 256> table{};
  table.fill(kInvalid);
  for (std::uint32_t bits = 0; bits < kAlphabet.size(); ++bits) {
    table[static_cast<unsigned char>(kAlphabet[bits])] = bits;
  }
  return table;
}();

/// The 24 bits of four characters, or a value of kInvalid and above.
std::uint32_t decodeGroup(const char* group) {
  const auto bits = [group](int i) { return kSixBits[static_cast<unsigned char>(group[i])]; };
  const std::uint32_t invalid = (bits(0) | bits(1) | bits(2) | bits(3)) & kInvalid;
  return invalid | (bits(0) << 18 | bits(1) << 12 | bits(2) << 6 | bits(3));
}

}  // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  if (text.empty()) return std::string();

  // The padding of the last group is read as zero bits, and the bytes that it stands for are cut
  // off at the end. Padding anywhere else is a character outside the alphabet.
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  std::array<char, 4> last{};
  text.substr(text.size() - 4).copy(last.data(), 4);
  for (std::size_t i = 4 - padding; i < 4; ++i) last[i] = kAlphabet.front();

  std::string bytes(text.size() / 4 * 3, '\0');
  char* out = bytes.data();
  for (std::size_t i = 0; i < text.size(); i += 4) {
    const std::uint32_t group = decodeGroup(i + 4 < text.size() ? &text[i] : last.data());
    if (group >= kInvalid) return std::nullopt;
    *out++ = static_cast<char>(group >> 16);
    *out++ = static_cast<char>(group >> 8);
    *out++ = static_cast<char>(group);
  }
  bytes.resize(bytes.size() - padding);
  return bytes;
}

}  // namespace Vastel_Connect
