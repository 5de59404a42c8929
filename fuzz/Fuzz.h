#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

/// What each fuzz target defines: one input is tried, and a difference to the reference aborts.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Vastel_Connect::fuzz {

/// The bytes of an input as text.
inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// Ends the run with a report unless `same`: the program and its reference differ.
inline void expect(bool same, const char* what) {
  if (same) return;
  std::fprintf(stderr, "the program and the reference differ: %s\n", what);
  std::abort();
}

/// Takes what stands before the next `separator` of `text`, which loses both.
inline std::string_view takeField(std::string_view& text, char separator = '\n') {
  const std::string_view field = text.substr(0, text.find(separator));
  text.remove_prefix(field.size() < text.size() ? field.size() + 1 : text.size());
  return field;
}

}  // namespace Vastel_Connect::fuzz
