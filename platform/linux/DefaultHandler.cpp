// The default handler of a URL scheme, where it is certain. The rules for desktop entries are
// those of the freedesktop document 1.5, as GIO carries them out; every doubt is left to the
// desktop's own openers.
#include "platform/linux/DefaultHandler.h"

#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/CurrentDesktop.h"
#include "platform/linux/Environment.h"
#include "platform/linux/FindProgram.h"
#include "platform/linux/KeyFile.h"
#include "platform/linux/MimeApps.h"
#include "text/Split.h"

namespace Vastel_Connect {
namespace {

using Texts = std::vector<std::string>;

constexpr std::string_view kEntryGroup = "Desktop Entry";

/// Where the desktop entry of a name is.
struct EntryPlace {
  enum { Found, Missing, Ambiguous } state;
  /// The number of the first folder that has it, be it a broken one.
  std::size_t folder = 0;
};

/// Ambiguous when "a-b.desktop" could also be the file "b.desktop" in a folder "a".
EntryPlace findEntry(const std::vector<MimeFolder>& folders, const std::string& id) {
  const auto exists = [](const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0;
  };
  if (!id.ends_with(".desktop") || id.find('/') != id.npos) return {EntryPlace::Ambiguous};
  for (std::size_t i = 0; i < folders.size(); ++i) {
    if (!folders[i].holdsEntries) continue;
    for (std::size_t dash = id.find('-'); dash != id.npos; dash = id.find('-', dash + 1)) {
      if (exists(folders[i].path + "/" + id.substr(0, dash))) return {EntryPlace::Ambiguous};
    }
    if (exists(folders[i].path + "/" + id)) return {EntryPlace::Found, i};
  }
  return {EntryPlace::Missing};
}

/// The words of an Exec line with `url` for its one field code; absent for a line with quotes,
/// another field code, or a URL elsewhere than in a word of its own.
std::optional<Texts> commandLine(std::string_view exec, std::string_view url) {
  Texts words = splitWords(exec, " ");
  int urls = 0;
  for (std::string& word : words) {
    // GIO and KDE differ in what an unquoted semicolon means.
    if (!isPlainValue(word) || word.find(';') != word.npos) return std::nullopt;
    if (word == "%u" || word == "%U") {
      word = url;
      ++urls;
    } else if (word.find('%') != word.npos) {
      return std::nullopt;
    }
  }
  if (urls != 1 || words.front() == url) return std::nullopt;
  return words;
}

std::optional<DefaultHandler> readHandler(const KeyFile& entry, std::string_view url) {
  const auto value = [&entry](std::string_view key, std::string_view fallback) {
    return entry.value(kEntryGroup, key).value_or(fallback);
  };
  const bool plain = entry.firstGroup() == kEntryGroup && value("Type", "") == "Application" &&
                     value("Hidden", "false") == "false" && value("Terminal", "false") == "false" &&
                     value("DBusActivatable", "false") == "false" && value("Path", "").empty();
  const std::string_view tryExec = value("TryExec", "");
  if (!plain || !isPlainValue(tryExec)) return std::nullopt;
  if (!tryExec.empty() && !findProgram(std::string(tryExec))) return std::nullopt;

  auto words = commandLine(value("Exec", ""), url);
  if (!words) return std::nullopt;
  auto program = findProgram(words->front());
  if (!program) return std::nullopt;
  return DefaultHandler{
      .application = {}, .program = std::move(*program), .arguments = std::move(*words)};
}

/// In a sandbox the desktop outside it chooses, and only its portal knows.
bool isSandboxed() {
  return ::access("/.flatpak-info", F_OK) == 0 || !environmentText("SNAP").empty() ||
         !environmentText("GTK_USE_PORTAL").empty();
}

/// What a list of candidates comes to.
struct Choice {
  /// False when none of them is there: the next list decides.
  bool isMade = true;
  /// Absent when the answer is not certain.
  std::optional<DefaultHandler> handler;
};

Choice chooseAmong(const Candidates& candidates, const std::vector<MimeFolder>& folders,
                   std::string_view url) {
  if (!candidates) return {};
  for (const auto& [id, firstFolder] : *candidates) {
    const EntryPlace place = findEntry(folders, id);
    if (place.state == EntryPlace::Ambiguous) return {};
    if (place.state == EntryPlace::Missing || place.folder < firstFolder) {
      if (isKde()) return {};  // It may prefer one that was added to the next one.
      continue;
    }
    const auto entry = KeyFile::read(folders[place.folder].path + "/" + id);
    if (!entry) return {};
    Choice choice = {.handler = readHandler(*entry, url)};
    if (choice.handler) choice.handler->application = id.substr(0, id.rfind(".desktop"));
    return choice;
  }
  return {.isMade = false, .handler = {}};
}

/// The default handler of a MIME type.
std::optional<DefaultHandler> findHandler(const std::vector<MimeFolder>& folders,
                                          const std::string& type, std::string_view url) {
  // Reading the files is most of the time: those of a folder, and the long lists of all that take
  // some type, only when nothing before them has an answer.
  for (const MimeFolder& folder : folders) {
    Choice choice = chooseAmong(findDefaults(folder, type), folders, url);
    if (choice.isMade) return std::move(choice.handler);
  }
  return chooseAmong(findAssociated(folders, type), folders, url).handler;
}

}  // namespace

std::optional<DefaultHandler> findDefaultHandler(std::string_view scheme, std::string_view url) {
  // The handler of a file is that of its type, not of its scheme.
  if (scheme == "file" || isSandboxed() || kdeRestrictsUrls()) return std::nullopt;
  const auto folders = findMimeFolders();
  if (!folders) return std::nullopt;
  const std::string type = "x-scheme-handler/" + std::string(scheme);
  auto handler = findHandler(*folders, type, url);
  if (handler && scheme == "http" && isKde()) {
    // KDE asks for the handler of https in both cases.
    const auto secure = findHandler(*folders, type + "s", url);
    if (!secure || secure->application != handler->application) return std::nullopt;
  }
  return handler;
}

}  // namespace Vastel_Connect
