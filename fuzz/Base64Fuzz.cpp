// Base64 of links: strict, padded, standard alphabet.
#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "text/Base64.h"

using namespace Vastel_Connect;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  fuzz::expect(decodeBase64(text) == reference::base64(text), "decodeBase64");
  return 0;
}
