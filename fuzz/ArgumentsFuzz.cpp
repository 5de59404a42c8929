// The switches among the arguments, one a line.
#include "app/AppDelegate.h"
#include "app/ConsoleTexts.h"
#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "platform/Platform.h"
#include "tests/platform/RecordingHost.h"

using namespace Vastel_Connect;

namespace {

/// `text` in the form in which letters are equal that differ in case only, as far as a letter of
/// ASCII is among them.
std::string folded(std::string text) {
  for (const auto& [from, to] : {std::pair("\xC5\xBF", "s"), {"\xE2\x84\xAA", "k"}}) {
    const std::string_view sign = from;
    for (auto at = text.find(sign); at != text.npos; at = text.find(sign)) {
      text.replace(at, sign.size(), to);
    }
  }
  return reference::lowerCase(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto text = fuzz::textOf(data, size);
  RecordingHost& host = RecordingHost::instance();
  host.reset();
  AppDelegate expected;
  while (!text.empty()) {
    const std::string argument(fuzz::takeField(text));
    if (!reference::isUtf8(argument)) continue;  // No host passes it on.
    host.arguments.push_back(argument);
    const std::string name = folded(argument);
    const auto is = [&name](const std::string& word) {
      return name == "-" + word || name == "/" + word;
    };
    expected.FlagChangeLog |= is("changelog");
    expected.FlagHelp |= is("help") || is("h");
    expected.FlagLog |= is("log");
    expected.FlagJsonLog |= is("jsonlog");
    expected.FlagShowUri |= is("showuri");
  }
  AppDelegate delegate;
  delegate.handleCommandLine();
  fuzz::expect(delegate.FlagChangeLog == expected.FlagChangeLog, "-changelog");
  fuzz::expect(delegate.FlagHelp == expected.FlagHelp, "-help");
  fuzz::expect(delegate.FlagLog == expected.FlagLog, "-log");
  fuzz::expect(delegate.FlagJsonLog == expected.FlagJsonLog, "-jsonlog");
  fuzz::expect(delegate.FlagShowUri == expected.FlagShowUri, "-showuri");

  const bool prints = expected.FlagHelp || expected.FlagChangeLog || expected.FlagShowUri;
  fuzz::expect(host.eventsOf("terminate").size() == (prints ? 1 : 0), "the end after a text");
  const auto printed = host.eventsOf("print: ");
  host.reset();
  printBanner();
  if (expected.FlagHelp) printUsage();
  if (expected.FlagChangeLog) printChangeLog();
  if (expected.FlagShowUri) platform::printLine(UriApiText);
  fuzz::expect(host.eventsOf("print: ") == printed, "the texts that are printed");
  return 0;
}
