// UTF-8 wherever a text is asked whether it is: behind base64, in JSON log lines, in query texts.
#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "json/mapping/Url.h"
#include "log/JsonLogLine.h"
#include "tests/platform/Base64Text.h"
#include "uri/UriPreProcessor.h"

using namespace Vastel_Connect;

namespace {

void tryCommand(std::string_view bytes, bool valid) {
  struct_UriPreProcessor preProcessor;
  preProcessor.parseUri("screenpop:" + base64Text(bytes));
  preProcessor.decodeCommand();
  fuzz::expect(preProcessor.DecodedCommand.has_value() == (valid && !bytes.empty()), "command");
  fuzz::expect(preProcessor.DecodedCommand.value_or(std::string(bytes)) == bytes, "its text");
}

void tryLogLine(std::string_view bytes, bool valid) {
  const std::string line = makeJsonLogLine(bytes);
  const bool oneLine = line.find_first_of(std::string_view("\0\n\r\x1b", 4)) == line.npos;
  fuzz::expect(oneLine, "a log line is one line");
  const auto record = reference::parseJson(line);
  fuzz::expect(record && record->members.size() == 3, "a log line is a record");
  fuzz::expect(record->member("event")->text == "Log", "event");
  fuzz::expect(record->member("datetime")->text == "2018-03-05T14:07:09+0100", "datetime");
  fuzz::expect(record->member("message")->text == (valid ? bytes : "error while serializing [log]"),
               "message");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = fuzz::textOf(data, size);
  const bool valid = reference::isUtf8(bytes);
  tryCommand(bytes, valid);
  tryLogLine(bytes, valid);
  fuzz::expect(percentEncodedForQuery(bytes).has_value() == valid, "query");
  return 0;
}
