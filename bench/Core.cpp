// The program without its desktop: from a link's text to the call that opens its page.
#include <ctime>

#include "app/AppDelegate.h"
#include "bench/Process.h"
#include "bench/Topics.h"
#include "tests/platform/Base64Text.h"
#include "tests/platform/RecordingHost.h"

namespace Vastel_Connect::bench {
namespace {

/// Of what is measured at once, in bytes: a single small link is shorter than the clock's steps.
constexpr std::size_t kBatch = std::size_t{1} << 20;

/// A link whose record, as the web client writes it, is of about that size: it has as many call
/// fields as it takes.
std::string linkOf(std::size_t size) {
  const std::string page = R"("WebPage":"https://crm.example/48213?caller=%2B31201234567")";
  std::string fields;
  for (int i = 0; fields.size() + page.size() + 40 < size; ++i) {
    if (i > 0) fields += ',';
    fields.append("\"Field number ").append(std::to_string(i));
    fields.append("\":\"Jansen, M. of Gro\u00DF & S\u00F6hne, 2018-11-01\"");
  }
  return "screenpop:" +
         base64Text(R"({"ScriptType":"OpenWebPage","CallFields":{)" + fields + "}," + page + "}");
}

double cpuMicroseconds() {
  std::timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// The processor's time for one call of `function`, in microseconds.
template <typename Function>
double timeOf(std::size_t count, Function function) {
  const double begin = cpuMicroseconds();
  for (std::size_t i = 0; i < count; ++i) function();
  return (cpuMicroseconds() - begin) / static_cast<double>(count);
}

}  // namespace

void measureCore(Samples& samples, int rounds) {
  RecordingHost::instance().records = false;
  const struct {
    const char* name;
    std::size_t size;
  } rows[] = {{"2 KiB", 2048}, {"10 MiB", 10 << 20}};
  for (const auto& [name, size] : rows) {
    const std::string link = linkOf(size);
    const std::size_t count = size < kBatch ? kBatch / size : 1;
    samples.compare("core", std::string("whole core, ") + name, "us", rounds,
                    {{"ours", [&link, count] {
                        return timeOf(count, [&link] { AppDelegate().processUri(link); });
                      }}});
  }
}

}  // namespace Vastel_Connect::bench
