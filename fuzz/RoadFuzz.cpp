// The whole road: from an event with a link to log lines of both forms and the opened page.
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "app/AppDelegate.h"
#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "tests/platform/Base64Text.h"
#include "tests/platform/RecordingHost.h"
#include "text/SchemeList.h"

using namespace Vastel_Connect;

namespace {

bool mayStop = false;

void follow(std::string_view link) {
  AppDelegate delegate;
  delegate.FlagLog = delegate.FlagJsonLog = true;
  const UriEvent event{[link](std::uint32_t /*keyword*/) { return std::string(link); }};
  delegate.UriEventHandlerWithEvent(event);
}

void expectStop(std::string_view link) {
  const pid_t child = ::fork();
  if (child == 0) {
    mayStop = true;
    follow(link);
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  fuzz::expect(WIFEXITED(status) && WEXITSTATUS(status) == 70, "an array stops it");
}

void expectLines(const std::vector<std::string>& messages, const std::vector<std::string>& lines) {
  fuzz::expect(lines.size() == 2 * messages.size(), "the number of log lines");
  for (std::size_t i = 0; i < messages.size(); ++i) {
    fuzz::expect(lines[2 * i] == "Log 14:07:09> " + messages[i], "a plain log line");
    const auto record = reference::parseJson(lines[2 * i + 1]);
    const bool valid = reference::isUtf8(messages[i]);
    fuzz::expect(record && record->members.at("message").text ==
                               (valid ? messages[i] : "error while serializing [log]"),
                 "a JSON log line");
  }
}

void tryLink(std::string_view link) {
  auto expected = reference::followLink(link);
  if (expected.stops) {
    // Every sixteenth text: a process is too slow for all.
    if (std::hash<std::string_view>()(link) % 16 == 0) expectStop(link);
    return;
  }
  RecordingHost& host = RecordingHost::instance();
  host.reset();
  follow(link);
  expected.messages.insert(expected.messages.begin(),
                           {"new uri event", "process uri: " + std::string(link)});
  expectLines(expected.messages, host.eventsOf("print: "));
  std::vector<std::string> pages;
  if (expected.page) pages.push_back(*expected.page);
  fuzz::expect(host.eventsOf("open: ") == pages, "the page");
}

/// "https:tel;https": whether a scheme is in a list.
void tryList(std::string_view text) {
  const std::size_t length = reference::schemeLength(text);
  if (length == 0) return;
  const std::string_view scheme = text.substr(0, length);
  const std::string_view list = text.substr(length + 1);
  fuzz::expect(listHasScheme(list, scheme) == reference::listHasScheme(list, scheme),
               "is the scheme in the list");
}

}  // namespace

/// Stands before the C library's. A stop where none is due would end the fuzzing silently.
extern "C" void _Exit(int status) noexcept {
  fuzz::expect(mayStop, "it stops");
  ::_exit(status);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto text = fuzz::textOf(data, size);
  tryList(text);
  tryLink(text);
  tryLink("screenpop://" + base64Text(text));
  return 0;
}
