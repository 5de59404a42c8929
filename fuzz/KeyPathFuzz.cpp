// Key paths: looking up, storing, and joining entries. The first line of an input is the delimiter;
// each further one is a key path, "=" and the key of an object that is stored under the path;
// without
// "=", a number is. An empty line begins the next dictionary.
#include <map>

#include "fuzz/Fuzz.h"
#include "fuzz/Reference.h"
#include "json/KeyPath.h"
#include "json/mapping/JoinJson.h"

using namespace Vastel_Connect;
using reference::Json;

namespace {

/// The first key of `path`, which loses it and the delimiter behind it. False: it was the last.
bool takeKey(std::string& path, const std::string& delimiter, std::string& key) {
  const auto end = delimiter.empty() ? path.npos : path.find(delimiter);
  key = path.substr(0, end);
  if (end == path.npos) return false;
  path = path.substr(end + delimiter.size());
  return true;
}

void store(Json& json, std::string path, const std::string& delimiter, const Json& value) {
  std::string key;
  if (!takeKey(path, delimiter, key)) {
    json.store(key, value);
    return;
  }
  const Json* known = json.member(key);
  Json inner;
  inner.kind = Json::Object;
  if (known != nullptr && known->kind == Json::Object) inner = *known;
  store(inner, path, delimiter, value);
  json.store(key, inner);
}

const Json* find(const Json& json, std::string path, const std::string& delimiter) {
  std::string key;
  const bool more = takeKey(path, delimiter, key);
  const Json* value = json.member(key);
  if (!more || value == nullptr) return value;
  return value->kind == Json::Object ? find(*value, path, delimiter) : nullptr;
}

/// A form in which equal values are equal texts, whatever the order of members.
std::string form(const std::map<std::string, std::string>& members) {
  std::string text = "{";
  for (const auto& [key, member] : members) text += std::to_string(key.size()) + ":" + key + member;
  return text + "}";
}

std::string form(const JsonValue& value) {
  const JSON* object = value.if_object();
  if (object == nullptr) return boost::json::serialize(value);
  std::map<std::string, std::string> members;
  for (const auto& [key, member] : *object) members[key] = form(member);
  return form(members);
}

std::string form(const Json& value) {
  if (value.kind != Json::Object) return value.text;
  std::map<std::string, std::string> members;
  for (const auto& [key, member] : value.members) members[key] = form(member);
  return form(members);
}

/// The same entries for the program and for the reference.
struct Entries {
  std::vector<std::optional<JSON>> dictionaries{JSON()};
  std::vector<Json> references{
      Json{.kind = Json::Object, .text = {}, .elements = {}, .members = {}}};
  std::vector<std::string> paths;

  void add(std::string_view line) {
    if (line.empty()) {
      dictionaries.emplace_back();  // One that is absent.
      dictionaries.emplace_back(JSON());
      references.push_back({.kind = Json::Object, .text = {}, .elements = {}, .members = {}});
      return;
    }
    const bool holdsObject = line.find('=') != line.npos;
    paths.emplace_back(fuzz::takeField(line, '='));
    const auto number = static_cast<std::int64_t>(paths.size());
    Json value{.kind = Json::Number, .text = std::to_string(number), .elements = {}, .members = {}};
    JsonValue ours = number;
    if (holdsObject) {
      ours = JSON{{line, number}};
      value = {.kind = Json::Object,
               .text = {},
               .elements = {},
               .members = {{std::string(line), value}}};
    }
    (*dictionaries.back())[paths.back()] = ours;
    references.back().store(paths.back(), value);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;  // The reference copies a dictionary for each key.
  auto text = fuzz::textOf(data, size);
  const std::string delimiter(fuzz::takeField(text));
  Entries entries;
  while (!text.empty()) entries.add(fuzz::takeField(text));

  Json expected{.kind = Json::Object, .text = {}, .elements = {}, .members = {}};
  JSON stored;
  for (const Json& dictionary : entries.references) {
    for (const auto& [path, value] : dictionary.members) store(expected, path, delimiter, value);
  }
  for (const auto& dictionary : entries.dictionaries) {
    if (!dictionary) continue;
    for (const auto& [path, value] : *dictionary)
      setValueForKeyPath(stored, path, value, delimiter);
  }
  const JSON joined = Encoder::joinJson(entries.dictionaries, delimiter);
  fuzz::expect(form(joined) == form(expected), "joinJson");
  fuzz::expect(form(stored) == form(expected), "setValueForKeyPath");
  for (const std::string& path : entries.paths) {
    const JsonValue* value = valueForKeyPath(joined, path, delimiter);
    const Json* other = find(expected, path, delimiter);
    fuzz::expect((value == nullptr) == (other == nullptr), "whether a value is found");
    fuzz::expect(value == nullptr || form(*value) == form(*other), "which value is found");
  }
  return 0;
}
