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

}  // namespace Vastel_Connect::fuzz
