#include "text/Base64.h"

#include <array>
#include <cstdint>

namespace Vastel_Connect {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The bits of a character outside the alphabet. They are above the 24 of a whole group, so that
/// one test of many groups tells of all their characters.
constexpr std::uint32_t kInvalid = 1U << 24;

/// The bits of each character at one place of a group, which is `shift` bits from its end.
constexpr std::array<std::uint32_t, 256> tableFor(int shift) {
  std::array<std::uint32_t, 256> table{};
  table.fill(kInvalid);
  for (std::uint32_t bits = 0; bits < kAlphabet.size(); ++bits) {
    table[static_cast<unsigned char>(kAlphabet[bits])] = bits << shift;
  }
  return table;
}

constexpr std::array<std::array<std::uint32_t, 256>, 4> kTables = {tableFor(18), tableFor(12),
                                                                   tableFor(6), tableFor(0)};

/// Writes the three bytes of four characters. The result is kInvalid or above when one of them is
/// outside the alphabet.
std::uint32_t decodeGroup(const char* group, char* out) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < kTables.size(); ++i) {
    bits |= kTables[i][static_cast<unsigned char>(group[i])];
  }
  for (int i = 0; i < 3; ++i) out[i] = static_cast<char>(bits >> (16 - 8 * i));
  return bits;
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
  const char* const end = text.data() + text.size() - 4;
  std::uint32_t seen = 0;
  for (const char* group = text.data(); group != end; group += 4, out += 3) {
    seen |= decodeGroup(group, out);
  }
  seen |= decodeGroup(last.data(), out);
  if (seen >= kInvalid) return std::nullopt;
  bytes.resize(bytes.size() - padding);
  return bytes;
}

}  // namespace Vastel_Connect
