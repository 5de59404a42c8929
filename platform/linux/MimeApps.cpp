// The files that say which applications open what, as the freedesktop MIME applications 1.0.1 and
// base directory 0.8 documents have them, and GIO reads them.
#include "platform/linux/MimeApps.h"

#include <algorithm>

#include "platform/linux/CurrentDesktop.h"
#include "platform/linux/Environment.h"
#include "platform/linux/KeyFile.h"
#include "text/Split.h"

namespace Vastel_Connect {
namespace {

using Texts = std::vector<std::string>;

/// Far above the length of any list of applications; each is compared with all before it.
constexpr std::size_t kListLimit = 16384;

bool contains(const Texts& texts, std::string_view text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

/// False when `list` has it already.
bool appendNew(const std::string& text, Texts& list) {
  if (contains(list, text)) return false;
  list.push_back(text);
  return true;
}

/// Appends the applications that a key lists, without those in `except`. False when the list is not
/// plain.
bool appendList(const KeyFile& file, std::string_view group, const std::string& type,
                const Texts& except, Texts& list) {
  const std::string_view value = file.value(group, type).value_or("");
  if (value.size() > kListLimit || !isPlainValue(value)) return false;
  for (const std::string& id : splitWords(value, ";")) {
    if (!contains(except, id)) appendNew(id, list);
  }
  return true;
}

/// The applications that the files of one folder choose for a type, best first; absent when a file
/// is not plain.
std::optional<Texts> readDefaults(const MimeFolder& folder, const std::string& type) {
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

/// Absent when a file is not plain. The lists of one desktop count for defaults only.
std::optional<Associations> readAssociations(const MimeFolder& folder, const std::string& type) {
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

/// Whether KDE takes `defaults` from a folder: it reads mimeapps.list alone there, where it weighs
/// what is added and removed as well.
bool kdeAgrees(const MimeFolder& folder, const std::string& type, const Texts& defaults) {
  const auto file = KeyFile::read(folder.path + "/mimeapps.list");
  const auto lists = [&](std::string_view group, const Texts& expected) {
    Texts ids;
    return appendList(*file, group, type, {}, ids) && ids == expected;
  };
  return file && lists("Default Applications", defaults) && lists("Removed Associations", {}) &&
         (!defaults.empty() || lists("Added Associations", {}));
}

}  // namespace

std::optional<std::vector<MimeFolder>> findMimeFolders() {
  if (!environmentText("HOME").starts_with('/')) return std::nullopt;
  std::vector<MimeFolder> folders;
  for (const std::string& path : configFolders()) folders.push_back({path, false});
  for (const std::string& path : dataFolders()) folders.push_back({path + "/applications", true});

  const bool absolute = std::all_of(folders.begin(), folders.end(), [](const MimeFolder& folder) {
    return folder.path.starts_with('/');
  });
  return absolute ? std::optional(std::move(folders)) : std::nullopt;
}

Candidates findDefaults(const MimeFolder& folder, const std::string& type) {
  const auto defaults = readDefaults(folder, type);
  if (!defaults || (isKde() && !kdeAgrees(folder, type, *defaults))) return std::nullopt;
  std::vector<Candidate> candidates;
  for (const std::string& id : *defaults) candidates.push_back({.id = id});
  return candidates;
}

Candidates findAssociated(const std::vector<MimeFolder>& folders, const std::string& type) {
  if (isKde()) return std::nullopt;  // It orders them by rules of its own.
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

}  // namespace Vastel_Connect
