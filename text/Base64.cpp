#include "text/Base64.h"

#include <array>
#include <cstdint>

namespace Vastel_Connect {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr unsigned char kInvalid = 0xFF;

/// The six bits that a character stands for; kInvalid outside the alphabet.
constexpr std::array<unsigned char, 256> kBits = [] {
  std::array<unsigned char, 256> table{};
  table.fill(kInvalid);
  unsigned char bits = 0;
  for (const char c : kAlphabet) table[static_cast<unsigned char>(c)] = bits++;
  return table;
}();

}  // namespace

std::optional<std::string> decodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;

  // Padding at the end is read as zero bits, and the bytes that it stands for are cut off. Padding
  // anywhere else is a character outside the alphabet.
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  // The last four characters in its lowest 24 bits.
  std::uint32_t group = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPadding = i >= text.size() - padding;
    const auto bits = isPadding ? 0U : kBits[static_cast<unsigned char>(text[i])];
    if (bits == kInvalid) return std::nullopt;
    group = group << 6U | bits;
    if (i % 4 != 3) continue;
    for (const unsigned shift : {16U, 8U, 0U}) bytes += static_cast<char>(group >> shift & 0xFFU);
  }
  bytes.resize(bytes.size() - padding);
  return bytes;
}

}  // namespace Vastel_Connect
