#include "bench/CoreCases.h"

#include <benchmark/benchmark.h>

#include <array>
#include <boost/json.hpp>
#include <cstring>

#include "api/ScreenPopApi.h"
#include "app/AppDelegate.h"
#include "bench/Straightforward.h"
#include "json/JsonText.h"
#include "tests/platform/RecordingHost.h"
#include "text/Base64.h"
#include "text/UrlText.h"
#include "text/Utf8.h"
#include "uri/UriPreProcessor.h"

namespace Vastel_Connect::bench {
namespace {

constexpr const char* kOurs = "ours";
constexpr const char* kStraight = "straightforward";
constexpr const char* kCopy = "memcpy";
constexpr const char* kParse = "Boost.JSON's parse";

/// A record as the web client writes it, with as many call fields as it takes.
std::string record(std::size_t size) {
  const std::string page = R"("WebPage":"https://crm.example/48213?caller=%2B31201234567")";
  std::string fields;
  for (int i = 0; fields.size() + page.size() + 40 < size; ++i) {
    if (i > 0) fields += ',';
    fields.append("\"Field number ").append(std::to_string(i));
    fields.append("\":\"Jansen, M. of Gro\u00DF & S\u00F6hne, 2018-11-01\"");
  }
  return R"({"ScriptType":"OpenWebPage","CallFields":{)" + fields + "}," + page + "}";
}

std::string encodeBase64(const std::string& bytes) {
  constexpr const char* kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = i; j < i + 3; ++j) {
      group = group << 8 | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
    }
    for (int shift = 18; shift >= 0; shift -= 6) text += kAlphabet[group >> shift & 63U];
  }
  for (std::size_t i = 0; i < (3 - bytes.size() % 3) % 3; ++i) text[text.size() - 1 - i] = '=';
  return text;
}

void copy(const std::string& text) {
  const std::unique_ptr<char[]> copied(new char[text.size()]);
  std::memcpy(copied.get(), text.data(), text.size());
  benchmark::DoNotOptimize(copied.get());
  benchmark::ClobberMemory();
}

/// The library alone, with the storage that the program lends it.
void parse(const std::string& json) {
  std::array<unsigned char, 4096> buffer;
  boost::json::monotonic_resource storage(buffer.data(), buffer.size());
  boost::system::error_code error;
  benchmark::DoNotOptimize(boost::json::parse(json, error, &storage));
}

/// A case that gives a text to a function and uses the result.
template <typename Function>
CoreCase on(const std::string& text, const char* step, const char* contestant, Function function) {
  return {step, contestant, text.size(), [text, function] {
            if constexpr (std::is_void_v<decltype(function(text))>) {
              function(text);
            } else {
              benchmark::DoNotOptimize(function(text));
            }
          }};
}

}  // namespace

std::vector<CoreCase> coreCases(std::size_t size) {
  RecordingHost::instance().records = false;
  const std::string json = record(size);
  const std::string command = encodeBase64(json);
  const std::string link = "screenpop:" + command;
  const std::string url = "https://crm.example/" + std::string(size, 'a');
  const auto split = [](const std::string& text) {
    struct_UriPreProcessor result;
    result.parseUri(text);
    return result;
  };
  const auto road = [](const std::string& text) { AppDelegate().processUri(text); };
  const auto fromJson = [](const std::string& text) {
    return struct_PartialScreenPopApi::fromJsonText(text);
  };
  std::vector<CoreCase> cases = {
      on(link, "split", kOurs, split),
      on(link, "split", kCopy, copy),
      on(link, "split", kStraight, straightforward::split),
      on(command, "base64", kOurs, [](const std::string& text) { return decodeBase64(text); }),
      on(command, "base64", kCopy, copy),
      on(command, "base64", kStraight, straightforward::decodeBase64),
      on(json, "UTF-8", kOurs, [](const std::string& text) { return isUtf8(text); }),
      on(json, "UTF-8", kCopy, copy),
      on(json, "UTF-8", kStraight, straightforward::isUtf8),
      on(json, "JSON to record", kOurs, fromJson),
      on(json, "JSON to record", kParse, parse),
      on(json, "JSON to record", kStraight, straightforward::webPage),
      on(url, "URL check", kOurs, [](const std::string& text) { return formsUrl(text); }),
      on(url, "URL check", kCopy, copy),
      on(url, "URL check", kStraight, straightforward::formsUrl),
      on(link, "whole road", kOurs, road),
      on(json, "whole road", kParse, parse),
  };
  for (CoreCase& each : cases) each.size = size;
  return cases;
}

std::vector<CoreCase> logCases() {
  RecordingHost::instance().records = false;
  const auto program = [](bool plain, bool json) {
    return [plain, json] {
      AppDelegate delegate;
      delegate.FlagLog = plain;
      delegate.FlagJsonLog = json;
      const std::string_view value = "https://crm.example/48213";
      for (int i = 0; i < kLogCalls; ++i) {
        benchmark::DoNotOptimize(delegate);
        delegate.logMessage("webpage: ", value);
      }
    };
  };
  const auto straight = [](bool on) {
    return [on] {
      const std::string value = "https://crm.example/48213";
      for (int i = 0; i < kLogCalls; ++i) straightforward::logMessage(on, "webpage: " + value);
    };
  };
  return {{"log call, off", kOurs, 0, program(false, false)},
          {"log call, off", kStraight, 0, straight(false)},
          {"log call, on", kOurs, 0, program(true, false)},
          {"log call, on", kStraight, 0, straight(true)},
          {"log call, JSON", kOurs, 0, program(false, true)}};
}

}  // namespace Vastel_Connect::bench
