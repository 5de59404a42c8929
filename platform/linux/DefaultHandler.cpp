// The default handler of a URL scheme, where the answer is plain. The rules are those of the
// freedesktop MIME applications 1.0.1, desktop entry 1.5 and base directory 0.8 documents, as GIO
// carries them out; every doubt is left to the desktop's own openers.
#include "platform/linux/DefaultHandler.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "platform/linux/KeyFile.h"

namespace Vastel_Connect {
namespace {

using Texts = std::vector<std::string>;

constexpr std::string_view kEntryGroup = "Desktop Entry";

std::string environmentText(const char* name, std::string_view fallback = "") {
  const char* value = std::getenv(name);
  return std::string(value != nullptr && *value != '\0' ? value : fallback);
}

/// The parts of `text` between separators, empty ones left out.
Texts split(std::string_view text, char separator) {
  Texts parts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    if (end > 0) parts.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

bool contains(const Texts& texts, std::string_view text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// XDG_CURRENT_DESKTOP in lower case, most specific first.
Texts currentDesktops() {
  std::string names = environmentText("XDG_CURRENT_DESKTOP");
  for (char& c : names) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return split(names, ':');
}

/// The folders that may say which application opens what, the user's first.
struct Folders {
  Texts config;
  Texts applications;
};

/// Absent when a folder is not an absolute path.
std::optional<Folders> findFolders() {
  const std::string home = environmentText("HOME");
  const auto folders = [](const std::string& users, const std::string& systems) {
    Texts all = split(systems, ':');
    all.insert(all.begin(), users);
    return all;
  };
  Folders found{
      .config = folders(environmentText("XDG_CONFIG_HOME", home + "/.config"),
                        environmentText("XDG_CONFIG_DIRS", "/etc/xdg")),
      .applications = folders(environmentText("XDG_DATA_HOME", home + "/.local/share"),
                              environmentText("XDG_DATA_DIRS", "/usr/local/share:/usr/share"))};
  const auto isAbsolute = [](const std::string& path) { return path.starts_with('/'); };
  if (!isAbsolute(home) || !std::all_of(found.config.begin(), found.config.end(), isAbsolute) ||
      !std::all_of(found.applications.begin(), found.applications.end(), isAbsolute)) {
    return std::nullopt;
  }
  for (std::string& folder : found.applications) folder += "/applications";
  return found;
}

/// What the files of one folder say about one MIME type.
struct Associations {
  Texts defaults;
  Texts added;
  Texts removed;
};

/// Appends the applications that a key lists, but for those in `except`. False when the list is not
/// plain.
bool appendList(const KeyFile& file, std::string_view group, const std::string& type,
                const Texts& except, Texts& list) {
  const std::string_view value = file.value(group, type).value_or("");
  if (value.find_first_of("\\ \t") != value.npos) return false;
  for (std::string& id : split(value, ';')) {
    if (!contains(except, id) && !contains(list, id)) list.push_back(std::move(id));
  }
  return true;
}

/// False when a file is not plain.
bool readAssociations(const std::string& path, std::string_view addedGroup, const std::string& type,
                      Associations& result) {
  const auto file = KeyFile::read(path);
  return file && appendList(*file, addedGroup, type, result.removed, result.added) &&
         appendList(*file, "Removed Associations", type, result.added, result.removed) &&
         appendList(*file, "Default Applications", type, {}, result.defaults);
}

std::optional<Associations> readFolder(const std::string& folder, bool holdsEntries,
                                       const std::string& type) {
  constexpr std::string_view kAdded = "Added Associations";
  Associations result;
  for (const std::string& desktop : currentDesktops()) {
    if (!readAssociations(folder + "/" + desktop + "-mimeapps.list", kAdded, type, result)) {
      return std::nullopt;
    }
  }
  if (!readAssociations(folder + "/mimeapps.list", kAdded, type, result)) return std::nullopt;
  if (holdsEntries && (!readAssociations(folder + "/defaults.list", kAdded, type, result) ||
                       !readAssociations(folder + "/mimeinfo.cache", "MIME Cache", type, result))) {
    return std::nullopt;
  }
  return result;
}

/// The desktop entries to be tried for a type, best first; absent when a file is not plain.
std::optional<Texts> findCandidates(const Folders& folders, const std::string& type) {
  std::vector<Associations> all;
  for (const bool holdsEntries : {false, true}) {
    for (const auto& folder : holdsEntries ? folders.applications : folders.config) {
      auto associations = readFolder(folder, holdsEntries, type);
      if (!associations) return std::nullopt;
      all.push_back(std::move(*associations));
    }
  }
  Texts candidates;
  Texts removed;
  const auto append = [](const Texts& ids, const Texts& except, Texts& list) {
    for (const auto& id : ids) {
      if (!contains(except, id) && !contains(list, id)) list.push_back(id);
    }
  };
  for (const auto& associations : all) append(associations.defaults, {}, candidates);
  for (const auto& associations : all) {
    append(associations.added, removed, candidates);
    append(associations.removed, candidates, removed);
  }
  return candidates;
}

/// Whether an entry "a-b.desktop" could also be the file "b.desktop" in a folder "a".
bool mayStandInSubfolder(const std::string& folder, const std::string& id) {
  for (std::size_t dash = id.find('-'); dash != id.npos; dash = id.find('-', dash + 1)) {
    struct stat status {};
    if (::stat((folder + "/" + id.substr(0, dash)).c_str(), &status) == 0) return true;
  }
  return false;
}

/// The words of an Exec line with `url` for its one field code; absent for a line with quotes,
/// another field code, or a URL elsewhere than in a word of its own.
std::optional<Texts> commandLine(std::string_view exec, std::string_view url) {
  constexpr std::string_view kPlainCharacters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 %+,-./:=@_";
  if (exec.find_first_not_of(kPlainCharacters) != exec.npos) return std::nullopt;
  Texts words = split(exec, ' ');
  int urls = 0;
  for (std::string& word : words) {
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
  const bool plain = value("Type", "") == "Application" && value("Hidden", "false") == "false" &&
                     value("Terminal", "false") == "false" &&
                     value("DBusActivatable", "false") == "false" && value("Path", "").empty();
  const std::string_view tryExec = value("TryExec", "");
  if (!plain || (!tryExec.empty() && !findProgram(std::string(tryExec)))) return std::nullopt;

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

}  // namespace

std::optional<DefaultHandler> findDefaultHandler(std::string_view scheme, std::string_view url) {
  // The handler of a file is that of its type, not of its scheme.
  if (scheme == "file" || isSandboxed() || desktopHasOwnBrowserChoice(scheme)) return std::nullopt;
  const auto folders = findFolders();
  if (!folders) return std::nullopt;
  const auto candidates = findCandidates(*folders, "x-scheme-handler/" + std::string(scheme));
  if (!candidates) return std::nullopt;

  for (const std::string& id : *candidates) {
    for (const std::string& folder : folders->applications) {
      if (id.find('/') != id.npos || mayStandInSubfolder(folder, id)) return std::nullopt;
      const auto entry = KeyFile::read(folder + "/" + id);
      if (!entry) return std::nullopt;
      if (!entry->exists()) continue;
      auto handler = readHandler(*entry, url);
      if (handler) handler->application = id.substr(0, id.rfind(".desktop"));
      return handler;
    }
  }
  return std::nullopt;
}

std::optional<std::string> findProgram(const std::string& name) {
  const auto isExecutable = [](const std::string& path) {
    struct stat status {};
    return ::access(path.c_str(), X_OK) == 0 && ::stat(path.c_str(), &status) == 0 &&
           S_ISREG(status.st_mode);
  };
  if (name.starts_with('/')) return isExecutable(name) ? std::optional(name) : std::nullopt;
  if (name.empty() || name.find('/') != name.npos) return std::nullopt;
  for (const std::string& folder : split(environmentText("PATH"), ':')) {
    if (std::string path = folder + "/" + name; isExecutable(path)) return path;
  }
  return std::nullopt;
}

bool desktopHasOwnBrowserChoice(std::string_view scheme) {
  return (scheme == "http" || scheme == "https") && contains(currentDesktops(), "kde");
}

}  // namespace Vastel_Connect
