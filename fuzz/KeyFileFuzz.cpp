// Files of the desktop's "[group]" and "key=value" form: an input is the desktop entry of the only
// application.
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

#include "fuzz/Fuzz.h"
#include "platform/linux/DefaultHandler.h"
#include "platform/linux/KeyFile.h"

using namespace Vastel_Connect;

namespace {

/// No longer line is tried: std::regex takes room on the stack for each character.
constexpr std::size_t kLongestLine = 4096;

struct Content {
  std::string firstGroup;
  /// By group and key.
  std::map<std::pair<std::string, std::string>, std::string> values;
};

/// What a key file says; absent when it has a line that not all readers take in the same way.
std::optional<Content> contentOf(std::string_view text) {
  // Printable ASCII except for the brackets; in keys, no blank either, not even in a language's
  // name.
  static const std::regex group(R"(\[([ -Z\\^-~]+)\])");
  static const std::regex entry(R"(([!-<>-Z\\^-~]+(?:\[[!-<>-Z\\^-~]+\])?)[ \t]*=[ \t]*(.*))");
  Content content;
  std::optional<std::string> current;
  std::istringstream lines{std::string(text)};
  for (std::string line; std::getline(lines, line);) {
    for (const char c : line) {
      if (static_cast<unsigned char>(c) < ' ' && c != '\t') return std::nullopt;
    }
    std::smatch match;
    if (line.empty() || line[0] == '#') continue;
    if (std::regex_match(line, match, group)) {
      current = match[1];
      if (content.firstGroup.empty()) content.firstGroup = *current;
    } else if (line[0] != '[' && current && std::regex_match(line, match, entry)) {
      content.values[{*current, match[1]}] = match[2];
    } else {
      return std::nullopt;
    }
  }
  return content;
}

/// A folder with one desktop entry, the default handler, for as long as the process lives.
class Folder {
 public:
  Folder() {
    char folder[] = "/tmp/connect-fuzz-XXXXXX";
    path_ = ::mkdtemp(folder);
    std::filesystem::create_directory(path_ + "/applications");
    std::ofstream(path_ + "/applications/mimeapps.list")
        << "[Default Applications]\nx-scheme-handler/https=only.desktop\n";
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_DIRS"}) {
      ::setenv(name, (path_ + "/none").c_str(), 1);
    }
    ::setenv("XDG_DATA_HOME", path_.c_str(), 1);
    ::setenv("PATH", "/bin", 1);
    for (const char* name : {"XDG_CURRENT_DESKTOP", "SNAP", "GTK_USE_PORTAL"}) ::unsetenv(name);
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  [[nodiscard]] std::string entry() const { return path_ + "/applications/only.desktop"; }

 private:
  std::string path_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  static const int file = ::open(folder.entry().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (size > kLongestLine) return 0;
  fuzz::expect(::ftruncate(file, 0) == 0 && ::pwrite(file, data, size, 0) >= 0, "the file system");
  const auto content = contentOf(fuzz::textOf(data, size));
  const auto keyFile = KeyFile::read(folder.entry());
  fuzz::expect(keyFile.has_value() == content.has_value(), "is it such a file");
  const auto handler = findDefaultHandler("https", "https://h/");
  fuzz::expect(keyFile || !handler, "no handler by what is no such file");
  if (!keyFile) return 0;
  fuzz::expect(keyFile->firstGroup() == content->firstGroup, "the first group");
  for (const auto& [name, value] : content->values) {
    fuzz::expect(keyFile->value(name.first, name.second) == value, "a value");
  }
  fuzz::expect(!keyFile->value("no such group", "Key"), "a value of nowhere");
  fuzz::expect(!keyFile->value(content->firstGroup, "no such key"), "a value of no key");
  if (!handler) return 0;
  // The words of the command line are those of the entry, with the URL for its one code.
  std::string words;
  for (const std::string& word : handler->arguments) words += word + " ";
  const auto exec = content->values.find({"Desktop Entry", "Exec"});
  fuzz::expect(exec != content->values.end(), "a command line");
  const std::string expected =
      std::regex_replace(std::regex_replace(exec->second + " ", std::regex("%[uU]"), "https://h/"),
                         std::regex(" +"), " ");
  fuzz::expect(words == expected.substr(expected.find_first_not_of(' ')), "its words");
  return 0;
}
