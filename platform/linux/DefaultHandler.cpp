// The default handler of a URL scheme, where the answer is plain. The rules are those of the
// freedesktop MIME applications 1.0.1, desktop entry 1.5 and base directory 0.8 documents, as GIO
// carries them out; every doubt is left to the desktop's own openers.
#include "platform/linux/DefaultHandler.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "platform/linux/KeyFile.h"
#include "platform/linux/Spawn.h"
#include "text/Ascii.h"

namespace Vastel_Connect {
namespace {

using Texts = std::vector<std::string>;

constexpr std::string_view kEntryGroup = "Desktop Entry";

/// Far above the length of any list of applications; each is compared with all before it.
constexpr std::size_t kListLimit = 16384;

/// Whether a value is free of blanks and of all that has a meaning of its own in a value or on a
/// command line.
bool isPlain(std::string_view value) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789%+,-./:;=@_";
  return value.find_first_not_of(kPlain) == value.npos;
}

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

/// False when `list` has it already.
bool appendNew(const std::string& text, Texts& list) {
  if (contains(list, text)) return false;
  list.push_back(text);
  return true;
}

/// XDG_CURRENT_DESKTOP in lower case, most specific first.
Texts currentDesktops() {
  return split(asciiLowerCase(environmentText("XDG_CURRENT_DESKTOP")), ':');
}

/// A folder that may say which application opens what.
struct Folder {
  std::string path;
  /// Whether the applications' desktop entries are in such folders too.
  bool holdsEntries;
};

/// The user's before the system's, those of choices before those of applications. Absent when one
/// is not an absolute path.
std::optional<std::vector<Folder>> findFolders() {
  const std::string home = environmentText("HOME");
  if (!home.starts_with('/')) return std::nullopt;
  std::vector<Folder> folders;
  const auto append = [&folders](const std::string& user, const std::string& system,
                                 const std::string& below, bool holdsEntries) {
    folders.push_back({user + below, holdsEntries});
    for (const std::string& path : split(system, ':')) {
      folders.push_back({path + below, holdsEntries});
    }
  };
  append(environmentText("XDG_CONFIG_HOME", home + "/.config"),
         environmentText("XDG_CONFIG_DIRS", "/etc/xdg"), "", false);
  append(environmentText("XDG_DATA_HOME", home + "/.local/share"),
         environmentText("XDG_DATA_DIRS", "/usr/local/share:/usr/share"), "/applications", true);

  const bool absolute = std::all_of(folders.begin(), folders.end(), [](const Folder& folder) {
    return folder.path.starts_with('/');
  });
  return absolute ? std::optional(std::move(folders)) : std::nullopt;
}

/// Appends the applications that a key lists, but for those in `except`. False when the list is not
/// plain.
bool appendList(const KeyFile& file, std::string_view group, const std::string& type,
                const Texts& except, Texts& list) {
  const std::string_view value = file.value(group, type).value_or("");
  if (value.size() > kListLimit || !isPlain(value)) return false;
  for (const std::string& id : split(value, ';')) {
    if (!contains(except, id)) appendNew(id, list);
  }
  return true;
}

/// The applications that the files of one folder choose for a type, best first; absent when a file
/// is not plain.
std::optional<Texts> readDefaults(const Folder& folder, const std::string& type) {
  Texts defaults;
  const auto append = [&](const std::string& name) {
    const auto file = KeyFile::read(folder.path + "/" + name);
    return file && appendList(*file, "Default Applications", type, {}, defaults);
  };
  for (const std::string& desktop : currentDesktops()) {
    constexpr std::string_view kPlain = "abcdefghijklmnopqrstuvwxyz0123456789-_";
    if (desktop.find_first_not_of(kPlain) != desktop.npos) return std::nullopt;
    if (!append(desktop + "-mimeapps.list")) return std::nullopt;
  }
  if (!append("mimeapps.list")) return std::nullopt;
  if (folder.holdsEntries && !append("defaults.list")) return std::nullopt;
  return defaults;
}

/// The applications that take a type by the files of one folder, and those that shall not.
struct Associations {
  Texts added;
  Texts removed;
};

/// Absent when a file is not plain. What belongs to one desktop has no say but in defaults.
std::optional<Associations> readAssociations(const Folder& folder, const std::string& type) {
  Associations result;
  const auto file = KeyFile::read(folder.path + "/mimeapps.list");
  if (!file || !appendList(*file, "Added Associations", type, {}, result.added) ||
      !appendList(*file, "Removed Associations", type, result.added, result.removed)) {
    return std::nullopt;
  }
  if (!folder.holdsEntries) return result;
  const auto cache = KeyFile::read(folder.path + "/mimeinfo.cache");
  if (!cache || !appendList(*cache, "MIME Cache", type, result.removed, result.added)) {
    return std::nullopt;
  }
  return result;
}

/// A desktop entry that may be the one.
struct Candidate {
  std::string id;
  /// The number of the first folder whose entry of that name was meant: those before it must not
  /// have one.
  std::size_t firstFolder = 0;
};

/// Desktop entries to be tried for a type, best first; absent when a file is not plain.
using Candidates = std::optional<std::vector<Candidate>>;

/// Those that one folder chooses.
Candidates findDefaults(const Folder& folder, const std::string& type) {
  const auto defaults = readDefaults(folder, type);
  if (!defaults) return std::nullopt;
  std::vector<Candidate> candidates;
  for (const std::string& id : *defaults) candidates.push_back({.id = id});
  return candidates;
}

/// Those that take the type.
Candidates findAssociated(const std::vector<Folder>& folders, const std::string& type) {
  std::vector<Candidate> candidates;
  Texts decided;
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const auto associations = readAssociations(folders[i], type);
    if (!associations) return std::nullopt;
    for (const std::string& id : associations->added) {
      if (appendNew(id, decided)) candidates.push_back({.id = id, .firstFolder = i});
    }
    for (const std::string& id : associations->removed) appendNew(id, decided);
  }
  return candidates;
}

