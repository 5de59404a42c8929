// Does not compile, on purpose: a test looks at what the compiler says about a record that lacks
// the functions it needs.
#include "json/mapping/Decoder.h"
#include "json/mapping/Encoder.h"

namespace Vastel_Connect {

struct Plain {
  int n;
};

const auto kDecode = Decoder::decodeRecord<Plain>("plain");
const auto kEncode = Encoder::encodeRecord<Plain>("plain");

}  // namespace Vastel_Connect
