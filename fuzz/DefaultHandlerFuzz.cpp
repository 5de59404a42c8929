// The command line of a default handler: an input is the desktop entry of the only application.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "fuzz/Fuzz.h"
#include "fuzz/KeyFileReference.h"
#include "platform/linux/DefaultHandler.h"

using namespace Vastel_Connect;

namespace {

constexpr const char* kUrl = "https://page.test/?a=%20b";

/// A folder with one application and one program, for as long as the process lives.
class Folder {
 public:
  Folder() {
    char folder[] = "/tmp/connect-fuzz-XXXXXX";
    path_ = ::mkdtemp(folder);
    std::filesystem::create_directories(path_ + "/share/applications");
    write("/share/mimeapps.list", "");
    write("/share/applications/mimeapps.list",
          "[Default Applications]\nx-scheme-handler/https=only.desktop\n");
    write("/prog", "");
    ::chmod((path_ + "/prog").c_str(), 0700);
    for (const char* name : {"XDG_CURRENT_DESKTOP", "SNAP", "GTK_USE_PORTAL"}) ::unsetenv(name);
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_DIRS"}) {
      ::setenv(name, (path_ + "/none").c_str(), 1);
    }
    ::setenv("XDG_DATA_HOME", (path_ + "/share").c_str(), 1);
    ::setenv("PATH", path_.c_str(), 1);
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  void write(const std::string& name, std::string_view text) const {
    const int file = ::open((path_ + name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    fuzz::expect(::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
                 "the file system");
    ::close(file);
  }
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};

bool isPlain(const std::string& text) {
  for (const char c : text) {
    const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    const bool digit = c >= '0' && c <= '9';
    if (!letter && !digit && std::string("%+,-./:=@_").find(c) == std::string::npos) return false;
  }
  return true;
}

/// The words of the command line; none where the answer is not plain.
std::vector<std::string> expectedWords(std::string_view text, const std::string& program) {
  const auto entry = reference::keyFile(text);
  if (!entry || entry->firstGroup != "Desktop Entry") return {};
  if (entry->value("Type", "") != "Application" || !entry->value("Path", "").empty()) return {};
  for (const char* key : {"Hidden", "Terminal", "DBusActivatable"}) {
    if (entry->value(key, "false") != "false") return {};
  }
  const auto exists = [&](const std::string& name) { return name == "prog" || name == program; };
  const std::string tryExec = entry->value("TryExec", "");
  if (!tryExec.empty() && !exists(tryExec)) return {};

  std::vector<std::string> words;
  int urls = 0;
  std::string exec = entry->value("Exec", "") + " ";
  for (auto end = exec.find(' '); end != exec.npos; end = exec.find(' ')) {
    std::string word = exec.substr(0, end);
    exec.erase(0, end + 1);
    if (word.empty()) continue;
    if (!isPlain(word)) return {};
    if (word == "%u" || word == "%U") {
      if (words.empty()) return {};
      word = kUrl;
      ++urls;
    } else if (word.find('%') != word.npos) {
      return {};
    }
    words.push_back(word);
  }
  if (urls != 1 || !exists(words.front())) return {};
  return words;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Folder folder;
  const std::string program = folder.path() + "/prog";
  std::string text(fuzz::textOf(data, size));
  // Stands for the folder, whose name differs from run to run.
  for (auto at = text.find('~'); at != text.npos; at = text.find('~')) {
    text.replace(at, 1, folder.path());
  }
  if (text.size() > reference::kLongestLine) return 0;
  folder.write("/share/applications/only.desktop", text);
  const auto words = expectedWords(text, program);
  const auto handler = findDefaultHandler("https", kUrl);
  fuzz::expect(handler.has_value() == !words.empty(), "is there a plain answer");
  if (!handler) return 0;
  fuzz::expect(handler->arguments == words, "the words of the command line");
  fuzz::expect(handler->program == program && handler->application == "only", "the program");
  return 0;
}