/// The number of the first folder that has an entry, be it a broken one; the number of folders when
/// none has. Absent when "a-b.desktop" could also be the file "b.desktop" in a folder "a".
std::optional<std::size_t> findEntry(const std::vector<Folder>& folders, const std::string& id) {
  const auto exists = [](const std::string& path) {
    struct stat status = {};
    return ::lstat(path.c_str(), &status) == 0;
  };
  if (!id.ends_with(".desktop") || id.find('/') != id.npos) return std::nullopt;
  for (std::size_t i = 0; i < folders.size(); ++i) {
    if (!folders[i].holdsEntries) continue;
    for (std::size_t dash = id.find('-'); dash != id.npos; dash = id.find('-', dash + 1)) {
      if (exists(folders[i].path + "/" + id.substr(0, dash))) return std::nullopt;
    }
    if (exists(folders[i].path + "/" + id)) return i;
  }
  return folders.size();
}

/// The words of an Exec line with `url` for its one field code; absent for a line with quotes,
/// another field code, or a URL elsewhere than in a word of its own.
std::optional<Texts> commandLine(std::string_view exec, std::string_view url) {
  Texts words = split(exec, ' ');
  int urls = 0;
  for (std::string& word : words) {
    if (!isPlain(word)) return std::nullopt;
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
  if (!plain || !isPlain(tryExec)) return std::nullopt;
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

}  // namespace

std::optional<DefaultHandler> findDefaultHandler(std::string_view scheme, std::string_view url) {
  // The handler of a file is that of its type, not of its scheme.
  if (scheme == "file" || isSandboxed() || desktopHasOwnBrowserChoice(scheme)) return std::nullopt;
  const auto folders = findFolders();
  if (!folders) return std::nullopt;
  const std::string type = "x-scheme-handler/" + std::string(scheme);

  // Reading the files is most of the time: those of a folder, and the long lists of all that take
  // some type, only when nothing before them has an answer.
  for (std::size_t i = 0; i <= folders->size(); ++i) {
    const auto candidates =
        i < folders->size() ? findDefaults((*folders)[i], type) : findAssociated(*folders, type);
    if (!candidates) return std::nullopt;
    for (const auto& [id, firstFolder] : *candidates) {
      const auto found = findEntry(*folders, id);
      if (!found) return std::nullopt;
      if (*found == folders->size() || *found < firstFolder) continue;
      const auto entry = KeyFile::read((*folders)[*found].path + "/" + id);
      if (!entry) return std::nullopt;
      auto handler = readHandler(*entry, url);
      if (handler) handler->application = id.substr(0, id.rfind(".desktop"));
      return handler;
    }
  }
  return std::nullopt;
}

bool desktopHasOwnBrowserChoice(std::string_view scheme) {
  return (scheme == "http" || scheme == "https") && contains(currentDesktops(), "kde");
}

}  // namespace Vastel_Connect
